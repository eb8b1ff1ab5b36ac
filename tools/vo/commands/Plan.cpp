#include <vo/Session.h>
#include <vo/release/InstallJob.h>
#include <vo/release/UpdateMatrix.h>

namespace vo::tool {
namespace {

ExitCode Run(Session& session)
{
    if (session.arguments.has("matrix"))
        return ShowUpdateMatrix(session);
    return ShowPlan(session, PrepareInstall(session));
}

std::vector<Option> Options()
{
    std::vector<Option> all = InstallOptions();
    all.push_back(AllOption());
    all.push_back({"matrix", nullptr, "show what the update between any two releases of a package takes"});
    return all;
}

} // namespace

Command PlanCommand()
{
    return {
        "plan",
        "DECLARATIONS|PACKAGE.XML|URL (--to FOLDER [--release V] | --matrix) [--package ID]",
        "show what installing would do",
        "Prints what \"vo install\" with the same arguments would do, before a byte moves: the files to add, update\n"
        "and remove, and the chunks to fetch. Nothing is changed.\n"
        "\n"
        "With --matrix prints instead, for every two declared releases of the package, the files that an update from\n"
        "the older to the newer writes, and the chunks and bytes that it fetches when no file has only moved.\n",
        Options(),
        1,
        1,
        Run};
}

} // namespace vo::tool
