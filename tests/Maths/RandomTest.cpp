#include <VoTestSupport.h>

#include <Maths/VoMaths.h>
#include <Maths/VoRandom.h>

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
    EXPECT_EQ(random.logNormal(1, 0.5), 1.7693176222008906);
    EXPECT_EQ(random.truncatedNormal(0, 1, 3, 9), 3.4720247461487581);
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

// The numbers of a source that was saved go on, also in the midst of a block of the engine.
TEST(Random, SavedStatesGoOn)
{
    VoRandom random(10);
    for (int drawn : {0, 1, 311, 1, 500}) {
        for (int i = 0; i < drawn; ++i)
            random.uniform();
        VoRandom again = VoRandom::FromState(random.state());
        VoRandom copy = random;
        for (int i = 0; i < 700; ++i)
            ASSERT_EQ(again.integer(Lowest, Highest), copy.integer(Lowest, Highest));
    }
    const std::string state = random.state().toStdString();
    for (const std::string& damaged :
         {std::string(), state + "0", state.substr(0, 4000), "313" + state.substr(state.find(':')),
          "-1" + state.substr(state.find(':')), state.substr(0, state.size() - 1) + "g", "0:" + std::string(4992, '0')})
        EXPECT_THROW_MSG(VoRandom::FromState(VoString(damaged)), VoInvalidParameterException,
                         "Invalid state of a random source");
}

// Distances of samples to what they are drawn from, by the largest difference of the distribution functions.
TEST(Random, DrawsFromTheDistributionsThatItNames)
{
    VoRandom random(11);
    const auto normalPart = [](double z) { return std::erfc(-z / std::sqrt(2.0)) / 2; };
    const auto distance = [&](auto draw, auto part) {
        constexpr int count = 20000;
        std::array<double, count> values;
        std::generate(values.begin(), values.end(), draw);
        std::sort(values.begin(), values.end());
        double largest = 0;
        for (int i = 0; i < count; ++i)
            largest = std::max(largest, std::fabs(part(values[static_cast<std::size_t>(i)]) - (i + 0.5) / count));
        return largest;
    };
    constexpr double most = 0.0144; // exceeded by one sample of 2,000
    EXPECT_LT(distance([&] { return random.uniform(-3, 5); }, [](double x) { return (x + 3) / 8; }), most);
    EXPECT_LT(distance([&] { return random.normal(10, 2); }, [&](double x) { return normalPart((x - 10) / 2); }), most);
    EXPECT_LT(distance([&] { return random.logNormal(1, 0.5); },
                       [&](double x) { return normalPart((std::log(x) - 1) / 0.5); }),
              most);
    for (const auto& [low, high] : {std::pair{-1.0, 3.0},
                                    {-0.5, 0.1},
                                    {0.2, 9.0},
                                    {0.2, 0.6},
                                    {-9.0, -2.0},
                                    {-2.5, -2.0},
                                    {6.0, 1e6},
                                    {6.0, 6.01}}) {
        const double below = normalPart(low < 0 ? low : -low); // the smaller tails have the digits
        const double above = normalPart(high < 0 ? high : -high);
        const auto part = [&](double x) {
            EXPECT_TRUE(x >= 10 + 2 * low && x <= 10 + 2 * high) << x;
            const double z = (x - 10) / 2;
            return low >= 0 ? (below - normalPart(-z)) / (below - above)
                            : (normalPart(z) - below) / ((high < 0 ? above : 1 - above) - below);
        };
        EXPECT_LT(
            distance([&, from = low, to = high] { return random.truncatedNormal(10, 2, 10 + 2 * from, 10 + 2 * to); },
                     part),
            most)
            << low << ' ' << high;
    }
    std::array<int, 4> counts{};
    for (int i = 0; i < 10000; ++i)
        ++counts[random.discrete({1e308, 0, 5e307, 1.5e308})];
    EXPECT_NEAR(counts[0], 3333, 200);
    EXPECT_EQ(counts[1], 0);
    EXPECT_NEAR(counts[2], 1667, 150);
}

TEST(Random, RefusesDistributionsThatAreNone)
{
    VoRandom random(12);
    const double nan = std::nan("");
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(random.uniform(2, 2), 2);
    EXPECT_LT(std::fabs(random.uniform(-1.7e308, 1.7e308)), 1.7e308);
    EXPECT_EQ(random.truncatedNormal(5, 0, 6, 7), 6);
    EXPECT_THROW(random.uniform(2, 1), VoInvalidParameterException);
    EXPECT_THROW(random.uniform(0, infinity), VoDomainException);
    EXPECT_EQ(random.normal(3, 0), 3);
    EXPECT_THROW(random.normal(0, -1), VoDomainException);
    EXPECT_THROW(random.normal(0, nan), VoDomainException);
    EXPECT_THROW(random.logNormal(0, -1), VoDomainException);
    EXPECT_THROW(random.truncatedNormal(0, 1, nan, 1), VoDomainException);
    EXPECT_THROW(random.truncatedNormal(0, nan, 0, 1), VoDomainException);
    EXPECT_THROW(random.discrete({1, -1}), VoDomainException);
    for (const VoVector<double>& weights : {VoVector<double>{}, VoVector<double>{0, 0}})
        EXPECT_THROW_MSG(random.discrete(weights), VoInvalidParameterException, "No weight is greater than zero");
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
