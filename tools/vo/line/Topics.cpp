#include <vo/line/Topics.h>

#include <algorithm>

namespace vo::tool {
namespace {

TextRows ExitCodes()
{
    return {
        {"0", "done"},
        {"1", "failed"},
        {"2", "wrong usage"},
        {"3", "nothing to do: everything already stands as asked"},
        {"4", "verification found differences"},
        {"5", "cancelled; the same command goes on from there"},
        {"6", "refused as unsafe: a document that could do harm or that its publisher does not vouch for, or a release "
              "that would replace a newer one, or what is another's, unasked"},
        {"7", "a linear problem was answered, but the answer is not proven optimal"},
    };
}

TextRows Environment()
{
    return {
        {"VO_LOG", "what is logged, and where to, beside what a command shows: \"updater=diagnostic,@folder=logs\""},
        {"VOAPPDATAPATH", "the application data directory, instead of the platform's own place"},
        {"NO_COLOR", "not empty: no colours, also on a terminal"},
        {"TERM", "\"dumb\": a terminal that shows no colours"},
        {"http_proxy, https_proxy, no_proxy", "the way to servers, where the system has no other setting for it"},
        {"TMPDIR", "where temporary files are made"},
        {"VO_KEY", "set for what --passphrase-command runs: the file of the key whose passphrase is asked for"},
    };
}

TextRows Files()
{
    return {
        {".voignore", "in a folder that is published: patterns of what to leave out"},
        {"updates/installed/packages.xml", "in the application data directory: the registry of what is installed"},
        {"updates/installed/PACKAGE.xml", "one listing for each installed package"},
        {"updates/installed/PACKAGE.pin", "its publisher's keys, where its releases are signed"},
        {"updates/installed/PACKAGE.seen", "what the system told of its files when they were found right"},
        {"updates/installed/rollout.id", "this installation's number in roll-outs"},
        {"updates/download/PACKAGE/", "chunks of an installation under way"},
        {"updates/staged/", "releases that are staged, for vo commit"},
        {"updates/sources/PACKAGE.txt", "where the package was installed from, for vo repair and vo update"},
        {"vo-shell-history", "what was typed at vo shell"},
        {".packages.seen", "beside declarations.xml: what the system told of the files that were published"},
        {".packages.lock", "there too: held while somebody publishes"},
    };
}

} // namespace

const std::vector<Topic>& Topics()
{
    static const std::vector<Topic> topics = {
        {"exit-codes", "what the program's end tells a script", "EXIT STATUS", ExitCodes()},
        {"environment", "the variables that are looked at", "ENVIRONMENT", Environment()},
        {"files", "what is kept, and where", "FILES", Files()},
    };
    return topics;
}

const Topic* FindTopic(std::string_view name)
{
    const auto& topics = Topics();
    const auto found =
        std::find_if(topics.begin(), topics.end(), [name](const Topic& topic) { return topic.name == name; });
    return found == topics.end() ? nullptr : &*found;
}

} // namespace vo::tool
