#include <Core/VoPrintable.h>

#include <Core/detail/UTF8.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace vo {
namespace {

bool IsPlain(char c)
{
    return c >= 0x20 && c < 0x7f;
}

void AppendEscape(std::string& shown, char32_t code)
{
    static constexpr char digits[] = "0123456789abcdef";
    if (code == '\n' || code == '\r' || code == '\t') {
        shown += {'\\', code == '\n' ? 'n' : code == '\r' ? 'r' : 't'};
        return;
    }
    shown += code < 0x100 ? "\\x" : "\\u";
    for (int shift = code < 0x100 ? 4 : 12; shift >= 0; shift -= 4)
        shown += digits[code >> shift & 15];
}

} // namespace

bool IsUnprintable(char32_t code)
{
    return code < 0x20 || (code >= 0x7f && code < 0xa0) || code == 0x2028 || code == 0x2029 ||
           (code >= 0x202a && code <= 0x202e) || (code >= 0x2066 && code <= 0x2069);
}

VoString Printable(const VoString& text)
{
    std::string_view rest = text.toStdString();
    if (std::all_of(rest.begin(), rest.end(), IsPlain))
        return text;
    std::string shown;
    while (!rest.empty()) {
        const detail::DecodedCharacter character = detail::DecodeUTF8(rest);
        const bool isWhole = character.state == detail::DecodedCharacter::State::Whole;
        const std::size_t size = isWhole ? character.size : 1;
        if (!isWhole)
            AppendEscape(shown, static_cast<unsigned char>(rest.front()));
        else if (IsUnprintable(character.code))
            AppendEscape(shown, character.code);
        else
            shown += rest.substr(0, size);
        rest.remove_prefix(size);
    }
    return VoString(std::move(shown));
}

} // namespace vo
