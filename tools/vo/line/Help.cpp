#include <vo/line/Help.h>

#include <vo/line/Command.h>

#include <algorithm>
#include <cstdio>

namespace vo::tool {
namespace {

/// Rows of two columns, aligned and indented.
VoString Table(const std::vector<std::pair<VoString, VoString>>& rows)
{
    std::size_t width = 0;
    for (const auto& row : rows)
        width = std::max(width, row.first.size());
    VoString text;
    for (const auto& [left, right] : rows) {
        VoString padded = left;
        padded.resize(width, ' ');
        text += "  " + padded + "  " + right + "\n";
    }
    return text;
}

VoString OptionTable(const std::vector<Option>& options)
{
    std::vector<std::pair<VoString, VoString>> rows;
    for (const Option& option : options) {
        VoString left = option.letter != '\0' ? VoString("-") + option.letter + ", --" : VoString("    --");
        left += option.name;
        if (option.value != nullptr)
            left += VoString("=") + option.value;
        rows.emplace_back(left, option.help);
    }
    return Table(rows);
}

VoString ExitCodeTable()
{
    return Table({
        {"0", "done"},
        {"1", "failed"},
        {"2", "wrong usage"},
        {"3", "nothing to do: everything already stands as asked"},
        {"4", "verification found differences"},
        {"5", "cancelled; the same command goes on from there"},
        {"6", "refused as unsafe: a document that could do harm, or an older release than the installed one"},
        {"7", "a linear problem was answered, but the answer is not proven optimal"},
    });
}

ExitCode Print(const VoString& text)
{
    std::fwrite(text.c_str(), 1, text.size(), stdout);
    return std::fflush(stdout) == 0 ? ExitCode::Done : ExitCode::Failed;
}

} // namespace

VoString OverviewText()
{
    std::vector<std::pair<VoString, VoString>> rows;
    for (const Command& command : Commands())
        rows.emplace_back(command.name, command.summary);
    return "usage: vo COMMAND [options] [arguments]\n"
           "\n"
           "Publishes folders as releases, and installs, verifies and removes releases.\n"
           "\n"
           "commands:\n" +
           Table(rows) +
           "\n"
           "options of every command:\n" +
           OptionTable(CommonOptions()) +
           "\n"
           "Results go to standard output, messages and progress to standard error.\n"
           "\n"
           "exit codes:\n" +
           ExitCodeTable() +
           "\n"
           "\"vo help COMMAND\" tells more.\n";
}

VoString CommandText(const Command& command)
{
    VoString text = VoString("usage: vo ") + command.name + " " + command.arguments + "\n\n" + command.description;
    if (!command.options.empty())
        text += "\noptions:\n" + OptionTable(command.options);
    return text + "\noptions of every command:\n" + OptionTable(CommonOptions());
}

ExitCode PrintHelp(const Command* command)
{
    return Print(command != nullptr ? CommandText(*command) : OverviewText());
}

ExitCode PrintVersion()
{
    return Print("vo " VOCORE_VERSION "\n");
}

} // namespace vo::tool
