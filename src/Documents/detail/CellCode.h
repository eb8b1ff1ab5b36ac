#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vo::detail {

/// Appends the first character of a text by its number, as spreadsheet programs write what XML cannot hold or would
/// change: a control character other than tab and line feed as "_x0001_", U+FFFE and U+FFFF as "_xFFFE_". Gives its
/// length in bytes, or 0, and appends nothing, when it is another character.
std::size_t AppendCellCode(std::string& written, std::string_view text);

} // namespace vo::detail
