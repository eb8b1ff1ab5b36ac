#include "UpdaterFixture.h"

#include <Updater/InstalledPackageListing.h>

#include <algorithm>
#include <ostream>
#include <vector>

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

// Every ID of either release in order, and each looked for in both releases from the front.
std::vector<Difference> CompareNaively(const AdvertisedPackageListing& source, const AdvertisedPackageListing& target)
{
    const auto find = [](const AdvertisedPackageListing& package, const VoUUID& id) -> const AdvertisedFileListing* {
        for (const auto& file : package.files()) {
            if (file.id() == id)
                return &file;
        }
        return nullptr;
    };
    std::vector<VoUUID> ids;
    for (const AdvertisedPackageListing* package : {&source, &target}) {
        for (const auto& file : package->files()) {
            if (std::find(ids.begin(), ids.end(), file.id()) == ids.end())
                ids.push_back(file.id());
        }
    }
    std::sort(ids.begin(), ids.end(), [](const VoUUID& a, const VoUUID& b) { return a < b; });

    std::vector<Difference> result;
    for (const VoUUID& id : ids) {
        const auto* old = find(source, id);
        const auto* fresh = find(target, id);
        const std::string text = id.toString().toStdString();
        if (!old)
            result.emplace_back(FileDifference::Added, text);
        else if (!fresh)
            result.emplace_back(FileDifference::Removed, text);
        else if (old->checksum() != fresh->checksum() || old->size() != fresh->size())
            result.emplace_back(FileDifference::Modified, text);
    }
    return result;
}

} // namespace

TEST(PackageCompare, FilesAreAddedModifiedAndRemovedInTheOrderOfTheirIDs)
{
    const auto old =
        Package("p", "1", {FileListing("d", "d", "1"), FileListing("b", "b", "1"), FileListing("a", "a", "1")});
    const auto fresh = Package("p", "2",
                               {FileListing("e", "e", "1"), FileListing("c", "c", "1"), FileListing("b", "b", "2"),
                                FileListing("a", "a", "1")});
    EXPECT_EQ(Compare(old, fresh), (std::vector<Difference>{{FileDifference::Modified, "b"},
                                                            {FileDifference::Added, "c"},
                                                            {FileDifference::Removed, "d"},
                                                            {FileDifference::Added, "e"}}));
    const auto differences = old.compare(fresh);
    EXPECT_EQ(differences->packageID(), "p");
    EXPECT_EQ(differences->sourceVersionID(), "1");
    EXPECT_EQ(differences->targetVersionID(), "2");
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

TEST(PackageCompare, APackageDoesNotDifferFromItself)
{
    const auto package = Package("p", "1", {FileListing("a", "a", "1"), FileListing("b", "b", "2")});
    EXPECT_TRUE(Compare(package, package).empty());
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
    EXPECT_TRUE(Compare(Package("Pack-A", "1"), Package("pACK-a", "2")).empty());
    EXPECT_THROW_MSG(Package("p", "1").compare(Package("q", "1")), VoInvalidParameterException,
                     "Cannot compare different base packages");
}

TEST(PackageCompare, AgreesWithASlowMethodOnRandomReleases)
{
    std::mt19937 random(20240601);
    // Few different IDs, with high bytes, letter case, prefixes and duplicates among them.
    const std::vector<std::string> alphabet = {"a", "A", "b", "\xC3\xA9", "-", "0"};
    const auto randomPackage = [&](const char* versionID) {
        auto package = Package("p", versionID);
        const std::size_t files = random() % 30;
        for (std::size_t i = 0; i < files; ++i) {
            std::string id;
            for (std::size_t length = 1 + random() % 3; length > 0; --length)
                id += alphabet[random() % alphabet.size()];
            package.add(FileListing(id.c_str(), "target", std::string(random() % 3, 'x')));
        }
        return package;
    };
    std::size_t found = 0;
    for (int round = 0; round < 500; ++round) {
        const auto source = randomPackage("1");
        const auto target = randomPackage("2");
        const auto differences = Compare(source, target);
        ASSERT_EQ(differences, CompareNaively(source, target)) << "round " << round;
        found += differences.size();
    }
    EXPECT_GT(found, 1000u);
}
