#include <vo/line/Help.h>

#include <vo/line/Command.h>
#include <vo/line/TextLayout.h>
#include <vo/line/Topics.h>
#include <vo/screen/Terminal.h>

#include <cstdio>

namespace vo::tool {
namespace {

VoString OptionTable(const std::vector<Option>& options, std::size_t width)
{
    TextRows rows;
    for (const Option& option : options)
        rows.emplace_back(OptionText(option), option.help);
    return TwoColumns(rows, width);
}

VoString TopicTable(std::size_t width)
{
    TextRows rows;
    for (const Topic& topic : Topics())
        rows.emplace_back(topic.name, topic.summary);
    return TwoColumns(rows, width);
}

} // namespace

VoString OptionText(const Option& option)
{
    VoString text = option.letter != '\0' ? VoString("-") + option.letter + ", --" : VoString("    --");
    text += option.name;
    if (option.value != nullptr)
        text += VoString("=") + option.value;
    return text;
}

VoString UsageText(const Command& command)
{
    const VoString arguments(command.arguments);
    return arguments.isEmpty() ? VoString(command.name) : command.name + (" " + arguments);
}

VoString OverviewText(std::size_t width)
{
    TextRows rows;
    for (const Command& command : Commands())
        rows.emplace_back(command.name, command.summary);
    return "usage: vo COMMAND [OPTIONS] [ARGUMENTS]\n"
           "\n" +
           Wrapped("Publishes folders as releases, and installs, updates, verifies and removes releases.", width) +
           "\n"
           "commands:\n" +
           TwoColumns(rows, width) +
           "\n"
           "options of every command:\n" +
           OptionTable(CommonOptions(), width) +
           "\n"
           "topics:\n" +
           TopicTable(width) + "\n" +
           Wrapped("Results go to standard output, messages and progress to standard error. \"vo help COMMAND\" and "
                   "\"vo help TOPIC\" tell more, \"vo help topics\" all topics.",
                   width);
}

VoString CommandText(const Command& command, std::size_t width)
{
    const VoString usage("usage: vo ");
    VoString text =
        Wrapped(UsageText(command), width, usage, usage.size()) + "\n" + Wrapped(command.description, width);
    if (!command.options.empty())
        text += "\noptions:\n" + OptionTable(command.options, width);
    return text + "\noptions of every command:\n" + OptionTable(CommonOptions(), width);
}

VoString TopicText(const Topic* topic, std::size_t width)
{
    VoString text;
    for (const Topic& each : Topics()) {
        if (topic == nullptr || topic == &each)
            text += VoString(text.isEmpty() ? "" : "\n") + each.name + ": " + each.summary + "\n" +
                    TwoColumns(each.rows, width);
    }
    return text;
}

ExitCode Print(const VoString& text)
{
    std::fwrite(text.c_str(), 1, text.size(), stdout);
    return std::fflush(stdout) == 0 ? ExitCode::Done : ExitCode::Failed;
}

ExitCode PrintHelp(const Command* command)
{
    const std::size_t width = OutputSize().columns;
    return Print(command != nullptr ? CommandText(*command, width) : OverviewText(width));
}

ExitCode PrintVersion()
{
    return Print("vo " VOCORE_VERSION "\n");
}

} // namespace vo::tool
