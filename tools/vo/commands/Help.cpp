#include <vo/line/Help.h>

#include <vo/Session.h>

namespace vo::tool {
namespace {

ExitCode Run(Session& session)
{
    if (session.arguments.count() == 0)
        return PrintHelp(nullptr);
    // Asked again as a command line, so that a mistyped name is met by the same words.
    const Arguments named({QString(session.arguments.argument(0)), QStringLiteral("--help")});
    return PrintHelp(named.command());
}

} // namespace

Command HelpCommand()
{
    return {"help",
            "[COMMAND]",
            "show the commands, or how one is used",
            "Shows the commands, or how one is used.\n",
            {},
            0,
            1,
            Run};
}

} // namespace vo::tool
