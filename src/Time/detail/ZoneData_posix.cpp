#include <Time/detail/CalendarDate.h>
#include <Time/detail/ZoneData.h>
#include <Time/detail/ZoneRule.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <vector>

namespace vo::detail {
namespace {

constexpr std::size_t HeaderSize = 44;
constexpr std::size_t LargestFile = 1 << 20; // the largest of the database has a few kilobytes

std::int64_t BigEndian(std::string_view bytes)
{
    std::uint64_t value = static_cast<unsigned char>(bytes.front()) >= 0x80 ? ~std::uint64_t{0} : 0;
    for (const char byte : bytes)
        value = value << 8 | static_cast<unsigned char>(byte);
    return static_cast<std::int64_t>(value);
}

std::string ContentOf(const std::string& id)
{
    const char* folder = std::getenv("TZDIR");
    std::ifstream file(std::string(folder && *folder ? folder : "/usr/share/zoneinfo") + '/' + id, std::ios::binary);
    std::string content(LargestFile, '\0');
    file.read(content.data(), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<std::size_t>(file.gcount()));
    return content;
}

// A header of RFC 8536: "TZif", the version, and six counts at the end.
class Header
{
public:
    explicit Header(std::string_view text)
        : m_isValid(text.size() >= HeaderSize && text.substr(0, 4) == "TZif" && text[4] >= '2')
    {
        for (std::size_t i = 0; m_isValid && i < std::size(m_counts); ++i)
            m_counts[i] = static_cast<std::uint32_t>(BigEndian(text.substr(20 + 4 * i, 4)));
    }

    bool isValid() const { return m_isValid; }
    std::uint64_t times() const { return m_counts[3]; }
    std::uint64_t types() const { return m_counts[4]; }
    // Of the data behind it, with times of so many bytes.
    std::uint64_t dataSize(std::uint64_t timeSize) const
    {
        return times() * (timeSize + 1) + types() * 6 + m_counts[5] + m_counts[2] * (timeSize + 4) + m_counts[1] +
               m_counts[0];
    }

private:
    bool m_isValid;
    std::uint64_t m_counts[6] = {};
};

// Recorded changes and, for what comes after them, a rule.
class RecordedZone : public ZoneData
{
public:
    // Behind a header and data for old readers, with times of four bytes, stand a second header, data with times of
    // eight bytes, and the rule between two line feeds.
    static std::shared_ptr<const ZoneData> Read(std::string_view content)
    {
        const Header old(content);
        content.remove_prefix(std::min<std::uint64_t>(content.size(), HeaderSize + old.dataSize(4)));
        const Header header(content);
        if (!old.isValid() || !header.isValid() || header.types() == 0 ||
            content.size() - HeaderSize < header.dataSize(8))
            return nullptr;
        auto zone = std::make_shared<RecordedZone>();
        content.remove_prefix(HeaderSize);
        if (!zone->readChanges(content, header))
            return nullptr;
        content.remove_prefix(static_cast<std::size_t>(header.dataSize(8)));
        if (content.size() > 2 && content.front() == '\n')
            zone->m_rule = ZoneRule::Read(content.substr(1, content.find('\n', 1) - 1));
        return zone;
    }

    int offset(std::int64_t instant) const override
    {
        const auto next = std::upper_bound(m_times.begin(), m_times.end(), instant);
        if (next == m_times.end() && m_rule)
            return m_rule->offset(instant);
        return m_offsets[static_cast<std::size_t>(next - m_times.begin())];
    }

private:
    bool readChanges(std::string_view data, const Header& header)
    {
        const auto count = static_cast<std::size_t>(header.times());
        const std::string_view indexes = data.substr(8 * count, count);
        const std::string_view types = data.substr(9 * count, static_cast<std::size_t>(header.types()) * 6);
        const auto typeOffset = [&](std::size_t type) {
            return static_cast<int>(BigEndian(types.substr(6 * type, 4)));
        };
        m_offsets.push_back(typeOffset(0));
        for (std::size_t i = 0; i < count; ++i) {
            const auto type = static_cast<unsigned char>(indexes[i]);
            m_times.push_back(BigEndian(data.substr(8 * i, 8)));
            if (type >= header.types() || (i > 0 && m_times[i] <= m_times[i - 1]))
                return false;
            m_offsets.push_back(typeOffset(type));
        }
        return true;
    }

    std::vector<std::int64_t> m_times; // of the changes, rising
    std::vector<int> m_offsets;        // before the first change, then after each
    std::optional<ZoneRule> m_rule;
};

} // namespace

int LocalOffset(std::int64_t instant)
{
    tzset(); // localtime_r need not look whether the zone was changed
    const auto time = static_cast<std::time_t>(instant);
    std::tm parts = {};
    if (!localtime_r(&time, &parts))
        return 0;
    const std::int64_t day = DayOf({parts.tm_year + std::int64_t{1900}, parts.tm_mon + 1, parts.tm_mday});
    return static_cast<int>(day * 86400 + parts.tm_hour * 3600 + parts.tm_min * 60 + parts.tm_sec - instant);
}

std::shared_ptr<const ZoneData> ZoneData::Load(const std::string& id)
{
    return RecordedZone::Read(ContentOf(id));
}

std::string FrameworkZoneId(const std::string& id)
{
    return id;
}

std::string ZoneIdOfFramework(const std::string& id)
{
    return id;
}

} // namespace vo::detail
