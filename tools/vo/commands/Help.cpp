#include <vo/line/Help.h>

#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Manual.h>
#include <vo/line/Topics.h>
#include <vo/screen/Terminal.h>

namespace vo::tool {
namespace {

/// Asked again as a command line, so that a mistyped name is met by the same words.
const Command* NamedCommand(const VoString& name)
{
    return Arguments({QString(name), QStringLiteral("--help")}).command();
}

ExitCode Run(Session& session)
{
    const Arguments& arguments = session.arguments;
    const VoString name = arguments.count() == 0 ? VoString() : arguments.argument(0);
    if (arguments.has("man"))
        return Print(ManualPage(name.isEmpty() ? nullptr : NamedCommand(name)));
    const Topic* const topic = FindTopic(name.toStdString());
    if (topic != nullptr || name == "topics")
        return Print(TopicText(topic, OutputSize().columns));
    return PrintHelp(name.isEmpty() ? nullptr : NamedCommand(name));
}

} // namespace

Command HelpCommand()
{
    return {
        "help",
        "[COMMAND|TOPIC|topics] [--man]",
        "show the commands, or how one is used",
        "Shows the commands, or how one is used. A topic is what is true of all commands: \"vo help topics\" shows\n"
        "the exit codes, the environment variables and the files.\n",
        {{"man", nullptr, "print the manual page instead, vo(1) or vo-COMMAND(1): vo help --man | man -l -"}},
        0,
        1,
        Run};
}

} // namespace vo::tool
