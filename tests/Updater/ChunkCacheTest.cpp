#include <VoTestSupport.h>

#include <Updater/detail/install/ChunkCache.h>

namespace vo::test {

using vo::updater::detail::ChunkCache;

namespace {

VoUUID Id(int number)
{
    return VoUUID(VoString(number));
}

} // namespace

TEST(ChunkCacheTest, AChunkLeavesWithItsLastAnnouncedUse)
{
    ChunkCache cache(100);
    cache.expect(Id(1), 2);
    cache.insert(Id(1), VoByteArray(10));
    cache.insert(Id(2), VoByteArray(10));
    cache.release(Id(1));
    EXPECT_NE(cache.find(Id(1)), nullptr);
    cache.release(Id(1));
    EXPECT_EQ(cache.find(Id(1)), nullptr);
    cache.release(Id(2));
    EXPECT_NE(cache.find(Id(2)), nullptr); // nothing was announced of it
    EXPECT_EQ(cache.bytes(), 10u);
}

// Against a list in the order of use, kept by hand.
TEST(ChunkCacheTest, TheLeastRecentlyUsedChunksLeaveFirst)
{
    std::mt19937 random(1);
    ChunkCache cache(200);
    std::vector<std::pair<int, std::size_t>> expected; // the most recently used one last
    for (int step = 0; step < 5000; ++step) {
        const int number = static_cast<int>(random() % 12);
        const auto known =
            std::find_if(expected.begin(), expected.end(), [number](const auto& e) { return e.first == number; });
        const VoByteArray* found = cache.find(Id(number));
        ASSERT_EQ(found != nullptr, known != expected.end());
        if (known != expected.end()) {
            ASSERT_EQ(found->size(), known->second);
            std::rotate(known, known + 1, expected.end());
            continue;
        }
        const std::size_t size =
            random() % 100 == 0 ? 500 : random() % 90; // more than the limit is held until the next
        EXPECT_EQ(cache.insert(Id(number), VoByteArray(size)).size(), size);
        expected.emplace_back(number, size);
        std::size_t total = 0;
        for (const auto& entry : expected)
            total += entry.second;
        while (total > 200 && expected.size() > 1) {
            total -= expected.front().second;
            expected.erase(expected.begin());
        }
        ASSERT_EQ(cache.bytes(), total);
    }
}

} // namespace vo::test
