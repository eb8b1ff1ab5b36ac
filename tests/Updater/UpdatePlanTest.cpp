#include "UpdaterFixture.h"

#include <Updater/detail/install/UpdatePlan.h>

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
            for (const char* id : {"f1", "F1", "f", "-", "\xC3\xA9"}) {
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
        const bool isFirst = round % 10 == 0;
        const InstallationPlan plan = PlanUpdate(isFirst ? nullptr : &installed, target);
        const VoDeque<ChunkUse> uses = ChunkUses(Differences(isFirst ? nullptr : &installed, target), target);

        std::map<std::string, std::pair<std::size_t, std::uint64_t>> references; // of each chunk: how many, how far
        std::set<std::string> files;
        std::uint64_t written = 0;
        for (const auto& file : target.files()) {
            const InstalledFileListing* old = isFirst ? nullptr : installed.file(file.id());
            const bool isNeeded = !old || !old->equivalent(file);
            if (isNeeded) {
                files.insert(file.target().path().toStdString());
                written += static_cast<std::uint64_t>(file.size().bytes());
            }
            for (const auto& piece : file.chunks()) {
                auto& [count, extent] = references[piece.chunkID().toString().toStdString()];
                count += isNeeded ? 1 : 0;
                extent = std::max(extent, piece.offset() + piece.length());
            }
        }
        std::vector<std::string> expected;
        std::uint64_t bytes = 0;
        for (const auto& chunk : target.chunks()) {
            const std::string id = chunk.id().toString().toStdString();
            if (references[id].first == 0)
                continue;
            ASSERT_LT(expected.size(), uses.size());
            EXPECT_EQ(uses[expected.size()].references, references[id].first);
            EXPECT_EQ(uses[expected.size()].extent, references[id].second);
            expected.push_back(id);
            bytes += static_cast<std::uint64_t>(chunk.size().bytes());
        }
        std::uint64_t removed = 0;
        for (const auto& file : installed.files())
            removed += isFirst || target.file(file.id()) ? 0 : static_cast<std::uint64_t>(file.size().bytes());
        ASSERT_EQ(ChunkIDs(plan), expected) << "round " << round;
        ASSERT_EQ(plan.bytesToFetch, bytes);
        ASSERT_EQ(plan.bytesToWrite, written);
        ASSERT_EQ(plan.bytesToRemove, removed);
        ASSERT_EQ(plan.addedFiles + plan.modifiedFiles, files.size());
        ASSERT_EQ(plan.addedFiles + plan.modifiedFiles + plan.unchangedFiles, target.files().size());
        ASSERT_EQ(plan.files.size(), files.size() + plan.removedFiles);
        ASSERT_EQ(plan.isEmpty(), plan.files.isEmpty());
        for (const auto& file : plan.files)
            ASSERT_TRUE(file.type == FileDifference::Removed || files.count(file.path.path().toStdString()))
                << file.path;
    }
}
