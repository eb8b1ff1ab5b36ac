#include <Documents/detail/TextEncoding.h>

#include <Documents/VoCSVValues.h>

#include <algorithm>
#include <array>
#include <iterator>

namespace vo::detail {
namespace {

using State = DecodedCharacter::State;

struct Named
{
    const char* name;
    TextEncoding encoding;
};

// The first name of an encoding is the one it is called by.
constexpr Named Names[] = {{"UTF-8", TextEncoding::UTF8},         {"UTF-16LE", TextEncoding::UTF16LE},
                           {"UTF-16BE", TextEncoding::UTF16BE},   {"UTF-32LE", TextEncoding::UTF32LE},
                           {"UTF-32BE", TextEncoding::UTF32BE},   {"Windows-1252", TextEncoding::Windows1252},
                           {"CP1252", TextEncoding::Windows1252}, {"ISO-8859-1", TextEncoding::ISO88591},
                           {"Latin1", TextEncoding::ISO88591}};

// That of UTF-32LE begins with that of UTF-16LE and so comes first.
constexpr EncodingMark Marks[] = {{TextEncoding::UTF8, {"\xef\xbb\xbf", 3}},
                                  {TextEncoding::UTF32LE, {"\xff\xfe\0\0", 4}},
                                  {TextEncoding::UTF32BE, {"\0\0\xfe\xff", 4}},
                                  {TextEncoding::UTF16LE, {"\xff\xfe", 2}},
                                  {TextEncoding::UTF16BE, {"\xfe\xff", 2}}};

// Windows-1252 differs from ISO 8859-1 from 0x80 to 0x9F only; 0 is no character.
constexpr std::array<char16_t, 32> Windows1252Codes = {0x20ac, 0,      0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021,
                                                       0x02c6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017d, 0,
                                                       0,      0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014,
                                                       0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0,      0x017e, 0x0178};

bool IsSurrogate(char32_t code)
{
    return code >= 0xd800 && code < 0xe000;
}

// The number in so many bytes.
char32_t NumberIn(std::string_view bytes, std::size_t size, bool isBigEndian)
{
    char32_t number = 0;
    for (std::size_t i = 0; i < size; ++i)
        number = number << 8 | static_cast<unsigned char>(bytes[isBigEndian ? i : size - 1 - i]);
    return number;
}

DecodedCharacter DecodeUTF16(std::string_view bytes, bool isBigEndian)
{
    if (bytes.size() < 2)
        return {0, 0, State::Incomplete};
    const char32_t first = NumberIn(bytes, 2, isBigEndian);
    if (!IsSurrogate(first))
        return {first, 2, State::Whole};
    if (first >= 0xdc00)
        return {};
    if (bytes.size() < 4)
        return {0, 0, State::Incomplete};
    const char32_t second = NumberIn(bytes.substr(2), 2, isBigEndian);
    if (second < 0xdc00 || !IsSurrogate(second))
        return {};
    return {0x10000 + ((first & 0x3ff) << 10) + (second & 0x3ff), 4, State::Whole};
}

DecodedCharacter DecodeUTF32(std::string_view bytes, bool isBigEndian)
{
    if (bytes.size() < 4)
        return {0, 0, State::Incomplete};
    const char32_t code = NumberIn(bytes, 4, isBigEndian);
    if (code > 0x10ffff || IsSurrogate(code))
        return {};
    return {code, 4, State::Whole};
}

DecodedCharacter DecodeWindows1252(unsigned char byte)
{
    if (byte < 0x80 || byte >= 0xa0)
        return {byte, 1, State::Whole};
    const char32_t code = Windows1252Codes[byte - 0x80U];
    return {code, 1, code == 0 ? State::Invalid : State::Whole};
}

// The byte of a character in an encoding of one byte a character.
std::optional<unsigned char> ByteOf(char32_t code, TextEncoding encoding)
{
    const bool isWindows = encoding == TextEncoding::Windows1252;
    if (code < 0x80 || (code < 0x100 && (code >= 0xa0 || !isWindows)))
        return static_cast<unsigned char>(code);
    const auto found = std::find(Windows1252Codes.begin(), Windows1252Codes.end(), code);
    if (!isWindows || found == Windows1252Codes.end())
        return std::nullopt;
    return static_cast<unsigned char>(0x80 + std::distance(Windows1252Codes.begin(), found));
}

bool IsUnicode(TextEncoding encoding)
{
    return encoding != TextEncoding::Windows1252 && encoding != TextEncoding::ISO88591;
}

void AppendNumber(std::string& bytes, char32_t number, std::size_t size, bool isBigEndian)
{
    for (std::size_t i = 0; i < size; ++i) {
        const std::size_t place = isBigEndian ? size - 1 - i : i;
        bytes += static_cast<char>(static_cast<unsigned char>(number >> (8 * place)));
    }
}

void AppendUTF16(std::string& bytes, char32_t code, bool isBigEndian)
{
    if (code < 0x10000)
        return AppendNumber(bytes, code, 2, isBigEndian);
    AppendNumber(bytes, 0xd800 + ((code - 0x10000) >> 10), 2, isBigEndian);
    AppendNumber(bytes, 0xdc00 + ((code - 0x10000) & 0x3ff), 2, isBigEndian);
}

void AppendEncodedCharacter(std::string& bytes, char32_t code, TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::UTF8:
        return AppendUTF8(bytes, code);
    case TextEncoding::UTF16LE:
    case TextEncoding::UTF16BE:
        return AppendUTF16(bytes, code, encoding == TextEncoding::UTF16BE);
    case TextEncoding::UTF32LE:
    case TextEncoding::UTF32BE:
        return AppendNumber(bytes, code, 4, encoding == TextEncoding::UTF32BE);
    case TextEncoding::Windows1252:
    case TextEncoding::ISO88591:
        break;
    }
    bytes += static_cast<char>(ByteOf(code, encoding).value_or('?'));
}

bool EqualsWithoutCase(std::string_view a, std::string_view b)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](char x, char y) { return lower(x) == lower(y); });
}

} // namespace

} // namespace vo::detail

namespace vo::csv {

const char* EncodingName(VoCSVFormat::Encoding encoding)
{
    return std::find_if(std::begin(detail::Names), std::end(detail::Names),
                        [&](const detail::Named& known) { return known.encoding == encoding; })
        ->name;
}

std::optional<VoCSVFormat::Encoding> EncodingNamed(std::string_view name)
{
    for (const detail::Named& known : detail::Names) {
        if (detail::EqualsWithoutCase(known.name, name))
            return known.encoding;
    }
    return std::nullopt;
}

} // namespace vo::csv

namespace vo::detail {

std::optional<EncodingMark> MarkOf(std::string_view bytes)
{
    for (const EncodingMark& mark : Marks) {
        if (bytes.substr(0, mark.bytes.size()) == mark.bytes)
            return mark;
    }
    return std::nullopt;
}

DecodedCharacter Decode(std::string_view bytes, TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::UTF8:
        return DecodeUTF8(bytes);
    case TextEncoding::UTF16LE:
    case TextEncoding::UTF16BE:
        return DecodeUTF16(bytes, encoding == TextEncoding::UTF16BE);
    case TextEncoding::UTF32LE:
    case TextEncoding::UTF32BE:
        return DecodeUTF32(bytes, encoding == TextEncoding::UTF32BE);
    case TextEncoding::Windows1252:
        return DecodeWindows1252(static_cast<unsigned char>(bytes.front()));
    case TextEncoding::ISO88591:
        break;
    }
    return {static_cast<unsigned char>(bytes.front()), 1, State::Whole};
}

std::optional<char32_t> FirstUnwritable(std::string_view text, TextEncoding encoding)
{
    const std::size_t valid = ValidUTF8Prefix(text);
    if (!IsUnicode(encoding)) {
        for (std::string_view rest = text.substr(0, valid); !rest.empty();) {
            const DecodedCharacter character = DecodeUTF8(rest);
            if (!ByteOf(character.code, encoding))
                return character.code;
            rest.remove_prefix(character.size);
        }
    }
    return valid == text.size() ? std::nullopt : std::optional<char32_t>(NotUTF8);
}

void AppendEncoded(std::string& bytes, std::string_view text, TextEncoding encoding)
{
    while (!text.empty()) {
        const DecodedCharacter character = DecodeUTF8(text);
        AppendEncodedCharacter(bytes, character.code, encoding);
        text.remove_prefix(std::max<std::size_t>(character.size, 1));
    }
}

} // namespace vo::detail
