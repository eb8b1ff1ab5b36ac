#include <vo/line/Completion.h>

#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Help.h>

namespace vo::tool {
namespace {

ExitCode Run(Session& session)
{
    const VoString& shell = session.arguments.argument(0);
    const auto script = CompletionScript(shell.toStdString());
    if (!script)
        throw UsageError("argument: \"" + shell + "\" is none of bash, zsh and fish");
    return Print(*script);
}

} // namespace

Command CompletionCommand()
{
    return {"completion",
            "bash|zsh|fish",
            "print the script by which a shell completes command lines",
            "Prints the script by which a shell completes commands, options, files and folders. An installed program\n"
            "has it where the shells look; else: \"source <(vo completion bash)\", \"source <(vo completion zsh)\" or\n"
            "\"vo completion fish | source\".\n",
            {},
            1,
            1,
            Run};
}

} // namespace vo::tool
