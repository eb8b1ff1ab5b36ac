#include <vo/release/Besides.h>

#include <vo/Session.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>

#include <algorithm>
#include <string>
#include <tuple>

namespace vo::tool {

bool Besides::operator<(const Besides& other) const
{
    return std::tuple(std::string(kind), target, to) < std::tuple(std::string(other.kind), other.target, other.to);
}

std::vector<Besides> BesidesOf(const Session& session, updater::AdvertisedPackageListing& package,
                               const VoLocation& definition)
{
    Doing(session.arguments, "read", NameOf(session.arguments, definition),
          [&] { package.findAttributes(definition, session.stop, session.downloads); });
    std::vector<Besides> all;
    for (const VoFilePath& target : package.attributes()->executables)
        all.push_back({"executable", PathText(target), {}});
    for (const updater::ReleaseAttributes::Link& link : package.attributes()->links)
        all.push_back({"link", PathText(link.target), WayText(link.to)});
    for (const VoFilePath& target : package.attributes()->folders)
        all.push_back({"folder", PathText(target), {}});
    std::sort(all.begin(), all.end());
    return all;
}

void ShowBesides(Console& console, const Besides& one, const char* type)
{
    JsonRecord record;
    record("kind", one.kind)("target", one.target);
    if (!one.to.isEmpty())
        record("to", one.to);
    if (type)
        record("type", type);
    const VoString way = one.to.isEmpty() ? VoString() : "  to " + one.to;
    std::string begin = type ? type : "";
    begin.resize(type ? 10 : 0, ' '); // in a column with what became of files
    console.row("attributes", VoString(begin) + one.kind + "  " + one.target + way, record);
}

void ShowBesidesFigures(Console& console, const updater::ReleaseAttributes& attributes)
{
    const auto show = [&console](const char* key, const char* label, std::size_t count) {
        if (count > 0)
            console.fact(key, label, count);
    };
    show("links", "links", attributes.links.size());
    show("executables", "executables", attributes.executables.size());
    show("folders", "empty folders", attributes.folders.size());
}

} // namespace vo::tool
