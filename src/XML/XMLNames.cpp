#include <XML/XMLNames.h>

#include <XML/XMLText.h>

#include <QtCore/QStringRef>

namespace vo::detail {

namespace {

// Longer ones are not kept: a document from outside must not decide how much memory the names take.
constexpr std::size_t LongestName = 64;

template <typename Unit>
std::size_t Slot(const Unit* units, std::size_t count, std::size_t slots)
{
    std::uint32_t hash = 2166136261u; // FNV-1a
    for (std::size_t i = 0; i < count; ++i)
        hash = (hash ^ static_cast<std::uint32_t>(units[i])) * 16777619u;
    return (hash ^ (hash >> 15)) % slots;
}

} // namespace

std::shared_ptr<const VoString> XMLReadNames::shared(const QStringRef& name)
{
    const auto count = static_cast<std::size_t>(name.size());
    if (count > LongestName)
        return std::make_shared<const VoString>(FromQtText(name));
    Entry& entry = m_entries[Slot(reinterpret_cast<const ushort*>(name.unicode()), count, m_entries.size())];
    if (!entry.name || entry.qtName != name) {
        entry.name = std::make_shared<const VoString>(FromQtText(name));
        entry.qtName = name.toString();
    }
    return entry.name;
}

QString XMLWrittenNames::decoded(const VoString& name)
{
    const std::string& bytes = name.toStdString();
    if (bytes.empty() || bytes.size() > LongestName) {
        RequireXMLText(name);
        return ToQtText(name);
    }
    Entry& entry =
        m_entries[Slot(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), m_entries.size())];
    if (entry.name != bytes) {
        RequireXMLText(name);
        entry.qtName = ToQtText(name);
        entry.name = bytes;
    }
    return entry.qtName;
}

} // namespace vo::detail
