#pragma once

// Every change that installing, repairing and uninstalling make to the disk goes through here. Before each of them, and
// before a chunk is read, an observer may be called, with which tests count the steps, kill the process at one of them,
// or let it fail. Below a directory of which the thread has a HeldTree, no link leads them outside of it.

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <FileSystem/detail/NativeFile.h>

#include <cstdint>
#include <functional>
#include <system_error>

namespace vo::updater::detail {

/// The kinds of step.
enum class FileStep
{
    MakeDirectory,
    CopyChunk,
    ReadChunk,
    OpenFile,
    WriteFile,
    FinishFile,
    PutInPlace,
    MoveAside,
    MoveBack,
    EraseFile,
    EraseDirectory,
    WriteDocument,
    ChangePhase, ///< Of the journal.
    MakeLink,
    SetExecutable,
};

/// Called before a step with the path it is about. What it throws fails the step.
using StepObserver = std::function<void(FileStep, const VoString& path)>;

/// Sets the observer; an empty one ends observing. Not while an operation runs on another thread.
VOCORE_PRIVATE_EXPORT void SetStepObserver(StepObserver observer);

/// Announces a step that is done elsewhere.
void AtStep(FileStep step, const VoString& path);

/// @{ A directory under the name that a file in its place has, and the other way round.
VOCORE_PRIVATE_EXPORT VoFilePath AsFile(const VoDirectoryPath& directory);
VOCORE_PRIVATE_EXPORT VoDirectoryPath AsDirectory(const VoFilePath& file);
/// @}

/// What a link counts as.
enum class Links
{
    Kept,     ///< What it is.
    Followed, ///< What it leads to.
};

/// What bears a path.
enum class FileKind
{
    None,
    File,
    Directory,
    Other, ///< A link, a pipe, a device.
};
/// @throws VoFileException ("status: " + reason, "exists: " where links are followed) when the system does not let one
/// look: a file that cannot be seen is not one that is gone
VOCORE_PRIVATE_EXPORT FileKind KindOf(const VoFilePath& path, Links links = Links::Kept);

/// Makes one directory; nothing when it is there.
/// @throws VoFileException ("Cannot create directory: " + reason + ": " + path)
void MakeDirectory(const VoDirectoryPath& directory);

/// Makes a file and opens it for writing, without announcing a step. A name that is taken, also by a link, gives
/// std::errc::file_exists.
/// @throws VoFileException ("Link leads out of the installation: " + directory)
vo::detail::NativeFile MakeFile(const VoFilePath& path, std::error_code& error);

/// Removes a file or a link. A missing one counts as removed; a directory stays, and the result is false.
/// @throws VoFileException ("Cannot remove file: " + reason + ": " + path)
bool EraseFile(const VoFilePath& path);

/// Removes a directory if it is empty. The result is true when there is none afterwards.
/// @throws VoFileException ("Cannot remove directory: " + reason + ": " + path)
bool EraseDirectoryIfEmpty(const VoDirectoryPath& directory);

/// Renames a built file to its place.
/// @throws VoFileException ("Cannot replace file: " + reason + ": " + place)
void PutInPlace(const VoFilePath& built, const VoFilePath& place);

/// Renames what stands at a place, a file, a link or a whole directory, to a name beside it. That is possible for a
/// program that is running, which can be neither overwritten nor removed on every system.
/// @throws VoFileException ("Cannot replace file: " + reason + ": " + place)
void MoveAside(const VoFilePath& place, const VoFilePath& aside);

/// Takes MoveAside back; a file that stands at the place meanwhile is replaced.
/// @throws VoFileException ("Cannot restore file: " + reason + ": " + place)
void MoveBack(const VoFilePath& aside, const VoFilePath& place);

/// Gives `file` the permissions of `model`, if that is a regular file; without the bits that lend another's rights.
void CopyPermissions(const VoFilePath& model, const VoFilePath& file);

/// A volume that says it has none at all is left to prove it.
/// @throws VoFileException ("Not enough disk space: ...") when `bytes` cannot be had on the volume of `directory`
void RequireFreeSpace(const VoDirectoryPath& directory, std::uint64_t bytes);

} // namespace vo::updater::detail
