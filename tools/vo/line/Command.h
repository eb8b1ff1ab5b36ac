#pragma once

#include <vo/line/ExitCode.h>

#include <cstddef>
#include <string_view>
#include <vector>

namespace vo::tool {

class Session;

/// One option, as the command line and the help know it.
struct Option
{
    const char* name;  ///< Without the leading dashes.
    const char* value; ///< What the help calls its value; null for a switch.
    const char* help;
    char letter = '\0'; ///< The short form, or none.
    bool repeatable = false;
};

/// One subcommand.
struct Command
{
    const char* name;
    const char* arguments; ///< As the help shows them.
    const char* summary;   ///< One line for the list of commands.
    const char* description;
    std::vector<Option> options;
    std::size_t fewestArguments;
    std::size_t mostArguments;
    ExitCode (*run)(Session&);

    bool takes(std::string_view option) const; ///< Whether the option is one of its own.
};

constexpr std::size_t AnyNumber = static_cast<std::size_t>(-1);

/// All subcommands, in the order of the help; the build makes the table from its list.
const std::vector<Command>& Commands();
/// The options that every subcommand takes.
const std::vector<Option>& CommonOptions();
/// Null when there is none of that name.
const Command* FindCommand(std::string_view name);

} // namespace vo::tool
