#include <Core/detail/UTF8.h>

#include <cstdint>
#include <cstring>

namespace vo::detail {
namespace {

// Bytes at the beginning that are ASCII; whole words only, and perhaps some more.
std::size_t ASCIIPrefix(std::string_view bytes)
{
    std::size_t size = 0;
    std::uint64_t words[4];
    while (bytes.size() - size >= sizeof words) {
        std::memcpy(words, bytes.data() + size, sizeof words);
        if (((words[0] | words[1] | words[2] | words[3]) & 0x8080808080808080U) != 0)
            break;
        size += sizeof words;
    }
    while (size < bytes.size() && static_cast<unsigned char>(bytes[size]) < 0x80)
        ++size;
    return size;
}

std::size_t SizeByLead(unsigned lead)
{
    if (lead >= 0xc2 && lead < 0xe0)
        return 2;
    if (lead >= 0xe0 && lead < 0xf0)
        return 3;
    return lead >= 0xf0 && lead < 0xf5 ? 4 : 0;
}

} // namespace

DecodedCharacter DecodeUTF8(std::string_view bytes)
{
    const auto byteAt = [&](std::size_t index) {
        return static_cast<unsigned>(static_cast<unsigned char>(bytes[index]));
    };
    const unsigned lead = byteAt(0);
    if (lead < 0x80)
        return {lead, 1, DecodedCharacter::State::Whole};
    const std::size_t size = SizeByLead(lead);
    if (size == 0)
        return {};
    // The second byte tells overlong forms, surrogates and what lies beyond U+10FFFF.
    unsigned least = lead == 0xe0 ? 0xa0 : lead == 0xf0 ? 0x90 : 0x80;
    unsigned most = lead == 0xed ? 0x9f : lead == 0xf4 ? 0x8f : 0xbf;
    char32_t code = lead & (0x7fU >> size);
    for (std::size_t i = 1; i < size; ++i) {
        if (i == bytes.size())
            return {0, 0, DecodedCharacter::State::Incomplete};
        if (byteAt(i) < least || byteAt(i) > most)
            return {};
        code = code << 6 | (byteAt(i) & 0x3f);
        least = 0x80;
        most = 0xbf;
    }
    return {code, size, DecodedCharacter::State::Whole};
}

std::size_t ValidUTF8Prefix(std::string_view bytes)
{
    std::size_t size = ASCIIPrefix(bytes);
    while (size < bytes.size()) {
        const DecodedCharacter character = DecodeUTF8(bytes.substr(size));
        if (character.state != DecodedCharacter::State::Whole)
            break;
        size += character.size;
        size += ASCIIPrefix(bytes.substr(size));
    }
    return size;
}

void AppendUTF8(std::string& text, char32_t code)
{
    const auto append = [&](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (code < 0x80)
        return append(code);
    if (code < 0x800) {
        append(0xc0 | code >> 6);
    } else {
        if (code < 0x10000) {
            append(0xe0 | code >> 12);
        } else {
            append(0xf0 | code >> 18);
            append(0x80 | (code >> 12 & 0x3f));
        }
        append(0x80 | (code >> 6 & 0x3f));
    }
    append(0x80 | (code & 0x3f));
}

} // namespace vo::detail
