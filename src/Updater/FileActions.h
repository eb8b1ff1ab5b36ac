#pragma once

// Every change that installing, repairing and uninstalling make to the disk goes through here. Before each of them, and
// before a chunk is read, an observer may be called, with which tests count the steps, kill the process at one of them,
// or let it fail.

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstdint>
#include <functional>

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
    EraseFile,
    EraseDirectory,
    WriteDocument,
};

/// Called before a step with the path it is about. What it throws fails the step.
using StepObserver = std::function<void(FileStep, const VoString& path)>;

/// Sets the observer; an empty one ends observing. Not while an operation runs on another thread.
VOCORE_PRIVATE_EXPORT void SetStepObserver(StepObserver observer);

/// Announces a step that is done elsewhere.
void AtStep(FileStep step, const VoString& path);

/// What bears a path; links count as what they are, not as what they lead to.
enum class FileKind
{
    None,
    File,
    Directory,
    Other, ///< A link, a pipe, a device.
};
FileKind KindOf(const VoFilePath& path);

/// Makes one directory; nothing when it is there.
void MakeDirectory(const VoDirectoryPath& directory);

/// Removes a file or a link. A missing one counts as removed; a directory stays, and the result is false.
bool EraseFile(const VoFilePath& path);

/// Removes a directory if it is empty. The result is true when there is none afterwards.
bool EraseDirectoryIfEmpty(const VoDirectoryPath& directory);

/// Renames a built file over its place.
void PutInPlace(const VoFilePath& built, const VoFilePath& place);

/// Gives `file` the permissions of `model`, if that is a regular file; without the bits that lend another's rights.
void CopyPermissions(const VoFilePath& model, const VoFilePath& file);

/// Throws VoFileException ("Not enough disk space: ...") when `bytes` cannot be had on the volume of `directory`. A
/// volume that says it has none at all is left to prove it.
void RequireFreeSpace(const VoDirectoryPath& directory, std::uint64_t bytes);

} // namespace vo::updater::detail
