#include <Updater/detail/documents/TargetIndex.h>

#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>

#include <functional>
#include <string>
#include <string_view>

namespace vo::updater::detail {

namespace {

VoFilePath TargetIn(const FileTable& files, FileTable::Number file)
{
    return VoFilePath::CreateUnchecked(VoString(std::string(files.path(file))));
}

std::uint32_t HashOf(const VoFilePath& target)
{
    const std::uint64_t hash = std::hash<VoFilePath>()(target);
    return static_cast<std::uint32_t>(hash ^ hash >> 32);
}

bool IsAt(const FileTable& files, FileTable::Number file, const VoFilePath& target)
{
    return files.path(file) == target.path().toStdString() || TargetIn(files, file) == target;
}

} // namespace

TargetIndex::TargetIndex(const FileTable& files)
{
    std::size_t size = 2;
    while (size < 2 * files.size())
        size *= 2;
    m_slots.resize(size);
    for (FileTable::Number file = 0; file < files.size(); ++file) {
        const std::uint32_t hash = HashOf(TargetIn(files, file));
        std::size_t slot = hash & (size - 1);
        while (m_slots[slot].file != FileTable::None)
            slot = (slot + 1) & (size - 1);
        m_slots[slot] = {hash, file};
    }
}

FileTable::Number TargetIndex::find(const FileTable& files, const VoFilePath& target) const
{
    if (m_slots.empty())
        return FileTable::None;
    const std::uint32_t hash = HashOf(target);
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = hash & mask;
    while (m_slots[slot].file != FileTable::None &&
           (m_slots[slot].hash != hash || !IsAt(files, m_slots[slot].file, target)))
        slot = (slot + 1) & mask;
    return m_slots[slot].file;
}

} // namespace vo::updater::detail
