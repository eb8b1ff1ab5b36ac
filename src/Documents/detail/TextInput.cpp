#include <Documents/detail/TextInput.h>

#include <IO/VoIODevice.h>

#include <algorithm>

namespace vo::detail {
namespace {

constexpr std::size_t RawBlockSize = 64 * 1024;

// LF and a CR end a line, an LF behind a CR does not once more. The compiler makes vector code of this.
std::size_t LineEndsIn(std::string_view text, char before)
{
    std::size_t count = 0;
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, 255); // so many, at most, as a byte counts
        unsigned char ends = piece.front() == '\r' || (piece.front() == '\n' && before != '\r') ? 1 : 0;
        for (std::size_t i = 1; i < piece.size(); ++i) {
            const unsigned isReturn = piece[i] == '\r';
            const unsigned isFeed = piece[i] == '\n';
            const unsigned follows = piece[i - 1] == '\r';
            ends = static_cast<unsigned char>(ends + isReturn + (isFeed & (1 - follows)));
        }
        count += ends;
        before = piece.back();
        text.remove_prefix(piece.size());
    }
    return count;
}

std::size_t CharactersIn(std::string_view text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }));
}

} // namespace

void TextPlace::advance(std::string_view text)
{
    if (text.empty())
        return;
    line += LineEndsIn(text, m_last);
    const std::size_t end = text.find_last_of("\r\n");
    column = end == std::string_view::npos ? column + CharactersIn(text) : 1 + CharactersIn(text.substr(end + 1));
    m_last = text.back();
}

TextInput::TextInput(VoIODevice& device, TextEncoding expected)
    : m_device(device)
    , m_encoding(expected)
{
}

std::size_t TextInput::take(char* target, std::size_t room)
{
    const std::size_t size = m_device.readInto(target, room);
    m_taken += size;
    m_isAtEnd = size == 0;
    return size;
}

void TextInput::readMark()
{
    while (m_raw.size() < LongestEncodingMark && !m_isAtEnd) {
        char bytes[LongestEncodingMark];
        m_raw.append(bytes, take(bytes, LongestEncodingMark - m_raw.size()));
    }
    m_hasReadMark = true;
    const auto mark = MarkOf(m_raw);
    if (!mark)
        return;
    m_encoding = mark->encoding;
    m_raw.erase(0, mark->bytes.size());
}

std::size_t TextInput::readInto(char* target, std::size_t room)
{
    if (!m_hasReadMark)
        readMark();
    std::size_t size = 0;
    while (size == 0 && !isBroken()) {
        size = m_encoding == TextEncoding::UTF8 ? readUTF8(target, room) : readDecoded(target, room);
        if (m_isAtEnd)
            break;
    }
    m_place.advance({target, size});
    return size;
}

// In place: most files are UTF-8 already.
std::size_t TextInput::readUTF8(char* target, std::size_t room)
{
    const std::size_t kept = m_raw.copy(target, m_raw.size());
    const std::size_t size = kept + take(target + kept, room - kept);
    const std::size_t valid = ValidUTF8Prefix({target, size});
    const std::string_view rest(target + valid, size - valid);
    m_isBroken = !rest.empty() && (m_isAtEnd || DecodeUTF8(rest).state == DecodedCharacter::State::Invalid);
    m_raw = m_isBroken ? std::string_view() : rest;
    return valid;
}

std::size_t TextInput::readDecoded(char* target, std::size_t room)
{
    if (m_decoded.empty())
        decodeMore();
    const std::size_t size = m_decoded.copy(target, room);
    m_decoded.erase(0, size);
    return size;
}

void TextInput::decodeMore()
{
    std::string block(RawBlockSize, '\0');
    m_raw.append(block, 0, take(block.data(), block.size()));
    std::string_view rest = m_raw;
    while (!rest.empty()) {
        const DecodedCharacter character = Decode(rest, m_encoding);
        if (character.state != DecodedCharacter::State::Whole) {
            m_isBroken = m_isAtEnd || character.state == DecodedCharacter::State::Invalid;
            break;
        }
        AppendUTF8(m_decoded, character.code);
        rest.remove_prefix(character.size);
    }
    m_raw.erase(0, m_raw.size() - rest.size());
}

} // namespace vo::detail
