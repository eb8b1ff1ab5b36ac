#include "InstallFixture.h"
#include "VolumeClock.h"

#include <Links.h>

#include <Updater/detail/files/SeenFiles.h>
#include <Updater/detail/registry/RegistryFile.h>

#include <cstdint>
#include <filesystem>

namespace vo::test {

namespace {

using namespace vo::updater;

const Files Content = {{"readme.txt", "first"}, {"lib/a.dat", Noise(100, 1)}, {"lib/deep/b.dat", Noise(70, 2)}};

class InstalledPackagesTest : public InstallTest
{
protected:
    VoFilePath registryPath() const { return VoUpdater::InstalledPackagesPath(); }
    bool isIntact() const { return InstalledPackages::Verify(packageID, VoStopFlag()).isIntact(); }

    // Reads the registry of this directory anew, as another process would.
    void forgetRegistry() const
    {
        VoUpdater::OverrideUpdateSystemDirectory(directory("nowhere"));
        InstalledPackages::Packages();
        VoUpdater::OverrideUpdateSystemDirectory(updates());
    }

    static vo::updater::detail::StepObserver FailingAt(FileStep step, const VoFilePath& place)
    {
        return [=](FileStep now, const VoString& path) {
            if (now == step && path == place.path())
                throw VoFileException("does not work", path);
        };
    }

    static std::vector<std::string> Texts(const VoDeque<VoFilePath>& paths)
    {
        std::vector<std::string> result;
        for (const VoFilePath& path : paths)
            result.push_back(path.path().toStdString());
        return result;
    }
};

} // namespace

TEST_F(InstalledPackagesTest, InstallingTwiceLeavesOneEntryWithTheLaterVersion)
{
    install(publish("1.0.0", Content));
    install(publish("1.2.3", {{"readme.txt", "other"}}));
    for (int i = 0; i < 2; ++i) {
        const auto packages = InstalledPackages::Packages();
        ASSERT_EQ(packages.size(), 1u);
        EXPECT_EQ(packages.front().first, packageID);
        EXPECT_EQ(packages.front().second, VoVersion::Deserialize("1.2.3"));
        forgetRegistry();
    }
}

TEST_F(InstalledPackagesTest, AnInstallationTellsItsStepsInOrder)
{
    const VoFilePath first = publish("1.0.0", Content);
    const ReceivedMessages messages;
    install(first);
    EXPECT_EQ(messages.codes(), (std::vector<int>{3, 4, 12, 13, 16, 5, 6}));
    EXPECT_EQ(messages.text(3), "Starting installation");
    VoDownloadSize last(-1);
    for (const auto& message : messages.all()) {
        if (const auto* progress = dynamic_cast<const InstallationProgressMessage*>(message.get())) {
            EXPECT_GT(progress->processed(), last);
            EXPECT_EQ(progress->total(), 3);
            EXPECT_EQ(progress->packageID(), packageID);
            last = progress->processed();
        }
    }
    EXPECT_EQ(last, 3);
}

TEST_F(InstalledPackagesTest, AFailedInstallationTellsWhy)
{
    const ReceivedMessages messages;
    const VoFilePath missing = file("no/package.xml");
    EXPECT_THROW_MSG(install(missing), VoInstallationFailedException,
                     "Installation failed: File not found: " + missing.path());
    EXPECT_EQ(messages.codes(), (std::vector<int>{18}));
    EXPECT_EQ(messages.text(18), ("Installation failed: File not found: " + missing.path()).toStdString());

    // What cannot be recorded is not called complete before.
    const ReceivedMessages unrecorded;
    const StepWatch watch(FailingAt(FileStep::WriteDocument, listingPath()));
    EXPECT_THROW(install(publish("1.0.0", Content)), VoInstallationFailedException);
    const std::vector<int> codes = unrecorded.codes();
    EXPECT_EQ(codes.back(), 18);
    EXPECT_EQ(std::count(codes.begin(), codes.end(), AbstractMessage::InstallationComplete), 0);
}

TEST_F(InstalledPackagesTest, UninstallingRemovesEverythingButForeignFilesAndTheirFolders)
{
    install(publish("1.0.0", Content));
    WriteBytes(placed("lib/deep/mine.txt"), "foreign");
    VoFileSystem::Remove(placed("readme.txt"));
    const ReceivedMessages messages;
    InstalledPackages::Uninstall(packageID);
    EXPECT_EQ(FilesBelow(directory("place")), (Files{{"of/app/lib/deep/mine.txt", "foreign"}}));
    EXPECT_EQ(FilesBelow(updates()).size(), 1u); // the registry
    EXPECT_TRUE(InstalledPackages::Packages().isEmpty());
    EXPECT_EQ(messages.codes(), (std::vector<int>{7, 11, 10, 6, 8}));
}

TEST_F(InstalledPackagesTest, UninstallingWhatIsNotInstalledChangesNothingAndWarns)
{
    const ReceivedMessages messages;
    InstalledPackages::Uninstall(packageID);
    EXPECT_TRUE(snapshot().empty());
    install(publish("1.0.0", Content));
    const Files before = snapshot();
    const VoUUID other("another-package");
    InstalledPackages::Uninstall(other);
    EXPECT_EQ(snapshot(), before);
    EXPECT_TRUE(log.contains("updater", "Package definition file not found for another-package"));
}

TEST_F(InstalledPackagesTest, AnEntryWithoutListingIsDropped)
{
    install(publish("1.0.0", Content));
    VoFileSystem::Remove(listingPath());
    const ReceivedMessages messages;
    InstalledPackages::Uninstall(packageID);
    EXPECT_EQ(FilesBelow(place()), Content);
    EXPECT_EQ(messages.codes(), (std::vector<int>{7, 9, 6, 8}));
    forgetRegistry();
    EXPECT_TRUE(InstalledPackages::Packages().isEmpty());
}

TEST_F(InstalledPackagesTest, ADamagedRegistryIsNeverReplaced)
{
    const VoFilePath definition = publish("1.0.0", Content);
    for (const char* damage :
         {"", "<packages><package id=\"a\" version=\"1\"/>", "<package/>", "\x01\x02", "<other></other>"}) {
        SCOPED_TRACE(damage);
        WriteBytes(registryPath(), damage);
        forgetRegistry();
        EXPECT_THROW_MSG(InstalledPackages::Packages(), VoNullPointerException, "VoUniquePtr dereferencing nullptr");
        EXPECT_THROW_MSG(install(definition), VoInstallationFailedException,
                         "Installation failed: VoUniquePtr dereferencing nullptr");
        EXPECT_THROW(InstalledPackages::Uninstall(packageID), VoNullPointerException);
        EXPECT_EQ(ReadBytes(registryPath()), damage);
        EXPECT_TRUE(
            log.contains("updater", "Installed packages file cannot be read " + registryPath().path().toStdString()));
        EXPECT_FALSE(VoFileSystem::Exists(directory("place")));
    }
}

TEST_F(InstalledPackagesTest, BadEntriesAreSkippedAndTheRestIsRead)
{
    WriteBytes(registryPath(),
               "<packages><package id=\"..\\x\" version=\"1.0.0\"/><package id=\"bad\" version=\"x\"/>"
               "<package version=\"1.0.0\"/><unknown/><package id=\"good\" version=\"2.1.0.3\" more=\"1\"/>"
               "</packages>");
    forgetRegistry();
    const auto packages = InstalledPackages::Packages();
    ASSERT_EQ(packages.size(), 1u);
    EXPECT_EQ(packages.front().first, VoUUID("good"));
    EXPECT_EQ(packages.front().second.toString(), "2.1.0.3");
}

TEST_F(InstalledPackagesTest, ADamagedListingCountsAsNoneWhenInstallingAndStopsUninstalling)
{
    const VoFilePath definition = publish("1.0.0", Content);
    install(definition);
    WriteBytes(listingPath(), "<package directory=\"x\\\"");
    EXPECT_THROW(InstalledPackages::Uninstall(packageID), VoException);
    EXPECT_EQ(FilesBelow(place()), Content);
    EXPECT_EQ(InstalledPackages::Packages().size(), 1u);
    EXPECT_EQ(InstalledPackages::Plan(definition, place()).adoptedFiles.size(), Content.size());
    install(definition);
    EXPECT_TRUE(isIntact());
}

TEST_F(InstalledPackagesTest, ARegistryThatCannotBeWrittenIsLoggedAndMendedByTheNextInstallation)
{
    const VoFilePath definition = publish("1.0.0", Content);
    {
        const StepWatch watch(FailingAt(FileStep::WriteDocument, registryPath()));
        install(definition);
    }
    EXPECT_TRUE(
        log.contains("updater", "Installed packages file cannot be updated " + registryPath().path().toStdString()));
    EXPECT_EQ(InstalledPackages::Packages().size(), 1u); // as this process knows
    EXPECT_FALSE(VoFileSystem::Exists(registryPath()));
    install(definition);
    forgetRegistry();
    EXPECT_EQ(InstalledPackages::Packages().size(), 1u);
}

TEST_F(InstalledPackagesTest, WhatFailedItsVerificationIsMendedByTheSameInstallation)
{
    Files next = Content;
    next["readme.txt"] = "second";
    install(publish("1.0.0", Content));
    WriteBytes(placed("lib/a.dat"), std::string(100, 'x')); // of the same size
    const VoFilePath second = publish("1.1.0", next);
    for (const bool isSound : {false, true}) {
        EXPECT_FALSE(InstalledPackages::Plan(second, place(), options).isUpToDate());
        const ReceivedMessages messages;
        install(second);
        const std::vector<int> codes = messages.codes();
        EXPECT_EQ(std::count(codes.begin(), codes.end(), AbstractMessage::VerificationFailed), isSound ? 0 : 1);
    }
    EXPECT_TRUE(isIntact());
    EXPECT_EQ(FilesBelow(place()), next);
    EXPECT_TRUE(InstalledPackages::Plan(second, place(), options).isUpToDate());
}

TEST_F(InstalledPackagesTest, AnUninstallationEndsWithItsFinalMessageHoweverItEnds)
{
    install(publish("1.0.0", Content));
    const VoStopFlag raised;
    raised.stop();
    {
        const ReceivedMessages messages;
        EXPECT_THROW(InstalledPackages::Uninstall(packageID, raised), VoUserCancelledException);
        EXPECT_EQ(messages.codes().back(), 19);
    }
    WriteBytes(listingPath(), "no listing");
    const ReceivedMessages messages;
    EXPECT_THROW(InstalledPackages::Uninstall(packageID), VoException);
    EXPECT_EQ(messages.codes().back(), 19);
}

#if !defined(_WIN32)
TEST_F(InstalledPackagesTest, ADirectoryThatNoListingCanRecordIsRefused)
{
    const VoFilePath definition = publish("1.0.0", Content);
    const VoDirectoryPath bad = VoDirectoryPath::FromText(directory("place").path() + "\xFF");
    EXPECT_THROW_MSG(InstalledPackages::Install(definition, bad, VoStopFlag()), VoInstallationFailedException,
                     "Installation failed: Installation directory is not UTF-8: " + bad.path());
    EXPECT_FALSE(VoFileSystem::Exists(bad));
}
#endif

// Whose the file is that stands in the way decides about it: another package's is never touched, nobody's is taken
// over, replaced or refused.
TEST_F(InstalledPackagesTest, FilesThatAreNotThePackagesOwnAreRespected)
{
    install(publish("1.0.0", {{"a.txt", "a"}, {"both.txt", "of a"}}));
    const VoUUID other("b-" + packageID.toString());
    const auto publishOther = [&](const char* version, const Files& files) {
        PackageBuilder builder(other, "Other", VoVersion::Deserialize(version), 40, 6);
        return publish(builder, files);
    };
    const VoFilePath clashing = publishOther("5.0.0", {{"b.txt", "b"}, {"both.txt", "of b"}});
    const Files before = snapshot();
    const InstallationPlan refused = InstalledPackages::Plan(clashing, place());
    ASSERT_EQ(refused.conflicts.size(), 1u);
    EXPECT_EQ(refused.conflicts.front().packageID, packageID);
    EXPECT_THROW_MSG(install(clashing), VoInstallationFailedException,
                     "Installation failed: File belongs to another package: " + placed("both.txt").path() +
                         " (Examples " + packageID.toString() + ")");
    EXPECT_EQ(snapshot(), before);

    // A record of before such clashes were refused.
    const VoFilePath apart = publishOther("6.0.0", {{"b.txt", "b"}, {"sub/c.txt", "c"}});
    install(apart);
    const auto claimBoth = [&] {
        const auto listing = InstalledPackages::Package(other);
        listing->add(placed("both.txt"), VoUUID("both"), ChecksumOf("of b"), 4);
        listing->write(InstalledPackages::InstalledPackageListingPath(other));
    };
    EXPECT_TRUE(InstalledPackages::Verify(packageID, VoStopFlag()).extra.isEmpty());
    claimBoth();
    const VoFilePath next = publishOther("7.0.0", {{"b.txt", "next"}});
    EXPECT_EQ(InstalledPackages::Plan(next, place()).keptFiles.size(), 1u);
    install(next);
    EXPECT_EQ(ReadBytes(placed("both.txt")), "of a");
    claimBoth();
    InstalledPackages::Uninstall(other);
    EXPECT_EQ(FilesBelow(place()), (Files{{"a.txt", "a"}, {"both.txt", "of a"}}));

    WriteBytes(placed("mine.txt"), "mine");
    WriteBytes(placed("same.txt"), "same");
    const VoFilePath covering = publishOther("8.0.0", {{"mine.txt", "theirs"}, {"same.txt", "same"}});
    const InstallationPlan plan = InstalledPackages::Plan(covering, place());
    EXPECT_EQ(Texts(plan.foreignFiles), Texts({placed("mine.txt")}));
    EXPECT_EQ(Texts(plan.adoptedFiles), Texts({placed("same.txt")}));
    options.refuseForeignFiles = true;
    EXPECT_THROW_MSG(install(covering), VoInstallationFailedException,
                     "Installation failed: File belongs to no package: " + placed("mine.txt").path());
    EXPECT_EQ(ReadBytes(placed("mine.txt")), "mine");
    options = {};
    const auto steps = StepsOf([&] { install(covering); });
    EXPECT_EQ(Count(steps, FileStep::PutInPlace), 1);
    EXPECT_TRUE(log.contains("updater", "File that belongs to no package is replaced: " +
                                            placed("mine.txt").path().toStdString()));
    InstalledPackages::Uninstall(other);
    EXPECT_EQ(FilesBelow(place()), (Files{{"a.txt", "a"}, {"both.txt", "of a"}}));

    options.refuseOtherDirectory = true;
    EXPECT_THROW(
        InstalledPackages::Install(publish("0.9.0", {{"a.txt", "older"}}), directory("place"), VoStopFlag(), options),
        VoInstallationFailedException);
    options = {};
    options.refuseOlder = true;
    EXPECT_THROW_MSG(install(publish("0.9.0", {{"a.txt", "older"}})), VoInstallationFailedException,
                     "Installation failed: Release is older than the installed one: 0.9.0.0");
}

TEST_F(InstalledPackagesTest, AFileThatCannotBeRemovedStaysRecordedUntilItCan)
{
    install(publish("1.0.0", Content));
    const ReceivedMessages messages;
    {
        const StepWatch watch(FailingAt(FileStep::EraseFile, placed("lib/a.dat")));
        EXPECT_THROW_MSG(InstalledPackages::Uninstall(packageID), VoFileException, "does not work");
    }
    EXPECT_EQ(messages.codes(), (std::vector<int>{7, 11, 19}));
    EXPECT_EQ(InstalledPackages::Package(packageID)->files().size(), 1u);
    EXPECT_EQ(InstalledPackages::Packages().size(), 1u);
    EXPECT_EQ(FilesBelow(place()).size(), 1u);
    InstalledPackages::Uninstall(packageID);
    EXPECT_FALSE(VoFileSystem::Exists(directory("place")));
}

TEST_F(InstalledPackagesTest, ATamperedListingRemovesNothingOutsideTheInstallation)
{
    install(publish("1.0.0", Content));
    WriteBytes(file("outside/a"), "a");
    WriteBytes(file("linked/b"), "b");
    std::filesystem::create_directories(vo::detail::ToNative(directory("empty")));
    vo::test::MakeLink(vo::detail::ToNative(file("linked")), vo::detail::ToNative(placed("link")));
    auto listing = InstalledPackages::Package(packageID);
    for (const VoFilePath& path :
         {file("outside/a"), placed("link/b"), VoFilePath::CreateUnchecked(place().path() + "..\\..\\..\\outside\\a"),
          VoFilePath("relative.txt")})
        listing->add(path, VoUpdater::GenerateID(), ChecksumOf("a"), 1);
    listing->add(directory("empty"));
    listing->add(directory("outside"));
    listing->write(listingPath());
    InstalledPackages::Uninstall(packageID);
    EXPECT_EQ(ReadBytes(file("outside/a")), "a");
    EXPECT_EQ(ReadBytes(file("linked/b")), "b");
    EXPECT_TRUE(VoFileSystem::IsDirectory(directory("empty")));
    EXPECT_EQ(FilesBelow(place()).count("readme.txt"), 0u);
}

TEST_F(InstalledPackagesTest, AReceiverMayAskTheRegistryButNotStartAnotherOperation)
{
    const VoFilePath definition = publish("1.0.0", Content);
    int refused = 0;
    const VoReceiver receiver = InstalledPackages::Connect([&](const VoSharedPtr<AbstractMessage>&) {
        InstalledPackages::Packages();
        const VoReceiver other = InstalledPackages::Connect([](const VoSharedPtr<AbstractMessage>&) {});
        EXPECT_THROW_MSG(install(definition), VoInvalidCallException, "An installation is already running");
        EXPECT_THROW_MSG(InstalledPackages::Uninstall(packageID), VoInvalidCallException,
                         "An installation is already running");
        ++refused;
        throw 1;
    });
    install(definition);
    EXPECT_GT(refused, 5);
    EXPECT_TRUE(isIntact());
}

TEST_F(InstalledPackagesTest, OperationsOnSeveralThreadsFollowEachOther)
{
    // Else the one that is installed first makes it, and it stays when that one is also uninstalled first.
    std::filesystem::create_directories(vo::detail::ToNative(directory("place")));
    std::vector<VoFilePath> definitions;
    std::vector<VoUUID> ids;
    for (int i = 0; i < 4; ++i) {
        ids.push_back(VoUpdater::GenerateID());
        PackageBuilder builder(ids.back(), "Examples", VoVersion(1, i, 0, VoVersion::Release), 40, 6);
        definitions.push_back(publish(builder, {{"file" + std::to_string(i), Noise(90, 1)}}));
    }
    std::atomic<int> running{0};
    std::atomic<bool> haveMet{false};
    const VoReceiver receiver = InstalledPackages::Connect([&](const VoSharedPtr<AbstractMessage>& message) {
        if (message->type() == AbstractMessage::InstallationStarted && ++running > 1)
            haveMet = true;
        if (message->type() == AbstractMessage::InstallationComplete)
            --running;
        InstalledPackages::Packages();
    });
    vo::test::Threads(definitions.size(), [&](std::size_t i) {
        InstalledPackages::Install(definitions[i], directory("place").directory(ids[i].toString()), VoStopFlag());
        InstalledPackages::Verify(ids[i], VoStopFlag());
    });
    EXPECT_FALSE(haveMet);
    EXPECT_EQ(InstalledPackages::Packages().size(), definitions.size());
    vo::test::Threads(ids.size(), [&](std::size_t i) { InstalledPackages::Uninstall(ids[i]); });
    EXPECT_TRUE(InstalledPackages::Packages().isEmpty());
    EXPECT_TRUE(std::filesystem::is_empty(vo::detail::ToNative(directory("place"))));
}

TEST_F(InstalledPackagesTest, AnotherProcessThatInstallsIsWaitedForByNobody)
{
    const VoFilePath definition = publish("1.0.0", Content);
    const vo::updater::detail::ProcessLock lock(updates());
    const VoString path = updates().file("updates.lock").path();
    EXPECT_THROW_MSG(install(definition), VoInstallationFailedException,
                     "Installation failed: File already locked: " + path);
    EXPECT_THROW_MSG(InstalledPackages::Uninstall(packageID), VoFileLockedException, "File already locked: " + path);
    // However long it takes.
    const auto longAgo = std::filesystem::file_time_type::clock::now() - std::chrono::hours(48);
    std::error_code locked; // also for this, where the system itself keeps others away
    std::filesystem::last_write_time(vo::detail::ToNative(updates().file("updates.lock")), longAgo, locked);
    EXPECT_THROW(install(definition), VoInstallationFailedException);
}

TEST_F(InstalledPackagesTest, WhatKilledProcessesLeftBesideTheRegistryIsRemoved)
{
    const VoDirectoryPath installed = VoUpdater::InstalledListingDirectory();
    for (const char* left :
         {"packages.xml.tmpabcdefghijkl", "an-id.xml.tmpzzzzzzzzzzzz", "an-id.pending.tmpaaaaaaaaaaaa"})
        WriteBytes(installed.file(left), "half");
    for (const char* kept : {"another.xml", "notes.txt", "x.tmp", "y.xml.tmp", "z.xml.tmp1.xml"})
        WriteBytes(installed.file(kept), "whole");
    // The lock of a process that died while it was making it.
    WriteBytes(updates().file("updates.lock"), "");
    install(publish("1.0.0", Content));
    Files left = FilesBelow(installed);
    for (const char* kept : {"another.xml", "notes.txt", "x.tmp", "y.xml.tmp", "z.xml.tmp1.xml", "packages.xml"})
        EXPECT_EQ(left.erase(kept), 1u) << kept;
    EXPECT_EQ(left.size(), 1u); // the listing
}

TEST_F(InstalledPackagesTest, IDsThatDifferInLetterCaseAloneDoNotCoexist)
{
    const VoFilePath definition = publish("1.0.0", Content);
    install(definition);
    const std::string id = packageID.toString().toStdString();
    std::string upper = id;
    std::transform(upper.begin(), upper.end(), upper.begin(), [](char c) {
        return c == 'a' ? 'A' : c == 'b' ? 'B' : c;
    });
    std::string text = ReadBytes(definition);
    WriteBytes(definition, text.replace(text.find(id), id.size(), upper));
    EXPECT_THROW_MSG(install(definition), VoInstallationFailedException,
                     "Installation failed: Invalid identifier: " + VoString(upper.c_str()));
}

TEST_F(InstalledPackagesTest, IDsThatCannotBeFileNamesAreRefused)
{
    for (const char* id : {"packages", "PACKAGES", "..\\x", "a/b", "", "con", "x."}) {
        EXPECT_THROW_MSG(InstalledPackages::InstalledPackageListingPath(VoUUID(id)), VoValidationException,
                         VoString("Invalid identifier: ") + id);
        EXPECT_THROW(InstalledPackages::Uninstall(VoUUID(id)), VoValidationException);
        EXPECT_THROW(InstalledPackages::Package(VoUUID(id)), VoValidationException);
    }
}

TEST_F(InstalledPackagesTest, VerifyingFindsWhatIsMissingChangedAndExtra)
{
    install(publish("1.0.0", Content));
    EXPECT_TRUE(isIntact());
    VoFileSystem::Remove(placed("readme.txt"));
    std::string changed = Content.at("lib/a.dat");
    changed[50] = static_cast<char>(changed[50] ^ 1);
    WriteBytes(placed("lib/a.dat"), changed);
    VoFileSystem::Remove(placed("lib/deep/b.dat"));
    WriteBytes(placed("lib/deep/b.dat/inside"), "a directory now");
    WriteBytes(placed("z"), "extra");
    WriteBytes(placed("sub/y"), "extra");
    WriteBytes(file("place/of/beside"), "not below the installation directory");

    const ReceivedMessages messages;
    const VerificationReport report = InstalledPackages::Verify(packageID, VoStopFlag());
    EXPECT_EQ(Texts(report.missing), Texts({placed("readme.txt")}));
    EXPECT_EQ(Texts(report.changed), Texts({placed("lib/a.dat"), placed("lib/deep/b.dat")}));
    EXPECT_EQ(Texts(report.extra), Texts({placed("lib/deep/b.dat/inside"), placed("sub/y"), placed("z")}));
    EXPECT_EQ(report.filesChecked, 3u);
    EXPECT_EQ(messages.codes().front(), 12);
    EXPECT_EQ(messages.codes().back(), 17);
    EXPECT_EQ(messages.text(15), ("File missing: " + placed("readme.txt").path()).toStdString());

    VoStopFlag stop;
    stop.stop();
    EXPECT_THROW(InstalledPackages::Verify(packageID, stop), VoUserCancelledException);
    EXPECT_THROW(InstalledPackages::Verify(VoUUID("unknown"), VoStopFlag()), VoFileNotFoundException);
}

TEST_F(InstalledPackagesTest, RepairingFetchesAndWritesOnlyWhatIsDamaged)
{
    Files files;
    for (unsigned i = 0; i < 20; ++i)
        files["f" + std::to_string(i)] = Noise(80, i);
    const VoFilePath definition = publish("1.0.0", files, 80);
    install(definition);
    const Files sound = snapshot();
    EXPECT_EQ(StepsOf([&] { EXPECT_TRUE(InstalledPackages::Repair(definition, VoStopFlag()).isIntact()); }).size(), 0u);

    VoFileSystem::Remove(placed("f3"));
    WriteBytes(placed("f7"), Noise(80, 99));
    WriteBytes(placed("mine"), "foreign");
    const auto steps = StepsOf([&] {
        const VerificationReport report = InstalledPackages::Repair(definition, VoStopFlag());
        EXPECT_EQ(report.missing.size() + report.changed.size(), 2u);
    });
    EXPECT_EQ(Count(steps, FileStep::CopyChunk), 2);
    EXPECT_EQ(Count(steps, FileStep::PutInPlace), 2);
    EXPECT_EQ(ReadBytes(placed("mine")), "foreign");
    VoFileSystem::Remove(placed("mine"));
    EXPECT_EQ(snapshot(), sound);
}

TEST_F(InstalledPackagesTest, OnlyTheInstalledReleaseCanBeRepaired)
{
    const VoFilePath first = publish("1.0.0", Content);
    const VoFilePath second = publish("1.1.0", {{"readme.txt", "other"}});
    EXPECT_THROW_MSG(InstalledPackages::Repair(first, VoStopFlag()), VoInstallationFailedException,
                     "Installation failed: Item not found: " + packageID.toString());
    install(first);
    EXPECT_THROW_MSG(InstalledPackages::Repair(second, VoStopFlag()), VoInstallationFailedException,
                     "Installation failed: Definition is not that of the installed release: " + second.path());
}

TEST_F(InstalledPackagesTest, ARelativeInstallationDirectoryIsRecordedAsAnAbsoluteOne)
{
    const VoFilePath definition = publish("1.0.0", Content);
    const auto before = std::filesystem::current_path();
    std::filesystem::create_directories(vo::detail::ToNative(directory("place")));
    std::filesystem::current_path(vo::detail::ToNative(directory("place")));
    InstalledPackages::Install(definition, "of\\app\\", VoStopFlag());
    std::filesystem::current_path(before);
    EXPECT_TRUE(isIntact());
    EXPECT_EQ(InstalledPackages::Package(packageID)->installationDirectory(), place());
    EXPECT_THROW_MSG(InstalledPackages::Install(definition, VoDirectoryPath(), VoStopFlag()),
                     VoInstallationFailedException, "Installation failed: No installation directory given");
}

TEST_F(InstalledPackagesTest, ARecordOfDamageThatCannotBeErasedTakesNothingBack)
{
    install(publish("1.0.0", Content));
    WriteBytes(placed("lib/a.dat"), Noise(100, 9)); // keeps its size
    Files changed = Content;
    changed["readme.txt"] = "second";
    options.examineAll = true;
    install(publish("1.1.0", changed));
    EXPECT_FALSE(isIntact());
    const VoFilePath third = publish("1.2.0", Content);
    bool isRefused = false;
    {
        const StepWatch watch([&](FileStep step, const VoString& path) {
            if (step == FileStep::EraseFile && path.endsWith(".damaged")) {
                isRefused = true;
                throw VoFileException("Cannot remove file: " + path);
            }
        });
        install(third);
    }
    EXPECT_TRUE(isRefused);
    EXPECT_EQ(installedTree(), Content);
    EXPECT_EQ(InstalledPackages::Package(packageID)->version(), VoVersion::Deserialize("1.2.0"));
    EXPECT_TRUE(isIntact());
    install(third);
    EXPECT_EQ(installedTree(), Content);
}

namespace {

using vo::updater::detail::FileStamp;
using vo::updater::detail::SeenFiles;

constexpr std::int64_t Always = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t InSeconds = 1'000'000'000;

} // namespace

TEST_F(InstalledPackagesTest, AFileIsSureToBeAsItWasOnlyWithoutAnyDoubt)
{
    const VoFilePath listing = file("package.xml");
    WriteBytes(listing, "a listing");
    if (!vo::updater::detail::StampOf(listing))
        GTEST_SKIP() << "the system has no times of change";
    const FileStamp old{5, 70 * InSeconds, 80 * InSeconds, 11, 3};
    const FileStamp newest{6, 90 * InSeconds, 90 * InSeconds, 12, 3};
    const auto isSure = [&](const SeenFiles::Stamps& kept, std::int64_t begun, const std::optional<FileStamp>& now) {
        SeenFiles::Keep(file("package.seen"), listing, kept, begun);
        return SeenFiles::At(file("package.seen"), listing).isUnchanged(0, now);
    };
    EXPECT_TRUE(isSure({old, newest}, Always, old));
    EXPECT_FALSE(isSure({old, newest}, Always, std::nullopt));
    EXPECT_FALSE(isSure({std::nullopt, newest}, Always, FileStamp())) << "nothing was told of it";
    for (std::uint64_t FileStamp::*field : {&FileStamp::size, &FileStamp::file, &FileStamp::device}) {
        FileStamp other = old;
        ++(other.*field);
        EXPECT_FALSE(isSure({old, newest}, Always, other));
    }
    for (std::int64_t FileStamp::*field : {&FileStamp::written, &FileStamp::changed}) {
        FileStamp other = old;
        --(other.*field);
        EXPECT_FALSE(isSure({old, newest}, Always, other)) << "also a time before";
    }
    EXPECT_FALSE(isSure({newest, old}, Always, newest)) << "changed in the same moment as it was read";
    for (const auto& [newestTime, age, isOldEnough] : {
             std::tuple{90 * InSeconds, 1'900'000'000, false},           // a volume that may keep no more than seconds
             std::tuple{90 * InSeconds, 2'100'000'000, true},            //
             std::tuple{90 * InSeconds + 4'000'000, 100'000'000, false}, // or whole milliseconds
             std::tuple{90 * InSeconds + 4'000'100, 19'000'000,
                        false}, // one with fine times, within ticks of its clock
             std::tuple{90 * InSeconds + 4'000'100, 21'000'000, true},
         }) {
        FileStamp before = old;
        before.changed = newestTime - age;
        FileStamp last = newest;
        last.changed = newestTime;
        EXPECT_EQ(isSure({before, last}, Always, before), isOldEnough) << newestTime << " " << age;
    }
    EXPECT_FALSE(isSure({old, newest}, 85 * InSeconds, old)) << "the newest was made by somebody else";
    FileStamp elsewhere = newest;
    elsewhere.device = 4;
    EXPECT_FALSE(isSure({old, elsewhere}, Always, old)) << "another volume has another clock";

    ASSERT_TRUE(isSure({old, newest}, Always, old));
    const std::string kept = ReadBytes(file("package.seen"));
    for (std::size_t i = 0; i < kept.size(); i += 7) {
        std::string damaged = kept;
        damaged[i] ^= 1;
        WriteBytes(file("package.seen"), damaged);
        ASSERT_FALSE(SeenFiles::At(file("package.seen"), listing).isUnchanged(0, old)) << i;
        WriteBytes(file("package.seen"), kept.substr(0, i));
        ASSERT_FALSE(SeenFiles::At(file("package.seen"), listing).isUnchanged(0, old)) << i;
    }
    WriteBytes(file("package.seen"), kept);
    ASSERT_TRUE(SeenFiles::At(file("package.seen"), listing).isUnchanged(0, old));
    WriteBytes(listing, "another one");
    EXPECT_FALSE(SeenFiles::At(file("package.seen"), listing).isUnchanged(0, old));
}

TEST_F(InstalledPackagesTest, AnUpdateReadsWhatItWritesAndWhatIsInDoubt)
{
    const VoFilePath first = publish("1.0.0", Content);
    Files changed = Content;
    changed["readme.txt"] = "second";
    const VoFilePath second = publish("1.1.0", changed);
    const auto filesRead = [&](const VoFilePath& definition) {
        std::uint64_t read = 0;
        const VoReceiver receiver = InstalledPackages::Connect([&](const VoSharedPtr<AbstractMessage>& message) {
            if (const auto* progress = dynamic_cast<const VerificationProgressMessage*>(message.get()))
                read = progress->total();
        });
        install(definition);
        return read;
    };
    // As if the files had been installed long before.
    const auto age = [&] {
        SeenFiles::Stamps stamps;
        const auto listing = InstalledPackages::Package(packageID);
        for (const InstalledFileListing& listed : listing->files())
            stamps.push_back(vo::updater::detail::StampOf(listed.path()));
        FileStamp newest = *stamps.front();
        newest.changed += 1000 * InSeconds;
        stamps.push_back(newest);
        SeenFiles::Keep(SeenFiles::PlaceOf(listingPath()), listingPath(), stamps, Always);
    };
    EXPECT_EQ(filesRead(first), 3u);
    if (!vo::updater::detail::StampOf(listingPath()))
        GTEST_SKIP() << "the system has no times of change";
    age();
    EXPECT_EQ(filesRead(second), 1u);
    EXPECT_TRUE(isIntact());

    age();
    UntilClockMoves(file("clock"), placed("lib/a.dat"));
    using std::filesystem::perms;
    std::filesystem::permissions(vo::detail::ToNative(placed("lib/a.dat")), perms::owner_exec,
                                 std::filesystem::perm_options::add);
    EXPECT_EQ(filesRead(first), 2u) << "rights that were changed are a change";
    age();
    options.examineAll = true;
    EXPECT_EQ(filesRead(second), 3u);
    options.examineAll = false;

    age();
    UntilClockMoves(file("clock"), placed("lib/a.dat"));
    WriteBytes(placed("lib/a.dat"), Noise(100, 9)); // keeps its size
    EXPECT_EQ(filesRead(first), 2u);
    EXPECT_FALSE(isIntact());
    install(first);
    EXPECT_TRUE(isIntact()) << "what was damaged was written anew";
    InstalledPackages::Uninstall(packageID);
    EXPECT_TRUE(FilesBelow(updates().directory("installed")).count(packageID.toString().toStdString() + ".seen") == 0);
}

} // namespace vo::test
