#pragma once

// The file that a patch is: "VOPATCH1", and a window for each part of the new file. A window begins with five numbers,
// the highest byte first: where its part of the old file begins (eight bytes), the length of that, the length of the
// part of the new file, and the length of the instructions (FileDifference.h) plain and compressed (four bytes each).
// The instructions follow, as a frame of Zstandard.

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>

namespace vo::updater::detail {

/// How much of the files is held in memory at a time, in bytes, whatever their sizes. No patch may have larger ones
/// than these.
struct PatchWindow
{
    std::uint64_t old = std::uint64_t{32} << 20;  ///< Of the old file.
    std::uint64_t made = std::uint64_t{16} << 20; ///< Of the new file.
};

/// Writes to `patch` what makes the file `after` of the file `before`, and calls `between` before each window. Takes
/// about 250 MB of memory at most. False, and nothing is written, where a trial tells that the patch would have more
/// than `mostBytes`; one that has a few more may be written all the same.
/// @throws VoFileException for a file that cannot be read or written
/// @throws VoInvalidConversionException "Patch cannot be compressed", for want of memory
VOCORE_PRIVATE_EXPORT bool MakePatch(const VoFilePath& before, const VoFilePath& after, const VoFilePath& patch,
                                     const std::function<void()>& between, const PatchWindow& most = PatchWindow(),
                                     std::uint64_t mostBytes = std::numeric_limits<std::uint64_t>::max());

/// Makes a file of `size` bytes of another one and a patch, and hands it out piece by piece. Whoever made the patch:
/// takes no more than about 130 MB of memory, and hands out no more than `size` bytes.
/// @throws VoInvalidConversionException ("Patch does not fit: " + patch) for a patch that is none, or one for other
/// files
/// @throws VoFileException for a file that cannot be read
VOCORE_PRIVATE_EXPORT void ApplyPatch(const VoFilePath& before, const VoFilePath& patch, std::uint64_t size,
                                      const std::function<void(const char*, std::size_t)>& write);

} // namespace vo::updater::detail
