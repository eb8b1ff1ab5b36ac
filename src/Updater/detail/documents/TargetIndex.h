#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Updater/detail/documents/FileTable.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vo::updater::detail {

/// Finds the files of a table by their paths, letter case left aside as paths do. Knows the numbers of the files alone,
/// so that it can go where the table goes. Of several files with one path the first is found.
class VOCORE_PRIVATE_EXPORT TargetIndex
{
public:
    TargetIndex() = default; ///< Of no files.
    explicit TargetIndex(const FileTable& files);

    /// `files` are those that the index was made of. FileTable::None when there is no such file.
    FileTable::Number find(const FileTable& files, const VoFilePath& target) const;

private:
    struct Slot
    {
        std::uint32_t hash = 0;
        FileTable::Number file = FileTable::None;
    };

    std::vector<Slot> m_slots; // a power of two, at least half of them free
};

} // namespace vo::updater::detail
