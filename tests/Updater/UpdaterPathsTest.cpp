#include "UpdaterFixture.h"

#include <FileSystem/VoLocation.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/UpdaterPaths.h>

#include <QtCore/QtGlobal>

#include <iostream>

using namespace vo::updater;
using namespace vo::updater::detail;
using namespace vo::test;

namespace {

AdvertisedPackages::Declaration Declared(const char* path)
{
    return {Package("p", "v"), VoFilePath(path)};
}

} // namespace

TEST(UpdaterPaths, ThePublishedLayoutIsFixed)
{
    EXPECT_EQ(ChunkPath(VoUUID("{0A}")).path().toStdString(), "chunks\\{0A}.vochk");
    EXPECT_EQ(ReleaseDirectory(VoUUID("P-1"), VoVersion(4, 2, 17, VoVersion::Beta)).path().toStdString(),
              "packages\\P-1\\4.2.1.17\\");
}

TEST(UpdaterPaths, ADefinitionIsFoundBesideTheDeclarations)
{
    const auto declaration = Declared("packages\\{id}\\1.0.0.0\\a b#?%.xml");
    EXPECT_EQ(declaration.definition(VoUrl("https://h:8/x/d.xml?q=/y#/z")).toString().toStdString(),
              "https://h:8/x/packages/%7Bid%7D/1.0.0.0/a%20b%23%3F%25.xml");
    EXPECT_EQ(declaration.definition(VoFilePath("/srv/d.xml")).toString().toStdString(),
              "\\srv\\packages\\{id}\\1.0.0.0\\a b#?%.xml");
    EXPECT_EQ(Declared("r\\package.xml").definition(VoFilePath("d.xml")).toString().toStdString(), "r\\package.xml");
}

TEST(UpdaterPaths, ADeclarationCannotLeadElsewhere)
{
    for (const char* path : {"", "a\\..\\..\\x", "http://host/x"}) {
        SCOPED_TRACE(path);
        const auto declaration = Declared(path);
        const VoString message = "Invalid definition path: " + VoFilePath(path).path();
        EXPECT_THROW_MSG(declaration.definition(VoUrl("https://h/x/d.xml")), VoValidationException, message);
        EXPECT_THROW_MSG(declaration.definition(VoFilePath("/srv/d.xml")), VoValidationException, message);
    }
}

TEST(VoUpdater, TheOverriddenDirectoryHoldsTheUpdatersFiles)
{
    const LogCapture log;
    for (const char* place : {"/first/", "/second/place/"}) {
        VoUpdater::OverrideUpdateSystemDirectory(VoDirectoryPath(place));
        const std::string base = VoDirectoryPath(place).path().toStdString();
        EXPECT_EQ(VoUpdater::UpdateSystemDirectory().path().toStdString(), base);
        EXPECT_EQ(VoUpdater::DownloadDirectory().path().toStdString(), base + "download\\");
        EXPECT_EQ(VoUpdater::InstalledListingDirectory().path().toStdString(), base + "installed\\");
        EXPECT_EQ(VoUpdater::InstalledPackagesPath().path().toStdString(), base + "installed\\packages.xml");
    }
    EXPECT_EQ(log.texts("updater"),
              (std::vector<std::string>{"VoUpdater system directory overriden to \\first\\",
                                        "VoUpdater system directory overriden to \\second\\place\\"}));
}

// In a process of its own, because an override lasts until the end.
TEST(VoUpdaterDeathTest, WithoutAnOverrideTheApplicationDataHoldTheUpdatersFiles)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            qputenv("VOAPPDATAPATH", "/data/app");
            std::cerr << VoUpdater::InstalledPackagesPath().path().toStdString();
            std::exit(0);
        },
        testing::ExitedWithCode(0), "^.data.app.updates.installed.packages\\.xml$");
}

TEST(VoUpdater, NewIDsDifferAndAreFitForFileNames)
{
    std::set<std::string> ids;
    for (int i = 0; i < 1000; ++i)
        ids.insert(VoUpdater::GenerateID().toString().toStdString());
    EXPECT_EQ(ids.size(), 1000u);
    EXPECT_EQ(ids.begin()->find_first_not_of("0123456789abcdefABCDEF-"), std::string::npos);
}
