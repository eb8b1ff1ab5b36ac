#include <vo/release/UpdateMatrix.h>

#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/release/ReleaseChoice.h>

#include <Updater/ReleasePatches.h>
#include <Updater/UpdateCost.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vo::tool {

using namespace updater;
using Releases = std::vector<VoUniquePtr<AdvertisedPackageListing>>;

namespace {

Releases OpenReleases(const Session& session, const AdvertisedPackages& declared, const VoUUID& packageID,
                      const VoLocation& location)
{
    Releases releases;
    for (const AdvertisedPackages::Declaration& declaration : declared.declarations()) {
        if (declaration.packageID() != packageID)
            continue;
        const VoLocation definition = declaration.definition(location);
        releases.push_back(ReadDefinition(session, definition));
        releases.back()->setPatches(
            ReleasePatches::Find(*releases.back(), definition, session.stop, session.downloads));
    }
    std::stable_sort(releases.begin(), releases.end(),
                     [](const auto& a, const auto& b) { return a->version() < b->version(); });
    return releases;
}

VoString Padded(const VoString& text, std::size_t width)
{
    VoString result(text);
    result.resize(std::max(width, text.size()), ' ');
    return result + "  ";
}

void ShowUpdate(Console& console, const AdvertisedPackageListing* from, const AdvertisedPackageListing& to)
{
    const UpdateCost cost = from ? UpdateCost::Of(*from, to) : UpdateCost::Of(to);
    JsonRecord record;
    record("from", from ? from->version().toString() : VoString())("to", to.version().toString())("files", cost.files)(
        "chunks", cost.chunks)("bytesToFetch", cost.bytesToFetch)("bytesToWrite", cost.bytesToWrite);
    if (cost.patches > 0)
        record("patches", cost.patches);
    const VoString start = from ? ReleaseText(from->version()) : VoString("nothing");
    console.row("updates",
                Padded(start, 10) + Padded(ReleaseText(to.version()), 10) + Padded(VoString(cost.files), 8) +
                    Padded(VoString(cost.chunks), 8) + BytesText(cost.bytesToFetch) +
                    (cost.patches > 0 ? "  by " + VoString(cost.patches) + (cost.patches > 1 ? " patches" : " patch")
                                      : VoString()),
                record);
}

} // namespace

ExitCode ShowUpdateMatrix(Session& session)
{
    for (const char* option : {"to", "release", "allow-downgrade"}) {
        if (session.arguments.has(option))
            throw UsageError("option --matrix: goes with --package only, not with --" + VoString(option));
    }
    const VoLocation location = session.arguments.locationArgument(0);
    const auto declared = OpenDeclarations(session, location);
    const Releases releases =
        OpenReleases(session, *declared, ChoosePackage(*declared, session.arguments.text("package")), location);
    session.console.line(Padded("from", 10) + Padded("to", 10) + Padded("files", 8) + Padded("chunks", 8) + "bytes");
    session.console.list("updates");
    for (std::size_t to = 0; to < releases.size(); ++to) {
        ShowUpdate(session.console, nullptr, *releases[to]);
        for (std::size_t from = 0; from < to; ++from) {
            session.stop.throwIfStopped();
            ShowUpdate(session.console, releases[from].get(), *releases[to]);
        }
    }
    return ExitCode::Done;
}

} // namespace vo::tool
