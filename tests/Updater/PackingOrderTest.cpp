#include "UpdaterFixture.h"
#include "VolumeClock.h"

#include <FileSystem/VoFileSystem.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/PackageBuilder.h>
#include <Updater/PackingOrder.h>
#include <Updater/UpdatePackageBuilder.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/files/SeenFiles.h>
#include <Updater/detail/install/UpdatePlan.h>

#include <limits>

using namespace vo::updater;
using namespace vo::updater::detail;
using namespace vo::test;

namespace {

constexpr std::uint64_t Capacity = 1000;

/// The files of a release: from one to the next some are rewritten, removed and added, and no content comes back.
Files FilesOfRelease(int release)
{
    Files files;
    for (int i = 0; i < 100; ++i) {
        const int added = std::max(0, i - 60) / 3;
        const int change = (release + i) / (3 + i % 11);
        if (release < added || (i % 9 == 0 && release > added + i / 9))
            continue;
        files["d" + std::to_string(i * 7 % 5) + "/f" + std::to_string(i * 31 % 100)] =
            std::to_string(i) + ' ' + std::to_string(change) + std::string((i * 37 + change * 101) % 700, 'x');
    }
    return files;
}

/// The bytes that the chunks of an update hold, and those of the files that it writes.
struct Cost
{
    std::uint64_t held = 0;
    std::uint64_t needed = 0;
};

Cost UpdateCost(const AdvertisedPackageListing* from, const AdvertisedPackageListing& to)
{
    const PackageDifferences differences = from ? std::move(*from->compare(to)) : Differences(nullptr, to);
    Cost cost;
    for (const ChunkUse& chunk : ChunkUses(differences, to))
        cost.held += chunk.extent;
    cost.needed = PlanUpdate(differences, nullptr, to).bytesToWrite;
    return cost;
}

class PackingOrderTest : public UpdaterTest
{
protected:
    PackingOrderTest() { std::filesystem::create_directory(vo::detail::ToNative(directory("site"))); }

    VoUniquePtr<AdvertisedPackageListing> publish(int minor, const Files& files, const AdvertisedPackageListing* base,
                                                  bool byAge)
    {
        const VoDirectoryPath source = directory("source");
        std::filesystem::remove_all(vo::detail::ToNative(source));
        for (const auto& [name, content] : files)
            WriteBytes(source.appended(VoFilePath(name.c_str())), content);
        const VoVersion version(1, minor, 0, VoVersion::Release);
        std::unique_ptr<AbstractPackageBuilder> builder;
        if (base)
            builder = std::make_unique<UpdatePackageBuilder>(*base, version, Capacity, 1);
        else
            builder = std::make_unique<PackageBuilder>(VoUUID("pack"), "Examples", version, Capacity, 1);
        if (byAge)
            builder->addByAge(source, declarations());
        else
            builder->add(source);
        builder->finalise(declarations());
        return VoUniquePtr<AdvertisedPackageListing>::Make(builder->package());
    }

    VoFilePath declarations() const { return file("site\\releases.xml"); }
};

VoDeque<PackingOrder::File> FilesOf(const AdvertisedPackageListing& package)
{
    VoDeque<PackingOrder::File> files;
    for (const AdvertisedFileListing& file : package.files())
        files.pushBack({file.target(), file.checksum(), static_cast<std::uint64_t>(file.size().bytes())});
    return files;
}

std::vector<std::string> Order(const PackingOrder& order)
{
    std::vector<std::string> targets;
    for (const VoFilePath& target : order.targets())
        targets.push_back(target.path().toStdString());
    return targets;
}

} // namespace

TEST_F(PackingOrderTest, AnUpdateFromAnyReleaseFetchesHardlyMoreThanItsFiles)
{
    std::vector<VoUniquePtr<AdvertisedPackageListing>> releases;
    for (int i = 0; i < 12; ++i)
        releases.push_back(publish(i, FilesOfRelease(i), i == 0 ? nullptr : releases.back().get(), true));
    for (std::size_t to = 0; to < releases.size(); ++to) {
        for (std::size_t from = 0; from <= to; ++from) {
            // The last turn is the first installation.
            const Cost cost = UpdateCost(from < to ? releases[from].get() : nullptr, *releases[to]);
            EXPECT_GT(cost.needed, 0u);
            // A chunk of an earlier release is kept while a sixteenth of it is of no use.
            EXPECT_LE(cost.held, cost.needed + cost.needed / 15 + Capacity / 16) << from << " to " << to;
        }
    }
    // What the order is for: in the order of paths the next update fetches more.
    const auto aged = publish(12, FilesOfRelease(12), releases.back().get(), true);
    const auto sorted = publish(13, FilesOfRelease(12), releases.back().get(), false);
    EXPECT_LE(UpdateCost(releases.back().get(), *aged).held,
              UpdateCost(releases.back().get(), *aged).needed + Capacity / 16);
    EXPECT_GT(UpdateCost(releases.back().get(), *sorted).held,
              UpdateCost(releases.back().get(), *sorted).needed + Capacity);
}

TEST_F(PackingOrderTest, AgeIsCountedOverUnbrokenRunsOfOneContent)
{
    const auto first = Package("p", "1",
                               {FileListing("1", "old", "same"), FileListing("2", "back", "one"),
                                FileListing("3", "renewed", "x"), FileListing("4", "other id", "y")});
    const auto second = Package("p", "2",
                                {FileListing("1", "old", "same"), FileListing("2", "back", "two"),
                                 FileListing("3", "renewed", "z"), FileListing("9", "other id", "y")});
    const auto next =
        Package("p", "3",
                {FileListing("1", "OLD", "same"), FileListing("2", "back", "one"), FileListing("3", "renewed", "z"),
                 FileListing("9", "other id", "y"), FileListing("5", "added", "same")});
    PackingOrder order(FilesOf(next));
    EXPECT_EQ(Order(order), (std::vector<std::string>{"OLD", "added", "back", "other id", "renewed"}));
    order.addEarlier(second);
    EXPECT_EQ(Order(order), (std::vector<std::string>{"added", "back", "OLD", "other id", "renewed"}));
    EXPECT_FALSE(order.isDecided());
    order.addEarlier(first);
    EXPECT_EQ(Order(order), (std::vector<std::string>{"added", "back", "other id", "renewed", "OLD"}));
    order.addEarlier(Package("p", "0"));
    EXPECT_TRUE(order.isDecided());
}

TEST_F(PackingOrderTest, AnUnreadableEarlierReleaseIsNoObstacle)
{
    const auto first = publish(0, {{"a", "1"}, {"b", "2"}, {"c", "3"}}, nullptr, true);
    const auto second = publish(1, {{"a", "1"}, {"b", "4"}, {"c", "3"}}, first.get(), true);
    WriteBytes(directory("site").directory("packages").directory("pack").directory("1.0.0.0").file("package.xml"), "?");
    const auto third = publish(2, {{"a", "1"}, {"b", "4"}, {"c", "5"}}, second.get(), true);
    EXPECT_EQ(third->files()[0].target(), "c");
    EXPECT_EQ(third->files()[1].target(), "a");
}

TEST_F(PackingOrderTest, TheBaseStandsForTheReleaseThatIsDeclaredOnlyWhenItIsThatOne)
{
    const auto order = [](const AdvertisedPackageListing& package) {
        return package.files()[0].target().path() + package.files()[1].target().path();
    };
    const auto first = publish(0, {{"a", "1"}, {"b", "2"}}, nullptr, true);
    publish(0, {{"a", "1"}, {"b", "another build"}}, first.get(), true);
    const auto second = publish(1, {{"a", "1"}, {"b", "2"}}, first.get(), true);
    EXPECT_EQ(order(*second), "ba") << "changed since the build that is declared";
    WriteBytes(directory("site").directory("packages").directory("pack").directory("1.1.0.0").file("package.xml"), "?");
    EXPECT_EQ(order(*publish(2, {{"a", "1"}, {"b", "3"}}, second.get(), true)), "ba") << "not read again";
}

TEST_F(PackingOrderTest, PublishingReadsWhatIsNewAndWhatIsInDoubt)
{
    const VoDirectoryPath source = directory("source");
    const VoFilePath seen = file("site\\.packages.seen");
    WriteBytes(seen, "of another release");
    const std::string content(Capacity, 'x');
    auto last = publish(0, {{"a", content}, {"B", content}, {"c", content}}, nullptr, true);
    if (!StampOf(source.file("a")))
        GTEST_SKIP() << "the system has no times of change";
    EXPECT_TRUE(!VoFileSystem::Exists(seen) || ReadBytes(seen) != "of another release");

    const auto definition = [&] {
        return directory("site").appended(ReleaseDirectory(last->packageID(), last->version())).file("package.xml");
    };
    // As if the files had been published long after they were written.
    const auto age = [&] {
        SeenFiles::Stamps stamps;
        for (const AdvertisedFileListing& listed : last->files())
            stamps.push_back(StampOf(source.appended(listed.target())));
        stamps.push_back(stamps.front());
        stamps.back()->changed += 1'000'000'000'000;
        SeenFiles::Keep(seen, definition(), stamps, std::numeric_limits<std::int64_t>::max());
    };
    const auto filesCompared = [&](int minor) {
        UpdatePackageBuilder builder(*last, VoVersion(1, minor, 0, VoVersion::Release), Capacity, 1);
        int compared = 0;
        const VoReceiver receiver = builder.connect(
            [&](const auto& message) { compared += message->message().startsWith("Comparing file") ? 1 : 0; });
        builder.addByAge(source, declarations());
        builder.finalise(declarations());
        last = VoUniquePtr<AdvertisedPackageListing>::Make(builder.package());
        return compared;
    };
    age();
    EXPECT_EQ(filesCompared(1), 0);
    age();
    UntilClockMoves(file("clock"), source.file("B"));
    WriteBytes(source.file("B"), std::string(Capacity, 'y'));
    EXPECT_EQ(filesCompared(2), 1);
    for (const AdvertisedFileListing& listed : last->files())
        EXPECT_EQ(listed.checksum(), VoFileSystem::Checksum(source.appended(listed.target()))) << listed.target();
    age();
    WriteBytes(definition(), ReadBytes(definition()) + "\n");
    EXPECT_EQ(filesCompared(3), 3) << "another document may list other files";
}
