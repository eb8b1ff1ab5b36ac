#include "UpdaterFixture.h"

#include <Updater/InstalledPackageListing.h>

using namespace vo::updater;
using namespace vo::test;

namespace {

using Difference = std::pair<FileDifference::Type, std::string>;

std::vector<Difference> Compare(const AbstractPackageListing& source, const AbstractPackageListing& target)
{
    std::vector<Difference> result;
    const auto differences = source.compare(target);
    for (const FileDifference& difference : differences->fileDifferences())
        result.emplace_back(difference.type(), difference.fileID().toString().toStdString());
    return result;
}

} // namespace

TEST(PackageCompare, FilesAreAddedModifiedAndRemovedInTheOrderOfTheirIDs)
{
    const auto old =
        Package("p", "1", {FileListing("d", "d", "1"), FileListing("b", "b", "1"), FileListing("a", "a", "1")});
    const auto fresh = Package("p", "2",
                               {FileListing("e", "e", "1"), FileListing("c", "c", "1"), FileListing("b", "b", "2"),
                                FileListing("a", "a", "1"), FileListing("D", "D", "1")});
    EXPECT_EQ(Compare(old, fresh), (std::vector<Difference>{{FileDifference::Added, "D"},
                                                            {FileDifference::Modified, "b"},
                                                            {FileDifference::Added, "c"},
                                                            {FileDifference::Removed, "d"},
                                                            {FileDifference::Added, "e"}}));
}

TEST(PackageCompare, IDChecksumAndSizeDecideAndTheTargetDoesNot)
{
    const AdvertisedFileListing base(VoFilePath("a"), {}, VoUUID("f"), ChecksumOf("x"), Bytes(1));
    const auto equivalentTo = [&base](const char* target, const char* id, const char* content, std::int64_t size) {
        return base.equivalent(
            AdvertisedFileListing(VoFilePath(target), {}, VoUUID(id), ChecksumOf(content), Bytes(size)));
    };
    EXPECT_TRUE(equivalentTo("elsewhere", "f", "x", 1));
    EXPECT_FALSE(equivalentTo("a", "F", "x", 1));
    EXPECT_FALSE(equivalentTo("a", "f", "y", 1));
    EXPECT_FALSE(equivalentTo("a", "f", "x", 2));
}

TEST(PackageCompare, AnInstalledReleaseIsComparedWithAnAdvertisedOne)
{
    const auto fresh = Package("p", "2", {FileListing("a", "a", "same"), FileListing("b", "b", "new")});
    InstalledPackageListing installed(Package("p", "1"), VoDirectoryPath("/opt/"));
    EXPECT_EQ(Compare(installed, fresh),
              (std::vector<Difference>{{FileDifference::Added, "a"}, {FileDifference::Added, "b"}}));
    installed.add(VoFilePath("/opt/a"), VoUUID("a"), ChecksumOf("same"), Bytes(4));
    installed.add(VoFilePath("/opt/z"), VoUUID("z"), ChecksumOf("gone"), Bytes(4));
    EXPECT_EQ(Compare(installed, fresh),
              (std::vector<Difference>{{FileDifference::Added, "b"}, {FileDifference::Removed, "z"}}));
}

TEST(PackageCompare, OnlyReleasesOfOnePackageAreCompared)
{
    const auto differences = Package("Pack-A", "1").compare(Package("pACK-a", "2"));
    EXPECT_TRUE(differences->fileDifferences().isEmpty());
    EXPECT_EQ(differences->packageID(), "Pack-A");
    EXPECT_EQ(differences->sourceVersionID(), "1");
    EXPECT_EQ(differences->targetVersionID(), "2");
    EXPECT_THROW_MSG(Package("p", "1").compare(Package("q", "1")), VoInvalidParameterException,
                     "Cannot compare different base packages");
}
