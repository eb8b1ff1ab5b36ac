#include <vo/Session.h>
#include <vo/line/Paths.h>
#include <vo/release/Besides.h>
#include <vo/release/ReleaseChoice.h>
#include <vo/release/Totals.h>

#include <Updater/AdvertisedPackageListing.h>
#include <Updater/PackageDifferences.h>

#include <algorithm>
#include <iterator>
#include <vector>

namespace vo::tool {

using namespace updater;

namespace {

struct Totals
{
    std::uint64_t added = 0;
    std::uint64_t modified = 0;
    std::uint64_t removed = 0;
};

const AdvertisedFileListing* FileOf(const AdvertisedPackageListing& package, const VoUUID& id)
{
    return static_cast<const AdvertisedFileListing*>(package.file(id));
}

void ShowDifference(Console& console, const FileDifference& difference, const AdvertisedPackageListing& from,
                    const AdvertisedPackageListing& to, Totals& totals)
{
    const AdvertisedFileListing* const before = FileOf(from, difference.fileID());
    const AdvertisedFileListing* const after = FileOf(to, difference.fileID());
    const VoString target = PathText((after != nullptr ? after : before)->target());
    const auto record = JsonRecord()("target", target)("id", difference.fileID());
    const auto with = [&](const char* type) { return JsonRecord(record)("type", type); };
    switch (difference.type()) {
    case FileDifference::Added:
        ++totals.added;
        console.row("differences", "added     " + target + "  " + BytesText(BytesOf(*after)),
                    with("added")("size", BytesOf(*after)));
        return;
    case FileDifference::Modified:
        ++totals.modified;
        console.row("differences",
                    "modified  " + target + "  " + BytesText(BytesOf(*before)) + " -> " + BytesText(BytesOf(*after)),
                    with("modified")("oldSize", BytesOf(*before))("size", BytesOf(*after)));
        return;
    case FileDifference::Removed:
        ++totals.removed;
        console.row("differences", "removed   " + target + "  " + BytesText(BytesOf(*before)),
                    with("removed")("oldSize", BytesOf(*before)));
        return;
    }
}

void ShowAttributeDifferences(Session& session, AdvertisedPackageListing& from, AdvertisedPackageListing& to)
{
    const auto before = BesidesOf(session, from, session.arguments.fileArgument(0));
    const auto after = BesidesOf(session, to, session.arguments.fileArgument(1));
    const auto show = [&](const std::vector<Besides>& in, const std::vector<Besides>& notIn, const char* type) {
        std::vector<Besides> only;
        std::set_difference(in.begin(), in.end(), notIn.begin(), notIn.end(), std::back_inserter(only));
        for (const Besides& one : only)
            ShowBesides(session.console, one, type);
    };
    session.console.list("attributes");
    show(after, before, "added");
    show(before, after, "removed");
}

ExitCode Run(Session& session)
{
    Console& console = session.console;
    const auto from = ReadDefinition(session, session.arguments.fileArgument(0));
    const auto to = ReadDefinition(session, session.arguments.fileArgument(1));
    const auto differences = from->compare(*to);

    Totals totals;
    console.list("differences");
    for (const FileDifference& difference : differences->fileDifferences())
        ShowDifference(console, difference, *from, *to, totals);
    ShowAttributeDifferences(session, *from, *to);
    console.fact("from", "from", ReleaseText(from->version()), from->version().toString());
    console.fact("to", "to", ReleaseText(to->version()), to->version().toString());
    console.fact("added", "added", totals.added);
    console.fact("modified", "modified", totals.modified);
    console.fact("removed", "removed", totals.removed);
    return ExitCode::Done;
}

} // namespace

Command DiffCommand()
{
    return {"diff",
            "A/package.xml B/package.xml",
            "compare two releases of one package",
            "Lists the files that differ between two releases of one package, with their sizes, and what differs of\n"
            "executables, links and empty folders. Files are told apart by their IDs, which a target keeps from\n"
            "release to release.\n",
            {},
            2,
            2,
            Run};
}

} // namespace vo::tool
