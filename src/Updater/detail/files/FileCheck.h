#pragma once

// The one place that decides whether a file on disk is the one that it ought to be.

#include <Core/VoChecksum.h>
#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/detail/files/FileActions.h>

#include <cstddef>
#include <functional>

namespace vo::updater::detail {

/// A file as it ought to be.
struct ExpectedFile
{
    VoFilePath path;
    VoChecksum checksum;
    VoDownloadSize size;
};

/// The file of a listing (of a file or of a chunk) at its place.
template <typename Listing>
ExpectedFile Expected(const VoFilePath& place, const Listing& listing)
{
    return {place, listing.checksum(), listing.size()};
}

/// What stands in the place of a file.
enum class FileState
{
    Sound,      ///< The file.
    Missing,    ///< Nothing.
    Changed,    ///< Another content, or no regular file.
    Unreadable, ///< A regular file of the right size that cannot be read, so that nobody can tell.
};

/// Whether a regular file of the right size is there, without reading it.
/// @throws VoFileException when the system does not let one look
bool HasSize(const ExpectedFile& file, Links links);

/// Reads the file.
/// @throws VoFileException when the system does not let one look
/// @throws VoUserCancelledException soon after the flag is raised
FileState Examine(const ExpectedFile& file, Links links, const VoStopFlag& stop);

/// Whether the file itself, and no link to it, is there. One that cannot be read throws what reading it throws: nobody
/// can tell that it is another.
bool IsSound(const ExpectedFile& file);

/// Examines so many files on all processors, a bounded number of them at a time. `expected` is asked for each of them
/// and `told` what it was found to be, both on this thread and in the order of the numbers. What examining a file
/// throws is thrown here, when those before it have been told; so is VoUserCancelledException.
void ExamineAll(std::size_t count, const std::function<ExpectedFile(std::size_t)>& expected, Links links,
                const VoStopFlag& stop, const std::function<void(std::size_t, FileState)>& told);

/// Whether two files hold the same bytes; VoFileSystem::Same asks another question, whether they are one file.
/// @throws VoFileNotFoundException for a missing one
/// @throws VoIOException for one that cannot be read
VOCORE_PRIVATE_EXPORT bool HaveSameContent(const VoFilePath& a, const VoFilePath& b);

} // namespace vo::updater::detail
