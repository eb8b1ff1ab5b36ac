#pragma once

#include <XML/detail/XMLLimits.h>

#include <cstddef>
#include <string_view>

namespace vo::detail {

/// Counts the attributes of a start tag while its bytes are on their way to the parser, which examines them only once
/// it has the whole tag, in time that grows with the square of their number.
///
/// A "<" begins something new wherever it stands, since no attribute value can hold one, so of each block only what
/// follows the last one is looked at. UTF-8, UTF-16 and all encodings are understood in which ASCII characters are
/// single bytes that no other character contains.
class XMLAttributeGuard
{
public:
    void restart(); ///< From the beginning of a document.
    /// Looks at the next bytes of the document; false once a start tag has many more than
    /// MaximumXMLAttributes.
    bool passes(std::string_view bytes);

private:
    enum class Encoding
    {
        Unknown,
        Bytes,
        Utf16BigEndian,
        Utf16LittleEndian
    };

    // Within a start tag, or not.
    enum class Place
    {
        Elsewhere,
        TagStart,
        TagName,
        Between,
        Name,
        AfterName,
        AfterEquals,
        Value
    };

    bool passesUnits(std::string_view bytes);
    bool passesCharacters(std::string_view characters);
    void step(char character);

    Encoding m_encoding = Encoding::Unknown;
    Place m_place = Place::Elsewhere;
    char m_quote = '"';
    bool m_isWithinUnit = false; // one byte of a UTF-16 unit has been seen
    char m_firstByte = 0;        // that byte
    std::size_t m_attributes = 0;
};

} // namespace vo::detail
