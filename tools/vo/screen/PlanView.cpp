#include <vo/screen/PlanView.h>

#include <vo/line/Paths.h>
#include <vo/screen/Console.h>

#include <Download/VoDownloadSize.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

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

void ShowAttributeStep(Console& console, const char* action, const VoString& path, const VoString& to = VoString())
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
        ShowAttributeStep(console, plan.copiesLinks ? "copy" : "link", PathTextBelow(directory, link.path), link.to);
    for (const VoFilePath& link : plan.removedLinks)
        ShowAttributeStep(console, "unlink", PathTextBelow(directory, link));
    for (const VoDirectoryPath& folder : plan.folders)
        ShowAttributeStep(console, "folder", PathTextBelow(directory, folder.toFilePath()));
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

namespace {

/// One file of a plan, with what its row says.
struct Step
{
    const InstallationPlan::File* file;
    std::string folder; ///< With the final separator; empty for the installation directory.
    VoString path;
};

// In one order on all systems, whatever parts names there.
bool IsBefore(const std::string& a, const std::string& b)
{
    const auto rank = [](char c) { return static_cast<unsigned char>(c == '\\' ? '/' : c); };
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [&](char x, char y) { return rank(x) < rank(y); });
}

std::vector<Step> StepsOf(const InstallationPlan& plan, const VoDirectoryPath& directory)
{
    std::vector<Step> steps;
    for (const InstallationPlan::File& file : plan.files) {
        Step step{&file, {}, PathTextBelow(directory, file.path)};
        const std::string& path = step.path.toStdString();
        step.folder = path.substr(0, path.find_last_of("/\\") + 1);
        steps.push_back(std::move(step));
    }
    std::stable_sort(steps.begin(), steps.end(), [](const Step& a, const Step& b) {
        return a.folder == b.folder ? IsBefore(a.path.toStdString(), b.path.toStdString())
                                    : IsBefore(a.folder, b.folder);
    });
    return steps;
}

void ShowStep(Console& console, const Step& step, const VoDirectoryPath& directory)
{
    const InstallationPlan::File& file = *step.file;
    JsonRecord record;
    record("action", VerbOf(file))("path", step.path)("id", file.id)("bytes", file.bytes);
    VoString line = Column(VerbOf(file)) + step.path + "  " + BytesText(file.bytes);
    if (!file.copiedFrom.isNull()) {
        const VoString source = PathTextBelow(directory, file.copiedFrom);
        record("from", source);
        line = line + "  from " + source;
    }
    if (file.patch > 0) {
        record("patch", file.patch);
        line = line + "  by a patch of " + BytesText(file.patch);
    }
    console.row("files", line, record);
}

/// What is done in one folder, in one line.
struct FolderSum
{
    std::string folder;
    std::map<std::string, std::size_t> verbs{}; ///< How many files for each.
    std::uint64_t bytes = 0;

    VoString text() const
    {
        VoString line = folder.empty() ? VoString("(the folder itself)") : VoString(folder);
        for (const auto& [verb, files] : verbs)
            line += "  " + VoString(files) + " to " + verb.c_str();
        return line + "  " + BytesText(bytes);
    }
};

std::vector<FolderSum> FoldersOf(const std::vector<Step>& steps)
{
    std::vector<FolderSum> folders;
    for (const Step& step : steps) {
        if (folders.empty() || folders.back().folder != step.folder)
            folders.push_back({step.folder});
        ++folders.back().verbs[VerbOf(*step.file)];
        folders.back().bytes += step.file->bytes;
    }
    return folders;
}

void ShowFolders(Console& console, const std::vector<Step>& steps, std::size_t most)
{
    const std::vector<FolderSum> folders = FoldersOf(steps);
    const std::size_t shown = folders.size() <= most ? folders.size() : most - 1;
    for (std::size_t i = 0; i < shown; ++i)
        console.line(folders[i].text());
    if (shown < folders.size())
        console.line("... and " + VoString(folders.size() - shown) + " more folders");
    console.line("--all lists every file and chunk");
}

void ShowChunks(Console& console, const InstallationPlan& plan)
{
    console.list("chunks");
    for (const ChunkListing& chunk : plan.stagedChunks)
        ShowChunk(console, chunk, true);
    for (const ChunkListing& chunk : plan.chunks)
        ShowChunk(console, chunk, false);
    if (plan.patches.isEmpty())
        return;
    console.list("patches");
    for (const ChunkListing& patch : plan.patches)
        console.row("patches", Column("fetch") + PathText(patch.path()) + "  " + patch.size().toString(),
                    JsonRecord()("id", patch.id())("path", PathText(patch.path()))("bytes", patch.size().bytes()));
}

/// What ShowPlanFigures() takes at the end, with the prompt behind it.
constexpr std::size_t RowsOfFigures = 16;
constexpr std::size_t FewestRows = 5;

} // namespace

void ShowPlanSteps(Console& console, const InstallationPlan& plan, const VoDirectoryPath& directory,
                   std::optional<std::size_t> rows)
{
    const std::vector<Step> steps = StepsOf(plan, directory);
    const std::size_t most = rows ? std::max(*rows, RowsOfFigures + FewestRows) - RowsOfFigures : steps.size();
    const std::size_t lines = steps.size() + plan.stagedChunks.size() + plan.chunks.size() + plan.patches.size();
    const bool isShort = rows && lines > most && !console.settings().json;
    console.list("files");
    if (isShort) {
        ShowFolders(console, steps, most);
        return ShowClaims(console, plan, directory);
    }
    for (const Step& step : steps)
        ShowStep(console, step, directory);
    ShowAttributeSteps(console, plan, directory);
    ShowClaims(console, plan, directory);
    ShowChunks(console, plan);
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
    if (!plan.patches.isEmpty())
        console.fact("patchesToFetch", "patches to fetch", plan.patches.size());
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
    if (!plan.patches.isEmpty())
        console.fact("patchesFetched", "patches fetched", plan.patches.size());
    console.fact("bytesFetched", "bytes fetched", BytesText(plan.bytesToFetch), plan.bytesToFetch);
}

} // namespace vo::tool
