#include <XML/detail/XMLAttributeGuard.h>

#include <XML/detail/XMLText.h>

#include <string>

namespace vo::detail {

namespace {

bool IsQuote(char character)
{
    return character == '"' || character == '\'';
}

} // namespace

void XMLAttributeGuard::restart()
{
    *this = XMLAttributeGuard();
}

bool XMLAttributeGuard::passes(std::string_view bytes)
{
    if (m_encoding == Encoding::Unknown && bytes.size() >= 2) {
        const std::string_view mark = bytes.substr(0, 2);
        if (mark == "\xFF\xFE" || mark == std::string_view("<\0", 2))
            m_encoding = Encoding::Utf16LittleEndian;
        else if (mark == "\xFE\xFF" || mark == std::string_view("\0<", 2))
            m_encoding = Encoding::Utf16BigEndian;
        else
            m_encoding = Encoding::Bytes;
    }
    return m_encoding == Encoding::Utf16LittleEndian || m_encoding == Encoding::Utf16BigEndian
               ? passesUnits(bytes)
               : passesCharacters(bytes);
}

bool XMLAttributeGuard::passesUnits(std::string_view bytes)
{
    std::string characters;
    characters.reserve(bytes.size() / 2 + 1);
    for (const char byte : bytes) {
        if (m_isWithinUnit) {
            const bool isLittle = m_encoding == Encoding::Utf16LittleEndian;
            const char high = isLittle ? byte : m_firstByte;
            const char low = isLittle ? m_firstByte : byte;
            characters += high == 0 ? low : 'x'; // a letter stands for whatever is no ASCII character
        }
        m_firstByte = byte;
        m_isWithinUnit = !m_isWithinUnit;
    }
    return passesCharacters(characters);
}

bool XMLAttributeGuard::passesCharacters(std::string_view characters)
{
    const std::size_t last = characters.rfind('<');
    if (last != std::string_view::npos) {
        m_place = Place::TagStart;
        m_attributes = 0;
        characters.remove_prefix(last + 1);
    }
    for (std::size_t i = 0; i < characters.size() && m_place != Place::Elsewhere; ++i) {
        if (m_place == Place::Value)
            i = characters.find(m_quote, i);
        if (i == std::string_view::npos)
            break;
        step(characters[i]);
    }
    return m_attributes <= 2 * MaximumXMLAttributes; // each may come with a declaration of its namespace
}

// Whatever the grammar of a start tag does not allow ends it here; the parser meets the same error.
void XMLAttributeGuard::step(char character)
{
    const bool endsTag = character == '>' || character == '/';
    switch (m_place) {
    case Place::Elsewhere:
        break;
    case Place::TagStart:
        m_place = endsTag || character == '!' || character == '?' ? Place::Elsewhere : Place::TagName;
        break;
    case Place::TagName:
        if (IsXMLBlank(character))
            m_place = Place::Between;
        else if (endsTag)
            m_place = Place::Elsewhere;
        break;
    case Place::Between:
        if (!IsXMLBlank(character))
            m_place = endsTag ? Place::Elsewhere : Place::Name;
        break;
    case Place::Name:
        if (character == '=')
            m_place = Place::AfterEquals;
        else if (IsXMLBlank(character))
            m_place = Place::AfterName;
        else if (endsTag)
            m_place = Place::Elsewhere;
        break;
    case Place::AfterName:
        if (!IsXMLBlank(character))
            m_place = character == '=' ? Place::AfterEquals : Place::Elsewhere;
        break;
    case Place::AfterEquals:
        if (IsQuote(character)) {
            m_quote = character;
            ++m_attributes;
        }
        if (!IsXMLBlank(character))
            m_place = IsQuote(character) ? Place::Value : Place::Elsewhere;
        break;
    case Place::Value: // at the quote that ends it
        m_place = Place::Between;
        break;
    }
}

} // namespace vo::detail
