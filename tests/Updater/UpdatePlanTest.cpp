#include "UpdaterFixture.h"

#include <Updater/detail/install/UpdatePlan.h>

#include <algorithm>
#include <set>
#include <vector>

using namespace vo::updater;
using namespace vo::updater::detail;
using namespace vo::test;

namespace {

AdvertisedFileListing Pieces(const char* id, const char* content, VoDeque<ChunkReferenceListing> pieces)
{
    std::int64_t size = 0;
    for (const auto& piece : pieces)
        size += static_cast<std::int64_t>(piece.length());
    return {VoFilePath(id), pieces, VoUUID(id), ChecksumOf(content), Bytes(size)};
}

InstalledPackageListing Installed(const AdvertisedPackageListing& package)
{
    InstalledPackageListing installed(package, VoDirectoryPath("/opt/"));
    for (const auto& file : package.files())
        installed.add(VoFilePath("/opt/" + file.target().path()), file.id(), file.checksum(), file.size());
    return installed;
}

std::vector<std::string> ChunkIDs(const InstallationPlan& plan)
{
    std::vector<std::string> ids;
    for (const ChunkListing& chunk : plan.chunks)
        ids.push_back(chunk.id().toString().toStdString());
    return ids;
}

const VoUUID C1("c1");
const VoUUID C2("c2");
const VoUUID C3("c3");

} // namespace

TEST(UpdatePlan, OnlyChunksOfAddedAndModifiedFilesAreNeeded)
{
    const auto old = Package("p", "1",
                             {Pieces("kept", "k", {{C1, 0, 5, 0}}), Pieces("changed", "old", {{C1, 5, 7, 0}}),
                              Pieces("gone", "g", {{C1, 12, 3, 0}})});
    const auto fresh = Package("p", "2",
                               {Pieces("added", "a", {{C3, 0, 8, 0}, {C2, 9, 1, 1}}),
                                Pieces("changed", "new", {{C3, 8, 2, 0}}), Pieces("kept", "k", {{C1, 0, 5, 0}})},
                               {Chunk("c3", 30), Chunk("c1", 10), Chunk("c2", 20)});
    const InstalledPackageListing installed = Installed(old);
    const InstallationPlan plan = PlanUpdate(&installed, fresh);

    EXPECT_EQ(ChunkIDs(plan), (std::vector<std::string>{"c3", "c2"}));
    const VoDeque<ChunkUse> uses = ChunkUses(Differences(&installed, fresh), fresh);
    EXPECT_EQ(uses[0].references, 2u);
    EXPECT_EQ(uses[0].extent, 10u);
    EXPECT_EQ(uses[1].references, 1u);
    EXPECT_EQ(uses[1].extent, 10u);
    EXPECT_EQ(plan.bytesToFetch, 50u);
    EXPECT_EQ(plan.bytesToWrite, 11u);
    EXPECT_EQ(plan.bytesToRemove, 3u);
    EXPECT_EQ(plan.addedFiles, 1u);
    EXPECT_EQ(plan.modifiedFiles, 1u);
    EXPECT_EQ(plan.removedFiles, 1u);
    EXPECT_EQ(plan.unchangedFiles, 1u);
    ASSERT_EQ(plan.files.size(), 3u);
    EXPECT_EQ(plan.files[0].path, "added");
    EXPECT_EQ(plan.files[1].path, "changed");
    EXPECT_EQ(plan.files[2].path, "\\opt\\gone");
    EXPECT_EQ(plan.files[2].type, FileDifference::Removed);
}

TEST(UpdatePlan, WithoutAnInstalledReleaseEverythingIsAdded)
{
    const auto package =
        Package("p", "1", {Pieces("a", "a", {{C1, 0, 1, 0}}), Pieces("empty", "", {})}, {Chunk("c1"), Chunk("c2")});
    const InstallationPlan plan = PlanUpdate(nullptr, package);
    EXPECT_EQ(plan.addedFiles, 2u);
    EXPECT_EQ(plan.unchangedFiles, 0u);
    EXPECT_EQ(ChunkIDs(plan), std::vector<std::string>{"c1"});
}

TEST(UpdatePlan, AnInstalledReleaseNeedsNothing)
{
    const auto package = Package("p", "1", {Pieces("a", "a", {{C1, 0, 1, 0}})}, {Chunk("c1")});
    const InstalledPackageListing installed = Installed(package);
    const InstallationPlan plan = PlanUpdate(&installed, package);
    EXPECT_TRUE(plan.isEmpty());
    EXPECT_TRUE(plan.chunks.isEmpty());
    EXPECT_EQ(plan.unchangedFiles, 1u);
}

TEST(UpdatePlan, HostileNumbersAndNamesDoNoHarm)
{
    constexpr std::uint64_t most = 18446744073709551615u;
    const auto package =
        Package("p", "1",
                {AdvertisedFileListing(VoFilePath("a"), {{C1, most, 1, 0}, {VoUUID("unknown"), 0, 1, 1}}, VoUUID("a"),
                                       VoChecksum(), Bytes(-1))},
                {Chunk("c1", -5), Chunk("c1", 7)});
    PackageDifferences differences = Differences(nullptr, package);
    differences.fileModified(VoUUID("nowhere"));
    differences.fileRemoved(VoUUID("nowhere"));
    const InstallationPlan plan = PlanUpdate(differences, nullptr, package);
    EXPECT_EQ(plan.files.size(), 1u);
    EXPECT_EQ(plan.bytesToWrite, 0u);
    EXPECT_EQ(plan.bytesToFetch, 0u);
    const VoDeque<ChunkUse> uses = ChunkUses(differences, package);
    ASSERT_EQ(uses.size(), 1u);
    EXPECT_EQ(uses[0].extent, most);
}

TEST(UpdatePlan, AgreesWithASlowMethodOnRandomReleases)
{
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        const auto randomRelease = [&random](const char* version) {
            auto package = Package("p", version);
            for (const char* id : {"f1", "f2", "f3", "f4", "f5"}) {
                if (random() % 3 == 0)
                    continue;
                VoDeque<ChunkReferenceListing> pieces;
                for (std::size_t i = 0, n = random() % 4; i < n; ++i)
                    pieces.pushBack({VoUUID(std::to_string(random() % 6).c_str()), random() % 10, random() % 10, i});
                package.add(Pieces(id, random() % 2 ? "x" : "y", pieces));
            }
            for (const char* id : {"4", "1", "5", "0", "3", "2"})
                package.add(Chunk(id, static_cast<std::int64_t>(random() % 100)));
            return package;
        };
        const auto target = randomRelease("2");
        const InstalledPackageListing installed = Installed(randomRelease("1"));
        const InstallationPlan plan = PlanUpdate(&installed, target);
        const VoDeque<ChunkUse> uses = ChunkUses(Differences(&installed, target), target);

        std::multiset<std::string> references;
        for (const auto& file : target.files()) {
            const InstalledFileListing* old = installed.file(file.id());
            if (old && old->equivalent(file))
                continue;
            for (const auto& piece : file.chunks())
                references.insert(piece.chunkID().toString().toStdString());
        }
        std::vector<std::string> expected;
        std::int64_t bytes = 0;
        for (const auto& chunk : target.chunks()) {
            const std::string id = chunk.id().toString().toStdString();
            if (references.count(id) == 0)
                continue;
            ASSERT_LT(expected.size(), uses.size());
            EXPECT_EQ(uses[expected.size()].references, references.count(id));
            expected.push_back(id);
            bytes += static_cast<std::int64_t>(chunk.size());
        }
        ASSERT_EQ(ChunkIDs(plan), expected) << "round " << round;
        ASSERT_EQ(plan.bytesToFetch, static_cast<std::uint64_t>(bytes));
        ASSERT_EQ(plan.addedFiles + plan.modifiedFiles + plan.unchangedFiles, target.files().size());
    }
}
