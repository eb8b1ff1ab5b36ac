#include "InstallFixture.h"

#include <Links.h>

#include <Updater/detail/install/InstallerSettings.h>

namespace vo::test {

namespace {

namespace fs = std::filesystem;

const Files First = {{"readme.txt", "first"},
                     {"lib/a.dat", Noise(100, 1)},
                     {"lib/deep/b.dat", Noise(70, 2)},
                     {"old/gone.txt", "to be removed"},
                     {"empty.txt", ""}};
const Files Second = {{"readme.txt", "second, longer than before"},
                      {"lib/a.dat", Noise(100, 1)},
                      {"lib/deep/b.dat", Noise(70, 3)},
                      {"new/place/c.dat", Noise(90, 4)},
                      {"empty.txt", ""}};

class PackageInstallerTest : public InstallTest
{
protected:
    Files installed() const { return FilesBelow(place()); }

    std::uint64_t copiedChunks(const VoFilePath& definition)
    {
        return static_cast<std::uint64_t>(Count(StepsOf([&] { install(definition); }), FileStep::CopyChunk));
    }

    // The chunks that the named targets of a release need.
    static std::size_t ChunksOf(const VoFilePath& definition, std::initializer_list<const char*> targets)
    {
        std::set<std::string> ids;
        const auto package = AdvertisedPackageListing::Open(definition);
        for (const auto& file : package->files()) {
            if (std::none_of(targets.begin(), targets.end(),
                             [&](const char* t) { return file.target() == VoFilePath(t); }))
                continue;
            for (const auto& piece : file.chunks())
                ids.insert(piece.chunkID().toString().toStdString());
        }
        return ids.size();
    }

    static void Edit(const VoFilePath& path, const std::function<void(std::string&)>& edit)
    {
        std::string bytes = ReadBytes(path);
        edit(bytes);
        WriteBytes(path, bytes);
    }
};

} // namespace

TEST_F(PackageInstallerTest, AFirstInstallationRecordsTheDirectoriesItMadeOutermostFirst)
{
    install(publish("1.0.0", First));
    EXPECT_EQ(installed(), First);

    const auto listing = InstalledPackages::Package(packageID);
    std::vector<std::string> directories;
    for (const auto& directory : listing->directories())
        directories.push_back(directory.path().toStdString());
    std::vector<std::string> expected;
    for (const VoDirectoryPath& made :
         {directory("place"), directory("place").directory("of"), place(), place().directory("lib"),
          place().directory("lib").directory("deep"), place().directory("old")})
        expected.push_back(made.path().toStdString());
    EXPECT_EQ(directories, expected);
    EXPECT_EQ(listing->files().size(), First.size());
    EXPECT_FALSE(VoFileSystem::Exists(staging()));
}

TEST_F(PackageInstallerTest, AnUpdateCopiesOnlyTheChunksOfChangedFilesAndLeavesAnEqualTree)
{
    const VoFilePath first = publish("1.0.0", First);
    const VoFilePath second = publish("1.1.0", Second);
    install(first);
    const std::size_t needed = ChunksOf(second, {"readme.txt", "lib/deep/b.dat", "new/place/c.dat"});
    const InstallationPlan plan = InstalledPackages::Plan(second, place());
    EXPECT_EQ(plan.chunks.size(), needed);
    EXPECT_EQ(plan.addedFiles, 1u);
    EXPECT_EQ(plan.modifiedFiles, 2u);
    EXPECT_EQ(plan.removedFiles, 1u);
    EXPECT_EQ(plan.unchangedFiles, 2u);
    EXPECT_LT(needed, AdvertisedPackageListing::Open(second)->chunks().size());

    EXPECT_EQ(copiedChunks(second), needed);
    EXPECT_EQ(installed(), Second);
    EXPECT_FALSE(VoFileSystem::Exists(place().directory("old")));
    EXPECT_TRUE(InstalledPackages::Plan(second, place()).isUpToDate());
}

TEST_F(PackageInstallerTest, FilesThatMovedAreCopiedInsteadOfFetched)
{
    const std::string big = Noise(400, 8);
    const VoFilePath first = publish("1.0.0", {{"a", big}, {"b", Noise(90, 1)}, {"dir", Noise(80, 2)}, {"gone", "x"}});
    const Files next = {{"moved/a", big},
                        {"copied", big},
                        {"b", Noise(90, 1)},
                        {"dir/inside", Noise(80, 2)},
                        {"changed", Noise(50, 3)}};
    const VoFilePath second = publish("1.1.0", next);
    install(first);
    options.reuseInstalledFiles = true;

    PackageInstaller installer(AdvertisedPackageListing::Open(second), place(), options);
    const InstallationPlan plan = installer.plan();
    EXPECT_EQ(plan.addedFiles, 4u);
    EXPECT_EQ(plan.copiedFiles, 2u); // what becomes a directory is gone when it would be copied
    EXPECT_EQ(plan.bytesToCopy, 800u);
    EXPECT_EQ(plan.chunks.size(), ChunksOf(second, {"changed", "dir/inside"}));
    EXPECT_EQ(installer.requiredChunks().size(), ChunksOf(second, {"changed", "dir/inside", "moved/a", "copied"}));
    const auto told = [](const vo::updater::PackageDifferences& differences) {
        std::string result = differences.sourceVersionID().toString().toStdString();
        for (const auto& difference : differences.fileDifferences())
            result += std::to_string(difference.type()) + difference.fileID().toString().toStdString();
        return result;
    };
    const auto record = VoUpdater::InstalledListingDirectory().file(packageID.toString() + ".xml");
    EXPECT_EQ(told(installer.differences()),
              told(*InstalledPackageListing::Open(record)->compare(*AdvertisedPackageListing::Open(second))));

    EXPECT_EQ(copiedChunks(second), plan.chunks.size());
    EXPECT_EQ(installed(), next);
    EXPECT_TRUE(InstalledPackages::Verify(packageID, VoStopFlag()).isIntact());
}

TEST_F(PackageInstallerTest, OnlyFilesThatStillHaveTheirBytesAreCopied)
{
    const Files old = {{"a", Noise(90, 1)}, {"b", Noise(80, 2)}, {"c", Noise(70, 3)}};
    const Files next = {{"1", Noise(90, 1)}, {"2", Noise(80, 2)}, {"3", Noise(70, 3)}};
    const VoFilePath first = publish("1.0.0", old);
    const VoFilePath second = publish("1.1.0", next);
    options.reuseInstalledFiles = true;
    install(first);
    Edit(placed("a"), [](std::string& bytes) { bytes[5] ^= 1; });
    VoFileSystem::Remove(placed("b"));
    EXPECT_EQ(InstalledPackages::Plan(second, place(), options).copiedFiles, 1u);

    // One that changes after it was chosen fails the run; the next one fetches it.
    {
        bool isChanged = false;
        const StepWatch watch([&](FileStep step, const VoString&) {
            if (step == FileStep::MakeDirectory && !std::exchange(isChanged, true))
                Edit(placed("c"), [](std::string& bytes) { bytes[5] ^= 1; });
        });
        EXPECT_THROW(install(second), VoInstallationFailedException);
        ASSERT_TRUE(isChanged);
    }
    install(second);
    EXPECT_EQ(installed(), next);
}

TEST_F(PackageInstallerTest, InstallingTheInstalledReleaseAgainTouchesNoFileOfIt)
{
    const VoFilePath definition = publish("1.0.0", First);
    install(definition);
    const Files before = snapshot();
    const auto steps = StepsOf([&] { install(definition); });
    for (const FileStep step : {FileStep::CopyChunk, FileStep::OpenFile, FileStep::PutInPlace, FileStep::EraseFile})
        EXPECT_EQ(Count(steps, step), 0) << static_cast<int>(step);
    EXPECT_TRUE(log.contains("updater", "No chunk copying required"));
    EXPECT_EQ(snapshot(), before);
}

TEST_F(PackageInstallerTest, ChunksThatAnInterruptedRunStagedAreCopiedAgainOnlyWhenDamaged)
{
    const VoFilePath definition = publish("1.0.0", First);
    const auto package = AdvertisedPackageListing::Open(definition);
    ASSERT_GT(package->chunks().size(), 3u);
    const auto stage = [&](std::size_t index) {
        const auto& chunk = package->chunks().at(index);
        const VoFilePath staged = staging().file(chunk.id().toString() + ".vochk");
        WriteBytes(staged, ReadBytes(definition.parent().appended(chunk.path())));
        return staged;
    };
    stage(0);
    Edit(stage(1), [](std::string& bytes) { bytes.back() ^= 1; });
    Edit(stage(2), [](std::string& bytes) { bytes.pop_back(); });

    EXPECT_EQ(InstalledPackages::Plan(definition, place()).stagedChunks.size(), 1u);
    EXPECT_EQ(copiedChunks(definition), package->chunks().size() - 1);
    EXPECT_EQ(installed(), First);
}

TEST_F(PackageInstallerTest, ARemovedFileDoesNotTakeAnAddedOneOfTheSamePathWithIt)
{
    install(publish("1.0.0", First));
    install(publishWithNewIDs("1.1.0", Second));
    EXPECT_EQ(installed(), Second);
    EXPECT_TRUE(InstalledPackages::Verify(packageID, VoStopFlag()).isIntact());
}

TEST_F(PackageInstallerTest, UnchangedFilesThatAreMissingOrResizedAreWrittenAgain)
{
    const VoFilePath definition = publish("1.0.0", First);
    install(definition);
    VoFileSystem::Remove(placed("lib/a.dat"));
    WriteBytes(placed("readme.txt"), "first but longer");
    EXPECT_EQ(InstalledPackages::Plan(definition, place()).modifiedFiles, 2u);
    install(definition);
    EXPECT_EQ(installed(), First);
}

TEST_F(PackageInstallerTest, InstallingElsewhereMovesThePackage)
{
    const VoFilePath definition = publish("1.0.0", First);
    install(definition);
    const VoDirectoryPath elsewhere = directory("place").directory("elsewhere");
    InstalledPackages::Install(definition, elsewhere, VoStopFlag());
    EXPECT_EQ(FilesBelow(elsewhere), First);
    EXPECT_FALSE(VoFileSystem::Exists(directory("place").directory("of")));
    InstalledPackages::Uninstall(packageID);
    EXPECT_FALSE(VoFileSystem::Exists(directory("place")));
}

TEST_F(PackageInstallerTest, TheSameDirectoryUnderTheNameOfALinkKeepsItsFiles)
{
    const VoFilePath definition = publish("1.0.0", First);
    install(definition);
    const VoDirectoryPath link = directory("place").directory("link");
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(place()));
    vo::test::MakeLink(vo::detail::ToNative(place()), vo::detail::ToNative(file("place/link")));
    InstalledPackages::Install(definition, link, VoStopFlag());
    EXPECT_EQ(installed(), First);
}

TEST_F(PackageInstallerTest, AForeignFileInTheWayIsRefusedBeforeAnythingChanges)
{
    const VoFilePath first = publish("1.0.0", {{"y/one", "1"}, {"z", "z"}});
    const VoFilePath second = publish("1.1.0", {{"y", "file now"}, {"z", "other"}});
    install(first);
    WriteBytes(placed("y/foreign"), "keep me");
    const Files before = snapshot();
    EXPECT_THROW_MSG(install(second), VoInstallationFailedException,
                     "Installation failed: Directory in the way: " + placed("y").path());
    VoFileSystem::RemoveAll(staging());
    EXPECT_EQ(snapshot(), before);
}

TEST_F(PackageInstallerTest, WhatStandsAtATargetIsReplacedAndNeverWrittenThrough)
{
    const VoFilePath definition = publish("1.0.0", {{"link", "new"}, {"readonly", "new"}, {"program", "new"}});
    WriteBytes(file("outside"), "untouched");
    WriteBytes(placed("readonly"), "old");
    WriteBytes(placed("program"), "old");
    WriteBytes(placed("readonly.vonew"), "left by a killed run");
    vo::test::MakeLink(vo::detail::ToNative(file("outside")), vo::detail::ToNative(placed("link")));
    fs::permissions(vo::detail::ToNative(placed("readonly")), fs::perms::owner_read);
    fs::permissions(vo::detail::ToNative(placed("program")), fs::perms::owner_all);
    const fs::perms permissions = fs::status(vo::detail::ToNative(placed("program"))).permissions();
    install(definition);
    EXPECT_EQ(installed(), (Files{{"link", "new"}, {"readonly", "new"}, {"program", "new"}}));
    EXPECT_EQ(ReadBytes(file("outside")), "untouched");
    EXPECT_EQ(fs::status(vo::detail::ToNative(placed("program"))).permissions(), permissions);
}

#if defined(__unix__) // folders are not held open elsewhere
TEST_F(PackageInstallerTest, ADirectoryAboveThatBecomesALinkMeanwhileLeadsNothingOutside)
{
    const VoFilePath definition = publish("1.0.0", First);
    const fs::path above = vo::detail::ToNative(file("place"));
    const fs::path outside = vo::detail::ToNative(file("outside"));
    fs::create_directories(outside / "of" / "app");
    VO_SKIP_WITHOUT_LINKS(outside);
    const StepWatch watch([&](FileStep step, const VoString& path) {
        if (step != FileStep::MakeDirectory || path != place().path())
            return;
        fs::remove_all(above);
        fs::create_directory_symlink(outside, above);
    });
    EXPECT_THROW(install(definition), VoInstallationFailedException);
    EXPECT_TRUE(fs::is_symlink(above));
    EXPECT_EQ(TreeOf(outside), (Files{{"of/", ""}, {"of/app/", ""}})) << "neither made nor removed";
}
#endif

TEST_F(PackageInstallerTest, DamagedReleasesFailClearlyAndChangeNothing)
{
    struct Row
    {
        const char* name;
        std::function<void(const VoFilePath& chunk)> damage;
        bool isMissing;
    };
    const Row rows[] = {
        {"missing chunk", [](const VoFilePath& chunk) { VoFileSystem::Remove(chunk); }, true},
        {"flipped bit", [](const VoFilePath& chunk) { Edit(chunk, [](std::string& b) { b[b.size() / 2] ^= 16; }); },
         false},
        {"truncated", [](const VoFilePath& chunk) { Edit(chunk, [](std::string& b) { b.resize(b.size() / 2); }); },
         false},
        {"empty", [](const VoFilePath& chunk) { WriteBytes(chunk, ""); }, false},
        {"promises 3 GB", [](const VoFilePath& chunk) { Edit(chunk, [](std::string& b) { b[0] = '\xC0'; }); }, false},
        {"promises 200 MB", [](const VoFilePath& chunk) { Edit(chunk, [](std::string& b) { b[0] = '\x0C'; }); }, false},
        {"promises less", [](const VoFilePath& chunk) { Edit(chunk, [](std::string& b) { b[3] = '\x01'; }); }, false},
    };
    install(publish("1.0.0", First));
    const Files before = snapshot();
    int minor = 1;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string version = "1." + std::to_string(minor++) + ".0";
        const VoFilePath definition =
            publish(version.c_str(), {{"readme.txt", Noise(30, 9)}, {"lib/a.dat", Noise(100, 1)}});
        const auto package = AdvertisedPackageListing::Open(definition);
        // The chunk that holds the one file that changed.
        const VoUUID id = [&] {
            for (const auto& listed : package->files()) {
                if (listed.target() == "readme.txt")
                    return listed.chunks().front().chunkID();
            }
            return VoUUID("");
        }();
        const VoFilePath chunk = definition.parent().appended(package->chunk(id)->path());
        row.damage(chunk);
        log.clear();
        const VoString expected = row.isMissing ? "File not found: " + chunk.path()
                                                : "File checksum does not match for: " + placed("readme.txt").path();
        EXPECT_THROW_MSG(install(definition), VoInstallationFailedException, "Installation failed: " + expected);
        EXPECT_EQ(log.contains("updater", "Chunk checksum mismatch: "), !row.isMissing);
        VoFileSystem::RemoveAll(staging());
        EXPECT_EQ(snapshot(), before);
    }
}

// Large files are compared with their digests when they are all built, small ones while they are written.
TEST_F(PackageInstallerTest, AFileThatIsNotTheListedOneIsFoundBeforeAnyIsPlaced)
{
    Files files = First;
    for (const char* name : {"lib/b.dat", "lib/c.dat", "lib/d.dat"})
        files[name] = Noise(20000, static_cast<unsigned>(name[4]));
    const VoFilePath definition = publish("1.1.0", files, 15000);
    const std::string sound = ReadBytes(definition);
    Files old = First;
    old["lib/b.dat"] = "small before";
    install(publish("1.0.0", old));
    const std::filesystem::path marked = vo::detail::ToNative(placed("lib/b.dat"));
    std::filesystem::permissions(marked, std::filesystem::perms(0604));
    const auto permissions = std::filesystem::status(marked).permissions();
    const Files before = snapshot();
    for (const char* name : {"lib/c.dat", "readme.txt"}) {
        SCOPED_TRACE(name);
        std::string wrong = sound;
        const std::string digest = ChecksumOf(files.at(name)).toString().toStdString();
        ASSERT_NE(wrong.find(digest), std::string::npos);
        wrong.replace(wrong.find(digest), digest.size(), ChecksumOf("else").toString().toStdString());
        WriteBytes(definition, wrong);
        log.clear();
        EXPECT_THROW_MSG(install(definition), VoInstallationFailedException,
                         "Installation failed: File checksum does not match for: " + placed(name).path());
        EXPECT_FALSE(log.contains("updater", "Chunk checksum mismatch: "));
        VoFileSystem::RemoveAll(staging());
        EXPECT_EQ(snapshot(), before);
    }
    WriteBytes(definition, sound);
    install(definition);
    EXPECT_EQ(installed(), files);
    EXPECT_EQ(std::filesystem::status(marked).permissions(), permissions);
}

// What the validator refuses is tried on itself.
TEST_F(PackageInstallerTest, HostileDefinitionsAreRefusedAndNothingIsWritten)
{
    struct Row
    {
        const char* name;
        const char* from;
        const char* to;
        const char* message;
    };
    const Row rows[] = {
        {"climbing target", "target=\"readme.txt\"", "target=\"..\\..\\evil.txt\"",
         "Invalid target path: ..\\..\\evil.txt"},
        {"same target twice", "target=\"readme.txt\"", "target=\"EMPTY.txt\"", nullptr},
        {"climbing chunk", "path=\"chunks\\", "path=\"..\\..\\chunks\\", nullptr},
        {"registry as listing", "packageID=\"PACKAGE\"", "packageID=\"Packages\"", "Invalid identifier: Packages"},
        {"unknown chunk", "chunkID=\"", "chunkID=\"x", nullptr},
        {"document type", "<package ", "<!DOCTYPE a [<!ENTITY b \"c\">]><package ", nullptr},
        {"truncated", "</package>", "", nullptr},
    };
    install(publish("1.0.0", {{"readme.txt", "older"}}));
    const VoFilePath definition = publish("1.1.0", First);
    const std::string sound = ReadBytes(definition);
    const Files before = snapshot();
    for (Row row : rows) {
        SCOPED_TRACE(row.name);
        std::string from = row.from;
        if (const auto mark = from.find("PACKAGE"); mark != std::string::npos)
            from.replace(mark, 7, packageID.toString().toStdString());
        std::string text = sound;
        const std::size_t position = text.find(from);
        ASSERT_NE(position, std::string::npos);
        WriteBytes(definition, text.replace(position, from.size(), row.to));
        if (row.message) {
            EXPECT_THROW_MSG(install(definition), VoInstallationFailedException,
                             VoString("Installation failed: ") + row.message);
        } else {
            EXPECT_THROW(install(definition), VoInstallationFailedException);
        }
        EXPECT_EQ(snapshot(), before);
    }
    EXPECT_TRUE(InstalledPackages::Verify(packageID, VoStopFlag()).isIntact());
    WriteBytes(definition, sound);
    install(definition);
    EXPECT_EQ(installed(), First);
}

TEST_F(PackageInstallerTest, ALinkInTheInstallationDirectoryLeadsNothingOutOfIt)
{
    const VoFilePath definition = publish("1.0.0", {{"sub/evil.txt", "evil"}});
    fs::create_directories(vo::detail::ToNative(place()));
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(place()));
    fs::create_directories(vo::detail::ToNative(directory("outside")));
    vo::test::MakeLink(vo::detail::ToNative(file("outside")), vo::detail::ToNative(placed("sub")));
    EXPECT_THROW_MSG(install(definition), VoInstallationFailedException,
                     "Installation failed: Invalid target path: sub\\evil.txt");
    EXPECT_TRUE(FilesBelow(directory("outside")).empty());
}

TEST_F(PackageInstallerTest, AnOlderReleaseIsInstalledWithAWarning)
{
    const VoFilePath first = publish("1.0.0", First);
    install(publish("1.1.0", Second));
    EXPECT_TRUE(InstalledPackages::Plan(first, place()).isDowngrade());
    install(first);
    EXPECT_TRUE(log.contains("updater", "Installing an older version 1.0.0.0 over 1.1.0.0"));
    EXPECT_EQ(installed(), First);
}

// Files in the order of their IDs meet the chunks in a random order.
TEST_F(PackageInstallerTest, EachChunkIsUncompressedOnceWhetherTheCacheHoldsAllOfThemOrNot)
{
    Files files;
    for (unsigned i = 0; i < 60; ++i)
        files["f" + std::to_string(i)] = Noise(100, i);
    const VoFilePath definition = publish("1.0.0", files, 1000);
    for (const std::size_t limit : {std::size_t{1} << 20, std::size_t{2000}}) {
        wipe();
        vo::updater::detail::InstallerSettings settings;
        settings.cacheLimit = limit;
        vo::updater::detail::ConfiguredInstaller installer(AdvertisedPackageListing::Open(definition), place(), {},
                                                           settings);
        const auto steps = StepsOf([&] { installer.run(definition, VoStopFlag()); });
        EXPECT_EQ(Count(steps, FileStep::ReadChunk), 6);
        EXPECT_EQ(installed(), files);
    }
}

TEST_F(PackageInstallerTest, WhatMustBeDownloadedFailsClearlyWithoutAnApplicationObject)
{
    const VoUrl url("https://releases.example.org/package.xml");
    EXPECT_THROW_MSG(InstalledPackages::Install(url, place(), VoStopFlag()), VoInstallationFailedException,
                     "Installation failed: Download service requires an application object");
    PackageInstaller installer(AdvertisedPackageListing::Open(publish("1.0.0", First)), place());
    EXPECT_THROW(installer.run(url, VoStopFlag()), VoInstallationFailedException);
    EXPECT_FALSE(VoFileSystem::Exists(directory("place")));
}

namespace {

// Gives tests the parts that subclasses are offered.
class BareInstaller : public vo::updater::AbstractPackageInstaller
{
public:
    BareInstaller(const AdvertisedPackageListing& package, const VoDirectoryPath& place)
        : AbstractPackageInstaller(package, place)
    {
    }

    using AbstractPackageInstaller::chunk;
    using AbstractPackageInstaller::installFile;

    VoUniquePtr<InstalledPackageListing> install(VoStopFlag) override { return {}; }
    VoDeque<vo::updater::ChunkListing> requiredChunks() const override { return {}; }
};

} // namespace

TEST_F(PackageInstallerTest, AChunkThatIsNotStagedOrNotAdvertisedCannotBeFound)
{
    const auto package = AdvertisedPackageListing::Open(publish("1.0.0", First));
    BareInstaller installer(*package, place());
    const auto& known = package->chunks().front().id();
    EXPECT_THROW_MSG(installer.chunk({known, 0, 1, 0}), VoNullPointerException, "Failed to find required chunk");
    EXPECT_THROW_MSG(installer.chunk({VoUUID("unknown"), 0, 1, 0}), VoNullPointerException,
                     "Failed to find required chunk");
}

TEST_F(PackageInstallerTest, AWrongFileLeavesTheOldOne)
{
    const VoFilePath definition = publish("1.0.0", First);
    install(definition);
    const auto package = AdvertisedPackageListing::Open(definition);
    for (const auto& chunk : package->chunks())
        WriteBytes(staging().file(chunk.id().toString() + ".vochk"),
                   ReadBytes(definition.parent().appended(chunk.path())));
    BareInstaller installer(*package, place());
    InstalledPackageListing listing(*package, place());
    const auto& sound = package->files().front();
    const vo::updater::AdvertisedFileListing wrong(sound.target(), sound.chunks(), sound.id(), ChecksumOf("else"),
                                                   sound.size());
    EXPECT_THROW_MSG(installer.installFile(wrong, listing), VoDamagedContentException,
                     "File checksum does not match for: " + installer.resolvedPath(wrong).path());
    EXPECT_EQ(installed(), First);
}

} // namespace vo::test
