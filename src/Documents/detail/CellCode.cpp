#include <Documents/detail/CellCode.h>

#include <Core/detail/Escapes.h>

namespace vo::detail {

std::size_t AppendCellCode(std::string& written, std::string_view text)
{
    if (text.substr(0, 2) == "\xEF\xBF" && text.size() >= 3 && (text[2] == '\xBE' || text[2] == '\xBF')) {
        written += text[2] == '\xBE' ? "_xFFFE_" : "_xFFFF_";
        return 3;
    }
    if (text.empty() || static_cast<unsigned char>(text.front()) >= 0x20 || text.front() == '\t' ||
        text.front() == '\n')
        return 0;
    written += "_x00";
    AppendHex(written, text.front());
    written += '_';
    return 1;
}

} // namespace vo::detail
