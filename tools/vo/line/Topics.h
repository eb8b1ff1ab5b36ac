#pragma once

#include <vo/line/TextLayout.h>

#include <string_view>
#include <vector>

namespace vo::tool {

/// What is true of all commands, and is told apart from them.
struct Topic
{
    const char* name;    ///< As "vo help" takes it.
    const char* summary; ///< One line for the list of topics.
    const char* section; ///< Its heading in the manual.
    TextRows rows;
};

/// All topics, in the order of the help.
const std::vector<Topic>& Topics();
/// Null when there is none of that name.
const Topic* FindTopic(std::string_view name);

} // namespace vo::tool
