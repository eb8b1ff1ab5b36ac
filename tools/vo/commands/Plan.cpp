#include "../InstallJob.h"
#include "../Session.h"

namespace vo::tool {
namespace {

ExitCode run(Session& session)
{
    return ShowPlan(session, PrepareInstall(session));
}

} // namespace

Command PlanCommand()
{
    return {
        "plan",
        "DECLARATIONS|PACKAGE.XML --to FOLDER [--package ID] [--release V]",
        "show what installing would do",
        "Prints what \"vo install\" with the same arguments would do, before a byte moves: the files to add, update\n"
        "and remove, and the chunks to fetch. Nothing is changed.\n",
        InstallOptions(),
        1,
        1,
        run};
}

} // namespace vo::tool
