#include <Documents/ZipInput.h>

#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>

#include <algorithm>
#include <utility>

namespace vo::detail {

ZipInput::ZipInput(UnzipHandle archive)
    : m_archive(std::move(archive))
{
}

std::size_t ZipInput::count()
{
    return entries().size();
}

std::string_view ZipInput::name(std::size_t index) const
{
    const std::uint64_t start = index == 0 ? 0 : m_entries[index - 1].nameEnd;
    return std::string_view(m_names).substr(static_cast<std::size_t>(start),
                                            static_cast<std::size_t>(m_entries[index].nameEnd - start));
}

bool ZipInput::complete()
{
    entries();
    return m_complete;
}

const std::vector<ZipInput::Entry>& ZipInput::entries()
{
    if (std::exchange(m_listed, true) || !m_archive)
        return m_entries;
    ZipEntryRecord record;
    int code = m_archive.first();
    for (; code == ZipDone; code = m_archive.next()) {
        code = m_archive.record(record);
        if (code != ZipDone)
            break;
        m_names += record.name;
        m_entries.push_back({record.position, record.number, record.size, m_names.size(), record.readable});
    }
    // At the limit of the format's old counter the directory simply ends where no more record follows.
    const bool countIsKnown = m_archive.claimedCount() != 0xFFFF;
    m_complete = code == ZipEndOfList || (!countIsKnown && m_entries.size() >= 0xFFFF && code == ZipBadFile);
    return m_entries;
}

const std::unordered_map<std::string, std::size_t>& ZipInput::places()
{
    if (m_places.empty()) {
        m_places.reserve(count());
        for (std::size_t i = 0; i < count(); ++i)
            m_places.emplace(VoFilePath(VoString(std::string(name(i)))).path().toStdString(), i);
    }
    return m_places;
}

int ZipInput::open(const std::string& path)
{
    const auto found = places().find(path);
    return open(found == places().end() ? None : found->second);
}

int ZipInput::open(std::size_t index)
{
    m_open = None;
    m_remaining = 0;
    m_failure = ZipDone;
    if (index >= count())
        return ZipEndOfList;
    const Entry& entry = m_entries[index];
    if (!entry.readable)
        return ZipBadFile;
    const int code = m_archive.open(entry.position, entry.number);
    if (code == ZipDone) {
        m_open = index;
        m_remaining = entry.size;
    }
    return code;
}

std::size_t ZipInput::read(char* data, std::size_t size, int& code)
{
    code = m_failure;
    if (atEnd() || size == 0)
        return 0;
    const int taken = m_archive.read(data, static_cast<std::size_t>(std::min<std::uint64_t>(size, m_remaining)));
    if (taken <= 0) {
        // An entry that ends before its claimed size would never end for who waits for that size.
        code = m_failure = taken == 0 ? static_cast<int>(ZipBadFile) : taken;
        return 0;
    }
    m_remaining -= static_cast<std::uint64_t>(taken);
    if (m_remaining == 0)
        code = m_failure = m_archive.finishEntry(); // compares the checksums
    return code == ZipDone ? static_cast<std::size_t>(taken) : 0;
}

std::string_view ZipInput::openName() const
{
    return m_open == None ? std::string_view() : name(m_open);
}

int ZipInput::close()
{
    m_open = None;
    m_remaining = 0;
    return m_archive.close();
}

} // namespace vo::detail
