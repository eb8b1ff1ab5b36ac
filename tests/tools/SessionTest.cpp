#include "VoProgram.h"

#include <Approved.h>

#include <fstream>
#include <regex>

namespace {

/// What is typed, in order, and answered: the files of "sessions" are what a shell shows. What differs each time or is
/// the compressing library's is masked.
class Session : public VoProgram, public testing::WithParamInterface<const char*>
{
protected:
    /// The lines of a session that begin with "$ ", each shown and carried out, and its remarks.
    static std::string ScriptOf(const std::string& file)
    {
        std::string script = "SESSIONS=" VO_SESSIONS "; . $SESSIONS/trees.sh\n";
        std::ifstream lines(file);
        for (std::string line; std::getline(lines, line);) {
            if (line.front() == '$' || line.front() == '#')
                script += "cat <<'TYPED'\n" + line + "\nTYPED\n";
            if (line.front() == '$')
                script += "{ " + line.substr(2) + "\n} 2>&1 || echo \"[$?]\"\n";
        }
        return script;
    }

    std::string masked(std::string text) const
    {
        const std::pair<std::regex, const char*> masks[] = {
            {std::regex(m_scratch.native().string()), "DIR"},
            {std::regex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"), "ID"},
            {std::regex("(time +|ratio +|\"seconds\": |\"ratio\": )[-0-9.e]+( s)?"), "$1*"},
            {std::regex("(\"(bytesOut|bytesFetched|bytesToFetch|chunkBytes|bytes)\": )[0-9]+"), "$1*"},
            {std::regex("[0-9]+\\.[0-9] [KM]B"), "* KB"},
        };
        for (const auto& [what, mask] : masks)
            text = std::regex_replace(text, what, mask);
        return text;
    }
};

} // namespace

TEST_P(Session, GoesAsApproved)
{
    VO_SKIP_WITHOUT_SHELL();
    const std::string file = std::string(VO_SESSIONS "/") + GetParam() + ".session";
    vo::test::ExpectApproved(masked(shell(ScriptOf(file)).out), file);
}

INSTANTIATE_TEST_SUITE_P(Typed, Session,
                         testing::Values("road", "others", "unrecorded", "damage", "links", "refused", "publishing",
                                         "small", "json", "staged", "table", "zip", "lp", "help", "report", "update",
                                         "completion", "patches"),
                         [](const auto& session) { return std::string(session.param); });
