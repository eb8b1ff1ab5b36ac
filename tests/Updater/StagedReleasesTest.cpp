// Releases that are fetched and built first, and put in place later, perhaps by another process.

#include "TrustFixture.h"

#include <FileSystem/VoFileLock.h>
#include <Updater/VoStagedReleaseException.h>

#if defined(__unix__)
#include <unistd.h>
#endif

namespace vo::test {

namespace {

using vo::updater::CommitPending;

const Files First = {{"readme.txt", "first"}, {"lib/a.dat", Noise(60, 1)}, {"lib/b.dat", Noise(50, 2)}};
const Files Second = {
    {"readme.txt", "second"}, {"lib/a.dat", Noise(60, 1)}, {"lib/b.dat", Noise(50, 3)}, {"new/c", "c"}};

class StagedReleasesTest : public InstallTest
{
protected:
    StagedReleasesTest() { install(first); }

    auto stage(const VoFilePath& definition)
    {
        return InstalledPackages::Stage(definition, place(), VoStopFlag(), options);
    }
    void commit() { InstalledPackages::Commit(packageID, VoStopFlag()); }

    /// The files of the staged release, by their whole names.
    Files staged() const { return FilesBelow(updates().directory("staged")); }
    VoFilePath stagedPath(const std::string& name) const
    {
        return updates().directory("staged").appended(VoFilePath(name.c_str()));
    }
    std::string nameOfStaged(const std::string& content) const
    {
        for (const auto& [name, bytes] : staged())
            if (bytes == content)
                return name;
        return "none";
    }
    std::string definitionName() const
    {
        for (const auto& entry : staged())
            if (entry.first.find("package.xml") != std::string::npos)
                return entry.first;
        return "none";
    }
    std::string record() const { return packageID.toString().toStdString() + ".xml"; }

    const VoFilePath first = publish("1.0.0", First);
    const VoFilePath second = publish("1.1.0", Second);
};

} // namespace

TEST_F(StagedReleasesTest, WhatIsStagedIsPutInPlaceWithoutItsSource)
{
    const Files before = FilesBelow(place());
    const auto summary = stage(second);
    EXPECT_EQ(FilesBelow(place()), before);
    EXPECT_EQ(summary.files, 3u);
    EXPECT_EQ(summary.bytes, 6u + 50u + 1u);
    ASSERT_EQ(InstalledPackages::Staged().size(), 1u);
    EXPECT_EQ(InstalledPackages::Staged().front().definition, VoLocation(second));
    EXPECT_EQ(InstalledPackages::Packages().front().second, VoVersion::Deserialize("1.0.0"));
    EXPECT_EQ(Count(StepsOf([&] { stage(second); }), FileStep::CopyChunk), 0) << "staged anew, nothing is fetched";

    VoFileSystem::RemoveAll(directory("server"));
    EXPECT_TRUE(InstalledPackages::Commit(packageID, VoStopFlag()));
    EXPECT_EQ(FilesBelow(place()), Second);
    EXPECT_TRUE(InstalledPackages::Verify(packageID, VoStopFlag()).isIntact());
    EXPECT_TRUE(InstalledPackages::Staged().isEmpty());
    EXPECT_TRUE(staged().empty());
    EXPECT_FALSE(CommitPending());
    EXPECT_THROW_MSG(commit(), VoInstallationFailedException,
                     "Installation failed: No release is staged of package " + packageID.toString());
}

TEST_F(StagedReleasesTest, LinksProgramsAndEmptyFoldersComeWithTheCommit)
{
    VO_SKIP_WITHOUT_LINKS(vo::detail::ToNative(file("x").parent()));
    Files marked = First; // of these files the bytes stay
    marked["lib/a.dat"].insert(0, "[x]");
    marked["bin/tool"] = "[x]#!/bin/sh";
    marked["current"] = "-> lib";
    marked["logs/old/"];
    const VoFilePath third = publish("1.2.0", marked);
    install(third);
    ASSERT_EQ(installedTree(), marked);
    const auto records = [this] {
        Files files = FilesBelow(updates().directory("installed"));
        files.erase(packageID.toString().toStdString() + ".seen"); // times, which differ
        return files;
    };
    const Files listing = records();
    wipe();
    install(first);

    const Files before = installedTree();
    stage(third);
    EXPECT_EQ(installedTree(), before);
    const std::string name = nameOfStaged(ReadBytes(third.parent().file("attributes.xml")));
    VoFileSystem::RemoveAll(directory("server"));
    std::string bytes = ReadBytes(stagedPath(name));
    bytes[bytes.find("to=\"lib") + 4] = 'L';
    WriteBytes(stagedPath(name), bytes);
    EXPECT_THROW_MSG(commit(), VoInstallationFailedException,
                     "Installation failed: Staged release is damaged, stage it again: " + stagedPath(name).path());
    EXPECT_EQ(installedTree(), before);

    bytes[bytes.find("to=\"Lib") + 4] = 'l';
    WriteBytes(stagedPath(name), bytes);
    commit();
    EXPECT_EQ(installedTree(), marked);
    EXPECT_EQ(records(), listing);
    EXPECT_TRUE(InstalledPackages::Verify(packageID, VoStopFlag()).isIntact());
    EXPECT_TRUE(InstalledPackages::Verify(packageID, VoStopFlag()).extra.isEmpty());
}

TEST_F(StagedReleasesTest, TheNextStagingTakesThePlaceOfTheOneBeforeWhenItIsWhole)
{
    const VoFilePath third = publish("1.2.0", {{"readme.txt", "third"}});
    stage(second);
    const Files before = staged();
    const vo::updater::AdvertisedPackageListing advert = *AdvertisedPackageListing::Open(third);
    const VoFilePath chunk = third.parent().appended(advert.chunks().front().path());
    const std::string sound = ReadBytes(chunk);
    WriteBytes(chunk, "damaged");
    EXPECT_THROW(stage(third), VoInstallationFailedException);
    for (const auto& [name, bytes] : before)
        EXPECT_EQ(ReadBytes(stagedPath(name)), bytes);
    WriteBytes(chunk, sound);
    stage(third);
    EXPECT_EQ(InstalledPackages::Staged().front().version, VoVersion::Deserialize("1.2.0"));
    EXPECT_EQ(staged().size(), 3u) << "record, definition and one file";
    commit();
    EXPECT_EQ(FilesBelow(place()), (Files{{"readme.txt", "third"}}));

    const VoFileLock other(stagedPath(packageID.toString().toStdString() + ".lock"));
    EXPECT_THROW_MSG(stage(second), VoInstallationFailedException,
                     "Installation failed: File already locked: " +
                         updates().directory("staged").directory(packageID.toString()).path());
}

// What cannot be committed any more says so, changes nothing, is dropped at the next start, and can be staged again.
TEST_F(StagedReleasesTest, WhatDoesNotFitAnyMoreIsRefused)
{
    const VoFilePath third = publish("1.2.0", {{"readme.txt", "third"}});
    const std::string damaged = "Staged release is damaged, stage it again: ";
    const auto replaceInRecord = [&](const std::string& what, const std::string& by) {
        std::string text = ReadBytes(stagedPath(record()));
        ASSERT_NE(text.find(what), std::string::npos);
        text.replace(text.find(what), what.size(), by);
        WriteBytes(stagedPath(record()), text);
    };
    struct Row
    {
        const char* name;
        std::function<void()> change;
        std::string says;
    };
    const Row rows[] = {
        {"another release was installed",
         [&] {
             const auto root = vo::detail::ToNative(updates());
             std::filesystem::rename(root / "staged", root / "kept");
             install(third);
             VoFileSystem::RemoveAll(updates().directory("staged"));
             std::filesystem::rename(root / "kept", root / "staged");
         },
         "does not fit any more, stage it again: release 1.2.0.0 is installed now"},
        {"a file that was unchanged is gone", [&] { VoFileSystem::Remove(placed("lib/a.dat")); },
         "lacks a file that is needed now"},
        {"a staged file has other bytes", [&] { WriteBytes(stagedPath(nameOfStaged("second")), "SECOND"); },
         "File checksum does not match for: "},
        {"a staged file is gone", [&] { VoFileSystem::Remove(stagedPath(nameOfStaged("second"))); },
         "lacks a file that is needed now"},
        {"another definition",
         [&] { VoFileSystem::CopyFile(third, stagedPath(definitionName()), VoFileSystem::OverwriteExisting); },
         damaged},
        {"no definition", [&] { VoFileSystem::Remove(stagedPath(definitionName())); }, damaged},
        {"a record that is none", [&] { WriteBytes(stagedPath(record()), "<packages/>"); }, damaged},
        {"a record cut short", [&] { WriteBytes(stagedPath(record()), "<staged direc"); }, damaged},
        {"the record of another package", [&] { replaceInRecord("packageID=\"a1b2", "packageID=\"b1b2"); }, damaged},
        {"a release that leads elsewhere", [&] { replaceInRecord("versionID=\"", "versionID=\"..\\..\\"); }, damaged},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        wipe();
        install(first);
        stage(second);
        row.change();
        const Files before = FilesBelow(place());
        EXPECT_THAT(Refusal<VoInstallationFailedException>([&] { commit(); }), testing::HasSubstr(row.says));
        EXPECT_EQ(FilesBelow(place()), before);
        EXPECT_FALSE(CommitPending());
        EXPECT_EQ(FilesBelow(place()), before);
        EXPECT_TRUE(staged().empty());
        stage(second);
        EXPECT_TRUE(CommitPending());
        EXPECT_EQ(FilesBelow(place()), Second);
    }
}

TEST_F(StagedReleasesTest, WhatCannotBeReplacedNowIsAtTheNextStart)
{
    stage(second);
    {
        const StepWatch inUse([](FileStep step, const VoString& path) {
            if (step == FileStep::MoveAside)
                throw VoFileException("Cannot replace file: in use: " + path, path);
        });
        EXPECT_FALSE(CommitPending());
    }
    EXPECT_EQ(FilesBelow(place()), First);
    EXPECT_TRUE(CommitPending());
    EXPECT_EQ(FilesBelow(place()), Second);
}

#if defined(__unix__)
// Root may write everywhere, so somebody else does it.
TEST_F(StagedReleasesTest, AFolderThatIsReadOnlyKeepsTheReleaseStaged)
{
    namespace fs = std::filesystem;
    const bool isRoot = ::geteuid() == 0;
    const uid_t nobody = 65534;
    for (const VoDirectoryPath& tree : {updates(), directory("place"), directory("server")}) {
        const fs::path root = vo::detail::ToNative(tree).parent_path();
        ASSERT_TRUE(!isRoot || ::chown(root.c_str(), nobody, static_cast<gid_t>(-1)) == 0);
        for (const auto& entry : fs::recursive_directory_iterator(root))
            ASSERT_TRUE(!isRoot || ::chown(entry.path().c_str(), nobody, static_cast<gid_t>(-1)) == 0);
    }
    fs::permissions(vo::detail::ToNative(file("x")).parent_path(), fs::perms(0755));
    ASSERT_TRUE(!isRoot || ::seteuid(nobody) == 0);
    const fs::path lib = vo::detail::ToNative(placed("lib"));
    fs::permissions(lib, fs::perms::owner_write, fs::perm_options::remove);
    stage(second);
    EXPECT_THROW(commit(), VoInstallationFailedException);
    EXPECT_FALSE(CommitPending());
    EXPECT_EQ(FilesBelow(place()), First);
    EXPECT_EQ(InstalledPackages::Staged().size(), 1u);
    fs::permissions(lib, fs::perms::owner_write, fs::perm_options::add);
    EXPECT_TRUE(CommitPending());
    EXPECT_EQ(FilesBelow(place()), Second);
    ASSERT_TRUE(!isRoot || ::seteuid(0) == 0);
}
#endif

TEST_F(StagedReleasesTest, IsDroppedOnRequestAndWithItsPackage)
{
    EXPECT_FALSE(InstalledPackages::DropStaged(packageID));
    stage(second);
    EXPECT_TRUE(InstalledPackages::DropStaged(packageID));
    EXPECT_TRUE(staged().empty());
    stage(second);
    install(first);
    EXPECT_TRUE(!staged().empty()) << "the same release is installed as before";
    install(second);
    EXPECT_TRUE(staged().empty());
    stage(first);
    InstalledPackages::Uninstall(packageID);
    EXPECT_TRUE(staged().empty());
    EXPECT_THROW_MSG(InstalledPackages::DropStaged(VoUUID("..")), VoValidationException, "Invalid identifier: ..");
}

namespace {

class StagedTrustTest : public TrustTest
{
protected:
    void withdraw(bool isWithdrawn)
    {
        signer({key}).change([&](vo::updater::ReleaseManifest& manifest) {
            for (auto& release : manifest.releases)
                if (release.version == VoVersion::Deserialize("2.0.0"))
                    release.isWithdrawn = isWithdrawn;
        });
    }
    std::string stage(VoTimePoint time)
    {
        return told([&]() -> std::string {
            const auto releases = TrustedReleases::Open(declarations(), at(time));
            auto found = releases.open(releases.newest(packageID));
            options.proof = found.proof;
            InstalledPackages::Stage(std::move(found.package), found.definition, place(), VoStopFlag(), options);
            return "";
        });
    }
    std::string commit()
    {
        return told([&] { return InstalledPackages::Commit(packageID, VoStopFlag()) ? "" : "was there"; });
    }
};

} // namespace

// The proof is kept with the release, and what was seen since is asked when it is committed.
TEST_F(StagedTrustTest, IsTrustedAnewWhenItIsCommitted)
{
    release("1.0.0", First, {key});
    EXPECT_EQ(stage(now), "");
    EXPECT_EQ(commit(), "");
    EXPECT_EQ(FilesBelow(place()), First);

    now = Day(1);
    release("2.0.0", Second, {key});
    EXPECT_EQ(stage(now), "");
    now = Day(2);
    withdraw(true);
    EXPECT_EQ(offered(at(now)), "1.0.0.0");
    EXPECT_THAT(commit(), testing::HasSubstr("A newer manifest was seen by another installation"));
    EXPECT_FALSE(CommitPending());
    EXPECT_EQ(FilesBelow(place()), First);

    withdraw(false);
    EXPECT_EQ(stage(now), "");
    EXPECT_TRUE(CommitPending());
    EXPECT_EQ(FilesBelow(place()), Second);

    // Without the proof it would be anybody's.
    options.proof = nullptr;
    EXPECT_THAT(told([&]() -> std::string {
                    InstalledPackages::Stage(publish("3.0.0", First), place(), VoStopFlag(), options);
                    return "";
                }),
                testing::HasSubstr("this one is not verified"));
}

TEST_F(StagedTrustTest, IsNotCommittedWhenItsManifestHasExpired)
{
    now = VoDateTime::FromUtc({2020, 1, 1, 0, 0, 0, 0}).timePoint();
    release("1.0.0", First, {key});
    EXPECT_EQ(stage(now), "");
    EXPECT_THAT(commit(), testing::HasSubstr("Manifest of the staged release has expired"));
    EXPECT_FALSE(VoFileSystem::Exists(place()));
    policy.allowExpired = true;
    EXPECT_EQ(stage(now), "");
    EXPECT_EQ(commit(), "");
    EXPECT_EQ(FilesBelow(place()), First);
}

} // namespace vo::test
