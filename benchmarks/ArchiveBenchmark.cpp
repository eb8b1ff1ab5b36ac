// Packing and unpacking trees beside the bare zip library and other programs, on files of the machine in memory.

#include "ProcessTiming.h"
#include "ResultRow.h"

#include <Documents/VoZipper.h>
#include <FileSystem/VoFilePath.h>

#include <cctype>
#include <filesystem>
#include <memory>
#include <set>
#include <unzip.h>
#include <zip.h>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t Block = 65536;

VoFilePath Path(const std::string& native)
{
    return VoFilePath(native.c_str());
}

std::string LowerCase(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

/// Copies headers of the machine until there are enough files, without those whose names differ in case only.
void MakeTree(const std::string& folder, int files)
{
    int copied = 0;
    std::set<std::string> names;
    while (copied < files) {
        const std::string round = folder + "/round" + std::to_string(copied);
        const int before = copied;
        for (const auto& entry : fs::recursive_directory_iterator("/usr/include")) {
            if (copied == files)
                return;
            if (!entry.is_regular_file() || entry.is_symlink() || entry.file_size() > 200000)
                continue;
            const fs::path target = round / entry.path().lexically_relative("/usr/include");
            const bool fits = target.native().size() - folder.size() <= 120; // room below the longest path
            if (!fits || !names.insert(LowerCase(target.native())).second)
                continue;
            fs::create_directories(target.parent_path());
            fs::copy_file(entry.path(), target);
            ++copied;
        }
        if (copied == before)
            std::exit(1);
    }
}

void ZipBare(const std::string& file, const std::string& folder)
{
    const zipFile archive = zipOpen(file.c_str(), 0);
    const zip_fileinfo info{};
    const std::unique_ptr<char[]> block(new char[Block]);
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file())
            continue;
        const std::string name = entry.path().native().substr(folder.size() + 1);
        zipOpenNewFileInZip(archive, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED, -1);
        std::FILE* source = std::fopen(entry.path().c_str(), "rb");
        std::setbuf(source, nullptr);
        while (const std::size_t count = std::fread(block.get(), 1, Block, source))
            zipWriteInFileInZip(archive, block.get(), static_cast<unsigned>(count));
        std::fclose(source);
    }
    zipClose(archive, nullptr);
}

void UnzipBare(const std::string& file, const std::string& folder)
{
    const unzFile archive = unzOpen(file.c_str());
    std::vector<unz_file_pos> places;
    std::vector<std::string> names;
    char name[65536];
    for (int code = unzGoToFirstFile(archive); code == UNZ_OK; code = unzGoToNextFile(archive)) {
        unz_file_info info;
        unzGetCurrentFileInfo(archive, &info, name, sizeof name, nullptr, 0, nullptr, 0);
        name[info.size_filename] = '\0';
        names.emplace_back(name);
        places.emplace_back();
        unzGetFilePos(archive, &places.back());
    }
    const std::unique_ptr<char[]> block(new char[Block]);
    for (std::size_t i = 0; i < names.size(); ++i) {
        const fs::path target = folder + "/" + names[i];
        fs::create_directories(target.parent_path());
        unzGoToFilePos(archive, &places[i]);
        unzOpenCurrentFile(archive);
        std::FILE* output = std::fopen(target.c_str(), "wb");
        std::setbuf(output, nullptr);
        for (int count = 0; (count = unzReadCurrentFile(archive, block.get(), Block)) > 0;)
            std::fwrite(block.get(), 1, static_cast<std::size_t>(count), output);
        std::fclose(output);
        unzCloseCurrentFile(archive);
    }
    unzClose(archive);
}

/// An archive of so many entries of a few bytes.
void MakeMany(const std::string& file, int entries)
{
    const zipFile archive = zipOpen(file.c_str(), 0);
    const zip_fileinfo info{};
    for (int i = 0; i < entries; ++i) {
        const std::string name = std::to_string(i / 1000) + "/" + std::to_string(i);
        zipOpenNewFileInZip(archive, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED, 1);
        zipWriteInFileInZip(archive, name.data(), static_cast<unsigned>(name.size()));
    }
    zipClose(archive, nullptr);
}

std::string Text(double seconds, const char* who = "")
{
    char text[64];
    std::snprintf(text, sizeof text, "%.3f s%s%s", seconds, *who ? " " : "", who);
    return text;
}

void PrintRows(const char* job, const std::vector<ProcessCost>& costs, const std::vector<const char*>& names,
               const std::vector<double>& goals)
{
    for (std::size_t i = 1; i < costs.size(); ++i) {
        ResultRow row{job, Text(costs[0].processor)};
        (i == 1 ? row.floor : row.peer) = Text(costs[i].processor, names[i - 1]);
        row.ratio = costs[i].processor / costs[0].processor;
        row.atLeast = goals[i - 1];
        PrintRow(row);
    }
}

/// A directory that each run finds empty; clearing it is the work of a process that is not measured.
void Clear(const std::string& folder)
{
    RunProcess(Program("sh -c \"rm -rf '" + folder + "' && mkdir '" + folder + "'\""));
}

std::vector<ProcessCost> TakeTurnsInto(const std::string& folder, const std::vector<std::function<void()>>& jobs,
                                       int repetitions)
{
    std::vector<std::vector<ProcessCost>> costs(jobs.size());
    for (int repetition = 0; repetition < repetitions; ++repetition)
        for (std::size_t i = 0; i < jobs.size(); ++i) {
            Clear(folder);
            costs[i].push_back(RunProcess(jobs[i]));
        }
    std::vector<ProcessCost> medians;
    for (auto& all : costs) {
        std::sort(all.begin(), all.end(),
                  [](const ProcessCost& a, const ProcessCost& b) { return a.processor < b.processor; });
        medians.push_back(all[all.size() / 2]);
    }
    return medians;
}

} // namespace

int main()
{
    const BenchmarkFolder folder;
    const int files = IsSmokeRun() ? 100 : 6000;
    const int repetitions = IsSmokeRun() ? 1 : 5;
    const std::string tree = folder / "tree";
    const std::string out = folder / "out";
    const std::string archive = out + "/a.zip";
    MakeTree(tree, files);

    std::vector<std::function<void()>> zipping = {
        OnOneProcessor([&] { VoZipper::Zip(Path(archive), Path(tree)); }),
        OnOneProcessor([&] { ZipBare(archive, tree); }),
    };
    if (HasProgram("zip"))
        zipping.push_back(OnOneProcessor(Program("sh -c \"cd '" + tree + "' && zip -qr '" + archive + "' .\"")));
    PrintRows("zip a tree of 6,000 files", TakeTurnsInto(out, zipping, repetitions), {"bare", "zip"}, {0.93, 1.05});

    const std::string source = folder / "source.zip";
    ZipBare(source, tree);
    std::vector<std::function<void()>> unzipping = {
        [&] { VoZipper::Unzip(Path(source), Path(out + "/")); },
        [&] { UnzipBare(source, out); },
    };
    std::vector<const char*> names = {"bare by index"};
    std::vector<double> goals = {0.9};
    if (HasProgram("unzip")) {
        unzipping.push_back(Program("unzip -q '" + source + "' -d '" + out + "'"));
        names.push_back("unzip");
        goals.push_back(1.5);
    }
    if (HasProgram("bsdtar")) {
        unzipping.push_back(Program("bsdtar -xf '" + source + "' -C '" + out + "'"));
        names.push_back("bsdtar");
        goals.push_back(1.1);
    }
    PrintRows("unzip it", TakeTurnsInto(out, unzipping, repetitions), names, goals);

    const int entries = IsSmokeRun() ? 500 : 25000;
    MakeMany(folder / "once.zip", entries);
    MakeMany(folder / "four.zip", 4 * entries);
    const auto growth = TakeTurnsInto(out,
                                      {[&] { VoZipper::Unzip(Path(folder / "once.zip"), Path(out + "/")); },
                                       [&] { VoZipper::Unzip(Path(folder / "four.zip"), Path(out + "/")); }},
                                      repetitions);
    PrintRow({"unzip 100,000 entries over 25,000", Text(growth[1].processor), "-", "-",
              growth[1].processor / growth[0].processor, 0, 5});
    return 0;
}
