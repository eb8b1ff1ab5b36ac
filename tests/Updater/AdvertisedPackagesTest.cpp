#include "UpdaterFixture.h"

#include <Updater/AdvertisedPackages.h>

using namespace vo::updater;
using namespace vo::test;

namespace {

AdvertisedPackageListing Release(const char* packageID, const char* versionID, const char* version)
{
    return {VoUUID(packageID), VoUUID(versionID), "n", VoVersion::Deserialize(version)};
}

std::vector<std::string> VersionIDs(const AdvertisedPackages& packages)
{
    std::vector<std::string> ids;
    for (const auto& declaration : packages.declarations())
        ids.push_back(declaration.versionID().toString().toStdString());
    return ids;
}

} // namespace

TEST(AdvertisedPackages, ARepublishedReleaseReplacesItsEntryAndStandsLast)
{
    AdvertisedPackages packages;
    packages.add(Release("p", "a", "1"), VoFilePath("1"));
    packages.add(Release("p", "b", "2"), VoFilePath("2"));
    packages.add(Release("q", "a", "1"), VoFilePath("3"));
    packages.add(Release("p", "a", "1"), VoFilePath("4"));
    EXPECT_EQ(VersionIDs(packages), (std::vector<std::string>{"b", "a", "a"}));
    EXPECT_EQ(packages.declarations()[1].packageID(), "q");
    EXPECT_EQ(packages.package(VoUUID("p"), VoUUID("a")).path(), "4");
}

TEST(AdvertisedPackages, IdentifiersAreExact)
{
    AdvertisedPackages packages;
    packages.add(Release("p", "a", "1"), VoFilePath("1"));
    packages.add(Release("P", "a", "9"), VoFilePath("2"));
    packages.add(Release("p", "A", "1"), VoFilePath("3"));
    EXPECT_EQ(packages.declarations().size(), 3u);
    EXPECT_EQ(packages.newestPackage(VoUUID("p")).path(), "1");
    EXPECT_EQ(packages.package(VoUUID("p"), VoUUID("A")).path(), "3");
}

TEST(AdvertisedPackages, DeclarationsOfAPathAreRemovedForOnePackageOnly)
{
    AdvertisedPackages packages;
    packages.add(Release("p", "a", "1"), VoFilePath("x\\package.xml"));
    packages.add(Release("q", "b", "1"), VoFilePath("x\\package.xml"));
    packages.add(Release("p", "c", "1"), VoFilePath("X\\Package.xml"));
    packages.add(Release("p", "d", "1"), VoFilePath("y\\package.xml"));
    packages.remove(packages.declarations()[0].packageID(), packages.declarations()[0].path());
    EXPECT_EQ(VersionIDs(packages), (std::vector<std::string>{"b", "d"}));
}

TEST(AdvertisedPackages, TheNewestReleaseHasTheHighestVersion)
{
    // The text of a version is major.minor.build type.revision.
    const struct
    {
        std::vector<const char*> versions;
        const char* newest;
    } rows[] = {
        {{"1.0.0.0"}, "0"},
        {{"1.0.0.9", "1.0.0.10", "1.0.0.2"}, "1"},
        {{"1.9.0.9", "2.0.0.0", "1.10.0.0"}, "1"},
        {{"2.1.0.0", "2.1.1.0"}, "0"}, // the build type does not count: the first stays
        {{"2.1.3.0", "2.1.0.0", "2.1.0.1"}, "2"},
        {{"-1.0.0.0", "-2.0.0.0"}, "0"},
        {{"0.0.0.0", "0.0.0.0"}, "0"},
    };
    for (const auto& row : rows) {
        AdvertisedPackages packages;
        packages.add(Release("other", "x", "99"), VoFilePath("x"));
        for (std::size_t i = 0; i < row.versions.size(); ++i)
            packages.add(Release("p", std::to_string(i).c_str(), row.versions[i]), VoFilePath("x"));
        EXPECT_EQ(packages.newestPackage(VoUUID("p")).versionID(), row.newest) << row.versions[0];
    }
}

TEST(AdvertisedPackages, WhatIsNotDeclaredIsNotFound)
{
    AdvertisedPackages packages;
    packages.add(Release("p", "a", "1"), VoFilePath("1"));
    EXPECT_THROW_MSG(packages.newestPackage(VoUUID("q")), VoNotFoundException, "Item not found: q");
    EXPECT_THROW_MSG(packages.package(VoUUID("p"), VoUUID("b")), VoNotFoundException, "Item not found: b");
    EXPECT_THROW_MSG(packages.package(VoUUID("q"), VoUUID("a")), VoNotFoundException, "Item not found: a");
}
