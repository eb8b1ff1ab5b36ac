#include <XML/detail/XMLNames.h>

#include <Core/VoXMLException.h>
#include <XML/detail/XMLText.h>

#include <QtCore/QStringView>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

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

// Cheaper than the framework's comparison, which tells the order too.
bool AreSame(const QString& a, QStringView b)
{
    const auto bytes = static_cast<std::size_t>(b.size()) * sizeof(ushort);
    return a.size() == b.size() && (bytes == 0 || std::memcmp(a.utf16(), b.utf16(), bytes) == 0);
}

// The ranges of the standard, for characters beyond ASCII.
constexpr std::pair<ushort, ushort> NameStarts[] = {
    {0x00C0, 0x00D6}, {0x00D8, 0x00F6}, {0x00F8, 0x02FF}, {0x0370, 0x037D}, {0x037F, 0x1FFF}, {0x200C, 0x200D},
    {0x2070, 0x218F}, {0x2C00, 0x2FEF}, {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}};
constexpr std::pair<ushort, ushort> CombiningMarks = {0x0300, 0x036F};

bool Holds(const std::pair<ushort, ushort>& range, QChar character)
{
    return range.first <= character.unicode() && character.unicode() <= range.second;
}

bool IsNameCharacter(QChar character, bool isFirst)
{
    const ushort unit = character.unicode();
    if (unit < 0x80) {
        const bool isLetter = (unit >= 'A' && unit <= 'Z') || (unit >= 'a' && unit <= 'z') || unit == '_';
        return isLetter || (!isFirst && ((unit >= '0' && unit <= '9') || unit == '-' || unit == '.'));
    }
    const bool isListed = std::any_of(std::begin(NameStarts), std::end(NameStarts),
                                      [character](const auto& range) { return Holds(range, character); });
    const bool isLetter = character.isLetter() || character.category() == QChar::Number_Letter;
    if (isFirst)
        return isListed && isLetter;
    return (isListed || Holds(CombiningMarks, character)) && (isLetter || character.isNumber() || character.isMark());
}

bool IsUsable(const XMLName& name, bool hasNamespace)
{
    return name.kind == XMLNameKind::Local || (name.kind == XMLNameKind::Qualified && !hasNamespace);
}

} // namespace

std::shared_ptr<const VoString> XMLReadNames::shared(QStringView name)
{
    const auto count = static_cast<std::size_t>(name.size());
    if (count > LongestName)
        return std::make_shared<const VoString>(FromQtText(name));
    Entry& entry = m_entries[Slot(name.utf16(), count, m_entries.size())];
    if (!entry.name || !AreSame(entry.qtName, name)) {
        entry.name = std::make_shared<const VoString>(FromQtText(name));
        entry.qtName = name.toString();
    }
    return entry.name;
}

XMLNameKind NameKind(const QString& name)
{
    bool hasPrefix = false;
    bool isAtStart = true;
    for (const QChar character : name) {
        if (character == QLatin1Char(':')) {
            if (isAtStart || std::exchange(hasPrefix, true))
                return XMLNameKind::None;
            isAtStart = true;
            continue;
        }
        if (!IsNameCharacter(character, isAtStart))
            return XMLNameKind::None;
        isAtStart = false;
    }
    if (isAtStart) // nothing, or nothing behind the colon
        return XMLNameKind::None;
    return hasPrefix ? XMLNameKind::Qualified : XMLNameKind::Local;
}

XMLName ToXMLName(const VoString& name)
{
    QString text = ToQtText(name);
    const XMLNameKind kind = NameKind(text);
    return {std::move(text), kind};
}

QString RequireElementName(const VoString& name, const XMLName& decoded, bool hasNamespace)
{
    if (IsUsable(decoded, hasNamespace))
        return decoded.text;
    RequireXMLText(name);
    throw VoInvalidXMLOperation("Invalid element name: " + name);
}

QString RequireAttributeName(const VoString& name, const XMLName& decoded, bool hasNamespace)
{
    if (!IsUsable(decoded, hasNamespace))
        throw VoInvalidXMLAttributeName(name);
    return decoded.text;
}

XMLName XMLWrittenNames::decoded(const VoString& name)
{
    const std::string& bytes = name.toStdString();
    if (bytes.empty() || bytes.size() > LongestName)
        return ToXMLName(name);
    Entry& entry =
        m_entries[Slot(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), m_entries.size())];
    if (entry.name != bytes) {
        entry.decoded = ToXMLName(name);
        entry.name = bytes;
    }
    return entry.decoded;
}

} // namespace vo::detail
