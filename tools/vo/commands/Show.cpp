#include <vo/Session.h>
#include <vo/line/Paths.h>
#include <vo/release/Besides.h>
#include <vo/release/Downloads.h>
#include <vo/release/ReleaseChoice.h>
#include <vo/release/Totals.h>

#include <Core/VoChecksum.h>

namespace vo::tool {

using namespace updater;

namespace {

void ShowFiles(Console& console, const AdvertisedPackageListing& package)
{
    console.list("files");
    for (const AdvertisedFileListing& file : package.files()) {
        const VoString target = PathText(file.target());
        console.row("files", file.checksum().toString() + "  " + VoDownloadSize::Serialize(file.size()) + "  " + target,
                    JsonRecord()("target", target)("id", file.id())("size", file.size().bytes())(
                        "checksum", file.checksum().toString())("pieces", file.chunks().size()));
    }
}

ExitCode Run(Session& session)
{
    Console& console = session.console;
    const ChosenRelease chosen = OpenChosenRelease(session);
    const AdvertisedPackageListing& package = *chosen.package;

    const std::uint64_t content = TotalBytes(package.files());
    const std::uint64_t transfer = TotalBytes(package.chunks());
    ShowFiles(console, package);
    console.list("attributes");
    for (const Besides& one : BesidesOf(session, *chosen.package, chosen.definition))
        ShowBesides(console, one);
    console.fact("package", "package", package.packageID().toString(), package.packageID());
    console.fact("name", "name", package.name());
    console.fact("release", "release", ReleaseText(package.version()), package.version().toString());
    console.fact("versionID", "version ID", package.versionID().toString(), package.versionID());
    console.fact("definition", "definition", LocationText(chosen.definition));
    console.fact("fileCount", "files", package.files().size());
    ShowBesidesFigures(console, *package.attributes());
    console.fact("bytes", "bytes", BytesText(content), content);
    console.fact("chunkCount", "chunks", package.chunks().size());
    console.fact("chunkBytes", "bytes in chunks", BytesText(transfer), transfer);
    ShowDownloadCounts(session, chosen.definition);
    return ExitCode::Done;
}

std::vector<Option> Options()
{
    std::vector<Option> all = DownloadOptions();
    all.insert(all.begin(), {{"package", "PACKAGE", "the package, by ID or name; needed when several are declared"},
                             {"release", "V", "the release, such as 4.2.17"}});
    return all;
}

} // namespace

Command ShowCommand()
{
    return {"show",
            "DECLARATIONS|PACKAGE.XML|URL [--package ID] [--release V]",
            "show one release and its files",
            "Lists the files of a release (digest, bytes and target), which of them are executable, its links and\n"
            "empty folders, and its figures. Of a declarations file the newest release is shown unless --release\n"
            "names another.\n",
            Options(),
            1,
            1,
            Run};
}

} // namespace vo::tool
