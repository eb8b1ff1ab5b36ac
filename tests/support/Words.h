#pragma once

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace vo::test {

/// The texts between the blanks of one, for lists of many short ones.
inline std::vector<std::string> Words(const std::string& text)
{
    std::istringstream stream(text);
    return std::vector<std::string>(std::istream_iterator<std::string>(stream), {});
}

} // namespace vo::test
