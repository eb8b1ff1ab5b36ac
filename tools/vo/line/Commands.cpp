#include <vo/line/Command.h>

#include <algorithm>

namespace vo::tool {

bool Command::takes(std::string_view option) const
{
    return std::any_of(options.begin(), options.end(), [option](const Option& own) { return own.name == option; });
}

const std::vector<Option>& CommonOptions()
{
    static const std::vector<Option> options = {
        {"json", nullptr, "print the result as one JSON document on standard output"},
        {"quiet", nullptr, "no messages and no progress; errors still show", 'q'},
        {"verbose", nullptr, "say everything that is done", 'v'},
        {"progress", "always|never", "draw a progress line, instead of only when standard error is a terminal"},
        {"updates-dir", "DIR", "the updater's directory, instead of \"updates\" in the application data directory"},
        {"help", nullptr, "show the help of the command", 'h'},
        {"version", nullptr, "show the version of the program"},
    };
    return options;
}

const Command* FindCommand(std::string_view name)
{
    const auto& commands = Commands();
    const auto found =
        std::find_if(commands.begin(), commands.end(), [name](const Command& command) { return command.name == name; });
    return found == commands.end() ? nullptr : &*found;
}

} // namespace vo::tool
