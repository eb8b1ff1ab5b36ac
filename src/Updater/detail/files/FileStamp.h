#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstdint>
#include <optional>

namespace vo::updater::detail {

/// What the system tells of a file without reading it. Equal stamps of one path mean the same file with the same bytes,
/// unless it was changed within a grain of the clock: the time of change (of bytes, name or rights) is the system's own
/// and cannot be set, and a copy is another file.
struct FileStamp
{
    std::uint64_t size = 0;
    std::int64_t written = 0; ///< When bytes were last written, in nanoseconds since 1970.
    std::int64_t changed = 0; ///< When anything was last changed, in nanoseconds since 1970.
    std::uint64_t file = 0;   ///< The number of the file on its volume.
    std::uint64_t device = 0; ///< The number of the volume.

    bool operator==(const FileStamp& other) const
    {
        return size == other.size && written == other.written && changed == other.changed && file == other.file &&
               device == other.device;
    }
};

/// The stamp of a regular file; nothing for anything else, also a link, for what cannot be looked at, and where the
/// system has no such times.
VOCORE_PRIVATE_EXPORT std::optional<FileStamp> StampOf(const VoFilePath& path);

} // namespace vo::updater::detail
