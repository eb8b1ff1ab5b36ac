#include <VoTestSupport.h>

#include <Core/VoMathsException.h>
#include <Maths/VoMaths.h>
#include <Maths/VoRandom.h>
#include <Maths/VoStatistics.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <set>
#include <string>

namespace {

constexpr std::int64_t Lowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t Highest = std::numeric_limits<std::int64_t>::max();

TEST(Random, FollowsTheKnownEngine)
{
    VoRandom random(5489);
    for (int i = 1; i < 10000; ++i)
        random.integer(Lowest, Highest);
    EXPECT_EQ(static_cast<std::uint64_t>(random.integer(Lowest, Highest)), 9981545732273789042u)
        << "the 10,000th number, fixed by the language's standard";
}

TEST(Random, DrawsUniformNumbersFromTheUpperBits)
{
    VoRandom random(3);
    std::mt19937_64 engine(3);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(random.uniform(), std::ldexp(static_cast<double>(engine() >> 11), -53));
}

// With three quarters of the 64-bit range, a remainder without rejection would make the lower third twice as likely.
TEST(Random, FavoursNoPartOfALargeRange)
{
    VoRandom random(4);
    const std::int64_t high = (std::int64_t(1) << 62) - 1;
    int lowerThird = 0;
    for (int i = 0; i < 30000; ++i) {
        const std::int64_t drawn = random.integer(Lowest, high);
        ASSERT_LE(drawn, high);
        lowerThird += drawn < Lowest + (std::int64_t(1) << 62) ? 1 : 0;
    }
    EXPECT_NEAR(lowerThird, 10000, 400);
}

TEST(Random, ReachesBothEndsOfARange)
{
    VoRandom random(5);
    std::set<std::int64_t> drawn;
    for (int i = 0; i < 200; ++i)
        drawn.insert(random.integer(-2, 2));
    EXPECT_EQ(drawn, (std::set<std::int64_t>{-2, -1, 0, 1, 2}));
    EXPECT_EQ(random.integer(Highest, Highest), Highest);
    EXPECT_THROW_MSG(random.integer(1, 0), VoInvalidParameterException, "Empty range");
    EXPECT_THROW_MSG(VoMaths::RandomInteger(1, 0), VoInvalidParameterException, "Empty range");
    EXPECT_EQ(VoMaths::RandomInteger(Lowest, Lowest), Lowest);
}

// Stored seeds must go on giving these numbers, on every platform.
TEST(Random, RepeatsItsNormalNumbersForAllTime)
{
    VoRandom random(1);
    const double expected[] = {-0.03939995675415531, -0.24894784633514516, -0.054646852321371626, 1.0009524310159028};
    for (double value : expected)
        EXPECT_EQ(random.normal(0, 1), value);
}

TEST(Random, DrawsNormalNumbersOfTheRightShape)
{
    VoRandom random(6);
    VoStatistics sample;
    for (int i = 0; i < 40000; ++i)
        sample.add(random.normal(10, 2));
    EXPECT_NEAR(sample.mean(), 10, 0.05);
    EXPECT_NEAR(sample.standardDeviation(), 2, 0.05);
    for (const auto& [q, z] : {std::pair{0.02275, -2.0}, {0.15866, -1.0}, {0.5, 0.0}, {0.84134, 1.0}, {0.97725, 2.0}})
        EXPECT_NEAR(sample.quantile(q), 10 + 2 * z, 0.1) << q;
    EXPECT_EQ(random.normal(3, 0), 3);
    EXPECT_THROW(random.normal(0, -1), VoDomainException);
    EXPECT_THROW(random.normal(0, std::nan("")), VoDomainException);
}

TEST(Random, ShufflesIntoEveryOrderEquallyOften)
{
    VoRandom random(8);
    std::map<std::string, int> orders;
    for (int i = 0; i < 24000; ++i) {
        std::string letters = "abcd";
        random.shuffle(letters);
        ++orders[letters];
    }
    EXPECT_EQ(orders.size(), 24u);
    for (const auto& [order, count] : orders)
        EXPECT_NEAR(count, 1000, 150) << order;
}

TEST(Random, CopiesRepeatAndMovedFromSourcesStartAnew)
{
    VoRandom random(9);
    random.uniform();
    VoRandom copy = random;
    EXPECT_EQ(copy.uniform(), random.uniform());
    const VoRandom moved = std::move(random);
    EXPECT_EQ(random.uniform(), VoRandom(0).uniform());
    random = moved;
    EXPECT_EQ(random.uniform(), copy.uniform());
}

TEST(Random, SystemSeedsDiffer)
{
    EXPECT_NE(VoRandom::FromSystem().integer(Lowest, Highest), VoRandom::FromSystem().integer(Lowest, Highest));
}

} // namespace
