#include <vo/screen/PlanView.h>

#include <vo/line/Paths.h>
#include <vo/screen/Console.h>

#include <Download/VoDownloadSize.h>

namespace vo::tool {

using updater::ChunkListing;
using updater::FileDifference;
using updater::InstallationPlan;

namespace {

const char* VerbOf(const InstallationPlan::File& file)
{
    if (!file.copiedFrom.isNull())
        return "copy";
    switch (file.type) {
    case FileDifference::Added:
        return "add";
    case FileDifference::Modified:
        return "update";
    case FileDifference::Removed:
        return "remove";
    }
    return "";
}

VoString Column(const char* text)
{
    VoString padded(text);
    padded.resize(8, ' ');
    return padded;
}

void ShowChunk(Console& console, const ChunkListing& chunk, bool staged)
{
    console.row("chunks", Column(staged ? "staged" : "fetch") + PathText(chunk.path()) + "  " + chunk.size().toString(),
                JsonRecord()("id", chunk.id())("path", PathText(chunk.path()))("bytes", chunk.size().bytes())("staged",
                                                                                                              staged));
}

void ShowClaim(Console& console, const char* action, const VoDirectoryPath& directory, const VoFilePath& file,
               const char* remark, const updater::InstallationPlan::OwnedFile* owned = nullptr)
{
    const VoString path = PathTextBelow(directory, file);
    JsonRecord record;
    record("action", action)("path", path);
    VoString line = Column(action) + path + "  " + remark;
    if (owned) {
        record("package", owned->packageID)("name", owned->name);
        line = line + owned->name + " " + owned->packageID.toString();
    }
    console.row("claims", line, record);
}

void ShowIdentity(Console& console, const InstallationPlan& plan, const VoDirectoryPath& directory)
{
    console.fact("package", "package", plan.packageID.toString(), plan.packageID);
    console.fact("name", "name", plan.name);
    console.fact("release", "release", ReleaseText(plan.version), plan.version.toString());
    if (plan.isInstalled)
        console.fact("installedRelease", "over release", ReleaseText(plan.installedVersion),
                     plan.installedVersion.toString());
    console.fact("directory", "folder", PathText(directory));
}

VoString WayText(const VoString& to)
{
    return VoString(NativeText(to.toStdString()));
}

void ShowStep(Console& console, const char* action, const VoString& path, const VoString& to = VoString())
{
    JsonRecord record;
    record("action", action)("path", path);
    if (!to.isEmpty())
        record("to", WayText(to));
    console.row("attributes", Column(action) + path + (to.isEmpty() ? VoString() : "  to " + WayText(to)), record);
}

void ShowAttributeSteps(Console& console, const InstallationPlan& plan, const VoDirectoryPath& directory)
{
    for (const InstallationPlan::Link& link : plan.links)
        ShowStep(console, plan.copiesLinks ? "copy" : "link", PathTextBelow(directory, link.path), link.to);
    for (const VoFilePath& link : plan.removedLinks)
        ShowStep(console, "unlink", PathTextBelow(directory, link));
    for (const VoDirectoryPath& folder : plan.folders)
        ShowStep(console, "folder", PathTextBelow(directory, folder.toFilePath()));
}

// Nothing of releases that hold files alone.
void ShowAttributeFigures(Console& console, const InstallationPlan& plan, bool isDone)
{
    const auto show = [&](const char* key, const char* planned, const char* done, std::size_t count) {
        if (count > 0)
            console.fact(key, isDone ? done : planned, count);
    };
    if (plan.copiesLinks)
        show("links", "links, as copies", "links, as copies", plan.links.size());
    else
        show("links", "links to make", "links made", plan.links.size());
    show("removedLinks", "links to remove", "links removed", plan.removedLinks.size());
    show("executables", "executables", "executables", plan.programs.size());
    show("folders", "empty folders", "empty folders", plan.folders.size());
}

} // namespace

void ShowClaims(Console& console, const InstallationPlan& plan, const VoDirectoryPath& directory)
{
    console.list("claims");
    for (const auto& owned : plan.conflicts)
        ShowClaim(console, "refuse", directory, owned.path, "belongs to ", &owned);
    for (const VoFilePath& file : plan.foreignFiles)
        ShowClaim(console, "replace", directory, file, "belongs to no package");
    for (const VoFilePath& file : plan.adoptedFiles)
        ShowClaim(console, "adopt", directory, file, "has the content of the release's file");
    for (const auto& owned : plan.keptFiles)
        ShowClaim(console, "keep", directory, owned.path, "belongs to ", &owned);
}

void ShowPlanSteps(Console& console, const InstallationPlan& plan, const VoDirectoryPath& directory)
{
    console.list("files");
    for (const InstallationPlan::File& file : plan.files) {
        const VoString path = PathTextBelow(directory, file.path);
        JsonRecord record;
        record("action", VerbOf(file))("path", path)("id", file.id)("bytes", file.bytes);
        VoString line = Column(VerbOf(file)) + path + "  " + BytesText(file.bytes);
        if (!file.copiedFrom.isNull()) {
            const VoString source = PathTextBelow(directory, file.copiedFrom);
            record("from", source);
            line = line + "  from " + source;
        }
        console.row("files", line, record);
    }
    ShowAttributeSteps(console, plan, directory);
    ShowClaims(console, plan, directory);
    console.list("chunks");
    for (const ChunkListing& chunk : plan.stagedChunks)
        ShowChunk(console, chunk, true);
    for (const ChunkListing& chunk : plan.chunks)
        ShowChunk(console, chunk, false);
}

void ShowPlanFigures(Console& console, const InstallationPlan& plan, const VoDirectoryPath& directory)
{
    ShowIdentity(console, plan, directory);
    console.fact("added", "files to add", plan.addedFiles);
    if (plan.copiedFiles > 0)
        console.fact("copied", "of them to copy", plan.copiedFiles);
    console.fact("modified", "files to update", plan.modifiedFiles);
    console.fact("removed", "files to remove", plan.removedFiles);
    console.fact("unchanged", "files unchanged", plan.unchangedFiles);
    ShowAttributeFigures(console, plan, false);
    console.fact("bytesToWrite", "bytes to write", BytesText(plan.bytesToWrite), plan.bytesToWrite);
    console.fact("bytesToRemove", "bytes to remove", BytesText(plan.bytesToRemove), plan.bytesToRemove);
    console.fact("chunksToFetch", "chunks to fetch", plan.chunks.size());
    console.fact("chunksStaged", "chunks staged", plan.stagedChunks.size());
    console.fact("bytesToFetch", "bytes to fetch", BytesText(plan.bytesToFetch), plan.bytesToFetch);
}

void ShowInstalledFigures(Console& console, const InstallationPlan& plan, const VoDirectoryPath& directory)
{
    ShowIdentity(console, plan, directory);
    console.fact("added", "files added", plan.addedFiles);
    if (plan.copiedFiles > 0)
        console.fact("copied", "of them copied", plan.copiedFiles);
    console.fact("modified", "files updated", plan.modifiedFiles);
    console.fact("removed", "files removed", plan.removedFiles);
    console.fact("unchanged", "files unchanged", plan.unchangedFiles);
    ShowAttributeFigures(console, plan, true);
    console.fact("bytesWritten", "bytes written", BytesText(plan.bytesToWrite), plan.bytesToWrite);
    console.fact("chunksFetched", "chunks fetched", plan.chunks.size());
    console.fact("bytesFetched", "bytes fetched", BytesText(plan.bytesToFetch), plan.bytesToFetch);
}

} // namespace vo::tool
