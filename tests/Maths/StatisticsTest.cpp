#include <SpecialNumbers.h>
#include <VoTestSupport.h>

#include <Documents/VoDataTable.h>
#include <IO/VoStringDevice.h>
#include <Maths/VoHistogram.h>
#include <Maths/VoRandom.h>
#include <Maths/VoStatistics.h>

using vo::test::Infinity;
using vo::test::NotANumber;

namespace {

using Counts = VoVector<std::uint64_t>;

Counts CountsOf(const VoHistogram& histogram)
{
    Counts counts;
    for (std::size_t i = 0; i < histogram.bins(); ++i)
        counts.pushBack(histogram.count(i));
    return counts;
}

TEST(Statistics, InterpolatesQuantiles)
{
    const VoStatistics sample({4, 1, 3, 2});
    for (const auto& [q, value] : {std::pair{0.0, 1.0}, {0.25, 1.75}, {0.5, 2.5}, {0.9, 3.7}, {1.0, 4.0}})
        EXPECT_DOUBLE_EQ(sample.quantile(q), value) << q;
    EXPECT_EQ(VoStatistics({-1e308, 1e308}).median(), 0);
    EXPECT_EQ(VoStatistics({Infinity, Infinity}).quantile(0.3), Infinity);
    for (double q : {-0.001, 1.001, NotANumber})
        EXPECT_THROW(sample.quantile(q), VoDomainException) << q;
    EXPECT_THROW_MSG(sample.quantile(2), VoDomainException, "Value (2) is outside range [0, 1]");
}

// Beside the same in twice the digits.
TEST(Statistics, KeepsItsDigitsWhereverTheSampleLies)
{
    VoRandom random(22);
    for (const auto& [middle, width] :
         {std::pair{1e9, 1.0}, {-1e15, 8.0}, {0.0, 1e-200}, {0.0, 1e300}, {1e300, 1e290}}) {
        VoStatistics sample;
        std::array<long double, 1000> distances{};
        long double mean = 0;
        for (long double& distance : distances) {
            const double value = middle + width * random.uniform();
            sample.add(value);
            distance = (static_cast<long double>(value) - middle) / width;
            mean += distance / 1000;
        }
        long double squares = 0;
        for (long double distance : distances)
            squares += (distance - mean) * (distance - mean);
        EXPECT_DOUBLE_EQ(sample.mean(), static_cast<double>(middle + mean * width));
        EXPECT_DOUBLE_EQ(sample.standardDeviation() / width, static_cast<double>(std::sqrt(squares / 999)));
    }
    EXPECT_DOUBLE_EQ(VoStatistics({1e308, -1e308, 1e308}).mean(), 1e308 / 3);
    EXPECT_EQ(VoStatistics({1e308, 1e308, -1e308}).sum(), 1e308);
    EXPECT_DOUBLE_EQ(VoStatistics({-1e308, 1e308}).standardDeviation() / 1e308, std::sqrt(2.0));
    EXPECT_EQ(VoStatistics({0.1, 0.1, 0.1}).variance(), 0);
    EXPECT_EQ(VoStatistics({1, Infinity}).mean(), Infinity);
    EXPECT_TRUE(std::isnan(VoStatistics({1, Infinity}).variance()));
    EXPECT_TRUE(std::isnan(VoStatistics({Infinity, Infinity}).variance()));
}

// Numbers of tables and of other programs.
TEST(Statistics, DescribesASampleItsShapeAndConfidence)
{
    const VoStatistics sample({2, 4, NotANumber, 4, 4, 5, 5, 7, 9});
    EXPECT_EQ(sample.count(), 8u);
    EXPECT_EQ(sample.notNumbers(), 1u);
    EXPECT_EQ(sample.min(), 2);
    EXPECT_EQ(sample.max(), 9);
    EXPECT_EQ(sample.median(), 4.5);
    EXPECT_NEAR(sample.skewness(), 0.8184875533567997, 1e-14);
    EXPECT_NEAR(sample.kurtosis(), 0.940625, 1e-14);
    EXPECT_TRUE(std::isnan(VoStatistics({3, 3, 3, 3}).skewness()));

    // Two values one apart are half a standard error from their mean on either side.
    for (const auto& [confidence, reach] : {std::pair{0.95, 12.706204736174698}, {0.99, 63.65674116287399}})
        EXPECT_NEAR(VoStatistics({0, 1}).meanInterval(confidence).second, 0.5 + reach / 2, 1e-9);
    for (const auto& [count, reach] : {std::pair{3, 4.302652729749462},
                                       {11, 2.2281388519649385},
                                       {30, 2.045229642132703},
                                       {300, 1.9679296690653618},
                                       {301, 1.9679030112607843},
                                       {1001, 1.9623390808264078}}) {
        VoStatistics alternating;
        for (int i = 0; i < count; ++i)
            alternating.add(i % 2);
        const auto interval = alternating.meanInterval();
        EXPECT_NEAR((interval.second - interval.first) / 2 / alternating.standardDeviation() * std::sqrt(count), reach,
                    1e-9)
            << count;
    }
    EXPECT_THROW(sample.meanInterval(1), VoDomainException);

    const VoStatistics runs({1, 2, 3, 4, 5, 6, 7, 8, 9, NotANumber});
    EXPECT_EQ(runs.yield(2, 9), 0.8);
    const auto yield = runs.yieldInterval(2, 9);
    EXPECT_NEAR(yield.first, 0.49016, 1e-5);
    EXPECT_NEAR(yield.second, 0.94331, 1e-5);
    EXPECT_EQ(runs.yieldInterval(20, 30).first, 0);

    EXPECT_DOUBLE_EQ(VoStatistics::Correlation({1, 2, 3, NotANumber}, {1e308, 1.2e308, 1.4e308, 0}), 1);
    EXPECT_NEAR(VoStatistics::Correlation({1, 2, 3, 4}, {1, 3, 2, 4}), 0.8, 1e-15);
    EXPECT_TRUE(std::isnan(VoStatistics::Correlation({1, 1}, {1, 2})));
    EXPECT_THROW(VoStatistics::Correlation({1}, {}), VoInvalidParameterException);
}

TEST(Statistics, MergedPartsEqualTheWhole)
{
    VoRandom random(21);
    for (int cut : {0, 1, 500, 999, 1000}) {
        VoStatistics whole, first, second;
        for (int i = 0; i < 1000; ++i) {
            const double value = random.normal(3, 7);
            whole.add(value);
            (i < cut ? first : second).add(value);
        }
        first.merge(second);
        EXPECT_EQ(first.count(), 1000u);
        EXPECT_NEAR(first.mean(), whole.mean(), 1e-12) << cut;
        EXPECT_NEAR(first.variance(), whole.variance(), 1e-10) << cut;
        EXPECT_EQ(first.quantile(0.37), whole.quantile(0.37)) << cut;
        EXPECT_EQ(first.min(), whole.min());
        first.merge(first);
        EXPECT_EQ(first.count(), 2000u);
        EXPECT_NEAR(first.mean(), whole.mean(), 1e-12);
    }
}

TEST(Statistics, SaysNotANumberWhereTheSampleIsTooSmall)
{
    VoStatistics sample;
    EXPECT_TRUE(std::isnan(sample.mean()) && std::isnan(sample.min()) && std::isnan(sample.max()));
    EXPECT_TRUE(std::isnan(sample.median()));
    sample.add(3);
    EXPECT_EQ(sample.mean(), 3);
    EXPECT_TRUE(std::isnan(sample.variance()));
    const VoStatistics moved = std::move(sample);
    EXPECT_EQ(sample.count(), 0u);
    sample.add(4);
    EXPECT_EQ(sample.max(), 4);
}

TEST(Histogram, HalfOpenBinsHoldTheirLowerEdge)
{
    VoHistogram histogram(0, 3, 3);
    for (double value : {0.0, 0.999, 1.0, 2.0, 3.0, -0.001, 3.001, Infinity, -Infinity, NotANumber})
        histogram.add(value);
    EXPECT_EQ(CountsOf(histogram), (Counts{2, 1, 2}));
    EXPECT_EQ(histogram.below(), 2u);
    EXPECT_EQ(histogram.above(), 2u);
    EXPECT_EQ(histogram.notNumbers(), 1u);
    EXPECT_EQ(histogram.total(), 5u);
    EXPECT_EQ(histogram.mode(), 0u);
    EXPECT_EQ(histogram.cumulative(), (Counts{2, 3, 5}));
    EXPECT_EQ(histogram.edges(), (VoVector<double>{0, 1, 2, 3}));
    EXPECT_THROW(histogram.count(3), VoIndexOutOfBoundsException);
}

TEST(Histogram, IsShownAsATable)
{
    VoHistogram histogram(0, 1, 2);
    for (double value : {0.1, 0.75, 1.0, -1.0, NotANumber})
        histogram.add(value);
    VoStringDevice device;
    histogram.toDataTable().writeCSV(device);
    EXPECT_EQ(device.content().toStdString(), "Lower,Upper,Count,Cumulative\r\n0.0,0.5,1,1\r\n0.5,1.0,2,3\r\n"
                                              "Below,,1,\r\nNot a number,,1,\r\n");
    EXPECT_TRUE(histogram.toDataTable().isHeader(0));
}

TEST(Histogram, CountsAgreeWithTheEdgesWhateverTheRounding)
{
    for (const auto& [low, high] : {std::pair{0.1, 0.7},
                                    {-1e308, 1e308},
                                    {1.0, 1.0000000000000022},
                                    {-7e-320, 9e-320},
                                    {-1.125, -1.1249999999999978}}) {
        VoHistogram histogram(low, high, 17);
        const auto edges = histogram.edges();
        EXPECT_TRUE(std::is_sorted(edges.begin(), edges.end())) << low;
        for (double edge : edges)
            histogram.add(edge);
        Counts expected(17);
        for (double edge : edges) {
            std::size_t bin = 16; // the last one whose lower edge is not above
            while (edge < edges[bin])
                --bin;
            ++expected[bin];
        }
        EXPECT_EQ(CountsOf(histogram), expected) << low;
        EXPECT_EQ(histogram.total(), 18u) << low;
    }
}

TEST(Histogram, ChoosesItsBinsFromTheData)
{
    VoRandom random(23);
    VoVector<double> normal;
    for (int i = 0; i < 1000; ++i)
        normal.pushBack(random.normal(0, 1));
    const VoHistogram histogram = VoHistogram::FromData(normal);
    EXPECT_GT(histogram.bins(), 15u); // width 2 * 1.35 / 10, range about 6.5
    EXPECT_LT(histogram.bins(), 40u);
    EXPECT_EQ(histogram.total(), 1000u);

    VoVector<double> outlier = normal;
    outlier.pushBack(1e9);
    EXPECT_EQ(VoHistogram::FromData(outlier).bins(), 1000u);

    const VoHistogram halfEqual = VoHistogram::FromData({1, 1, 1, 1, 1, 1, 1, 9});
    EXPECT_EQ(CountsOf(halfEqual), (Counts{7, 0, 0, 1}));
}

TEST(Histogram, TakesDataWithoutARange)
{
    for (double value : {0.0, 1.0, -1e-300, 1e308, -1.7976931348623157e308, 5e-324}) {
        const VoHistogram histogram = VoHistogram::FromData({value, value, Infinity, NotANumber});
        EXPECT_EQ(CountsOf(histogram), Counts{2}) << value;
        EXPECT_EQ(histogram.above(), 1u);
        EXPECT_EQ(histogram.notNumbers(), 1u);
        EXPECT_LT(histogram.edges()[0], histogram.edges()[1]);
        EXPECT_LE(histogram.edges()[1] - histogram.edges()[0], 2e-15 * std::fabs(value) + 5e-308);
    }
    EXPECT_EQ(VoHistogram::FromData({}).total(), 0u);
    EXPECT_EQ(VoHistogram::FromData({-Infinity}).below(), 1u);
}

TEST(Histogram, RefusesRangesThatAreNone)
{
    EXPECT_THROW(VoHistogram(1, 1, 3), VoDomainException);
    EXPECT_THROW(VoHistogram(0, Infinity, 3), VoDomainException);
    EXPECT_THROW(VoHistogram(NotANumber, 1, 3), VoDomainException);
    EXPECT_THROW_MSG(VoHistogram(0, 1, 0), VoInvalidParameterException, "Number of bins must be greater than zero");
    EXPECT_THROW(VoHistogram(0, 1, std::numeric_limits<std::size_t>::max()), VoOverflowException);
    VoHistogram histogram(0, 1, 2);
    const VoHistogram moved = std::move(histogram);
    histogram.add(0.5);
    EXPECT_EQ(histogram.bins(), 0u);
    EXPECT_EQ(histogram.mode(), 0u);
    EXPECT_EQ(histogram.above(), 1u);
}

} // namespace
