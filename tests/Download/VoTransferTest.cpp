#include <Download/VoDownloadSize.h>
#include <Download/VoTransferRate.h>
#include <Download/VoTransferRateMonitor.h>
#include <Download/detail/VoSampleRing.h>
#include <Time/VoTimePoint.h>

#include <VoTestSupport.h>

#include <cstdint>

namespace {

constexpr std::int64_t Largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t Smallest = std::numeric_limits<std::int64_t>::min();

VoTimePoint At(double seconds)
{
    return VoTimePoint(VoTimeDuration::FromSeconds(seconds));
}

} // namespace

TEST(VoDownloadSize, IsShownInDecimalUnitsChosenByTheCount)
{
    const std::pair<std::int64_t, const char*> rows[] = {{0, "0.0 B"},           {999, "999.0 B"},
                                                         {1000, "1.0 KB"},       {1500, "1.5 KB"},
                                                         {999999, "1000.0 KB"},  {1000000, "1.0 MB"},
                                                         {12340000, "12.3 MB"},  {999999999, "1000.0 MB"},
                                                         {2500000000, "2.5 GB"}, {7000000000000, "7000.0 GB"},
                                                         {-1, "-1.0 B"}};
    for (const auto& [bytes, text] : rows) {
        EXPECT_EQ(VoDownloadSize(bytes).toString().toStdString(), text);
        EXPECT_EQ(("got " + VoDownloadSize(bytes)).toStdString(), std::string("got ") + text);
    }
}

TEST(VoDownloadSize, UnknownAbsorbsWhatIsAddedOrTakenAway)
{
    const VoDownloadSize unknown = VoDownloadSize::Unknown();
    VoDownloadSize sum = 5;
    sum += unknown;
    EXPECT_TRUE(sum.isUnknown());
    sum += 7;
    EXPECT_TRUE(sum.isUnknown());
    EXPECT_TRUE((unknown - 5).isUnknown());
    EXPECT_TRUE((VoDownloadSize(5) - unknown).isUnknown());
    EXPECT_EQ(VoDownloadSize(5) - 7, -2);
    const VoDownloadSize moved = std::move(sum);
    EXPECT_TRUE(moved.isUnknown());
    EXPECT_EQ(sum, 0); // NOLINT: what is left is promised
}

TEST(VoDownloadSize, StopsAtTheLargestNumber)
{
    EXPECT_EQ(VoDownloadSize(Largest - 1) + 5, Largest);
    EXPECT_EQ(VoDownloadSize(Largest) - VoDownloadSize(-5), Largest);
    EXPECT_EQ(VoDownloadSize(Smallest) - 5, Smallest);
    EXPECT_EQ(VoDownloadSize(Smallest) + VoDownloadSize(-5), Smallest);
    EXPECT_EQ(VoDownloadSize(std::numeric_limits<std::uint64_t>::max()), Largest);
}

TEST(VoDownloadSize, ReadsBackAndRefusesOtherTexts)
{
    for (const std::int64_t bytes : {std::int64_t(0), std::int64_t(-1), Largest, Smallest})
        EXPECT_EQ(VoDownloadSize::Deserialize(VoDownloadSize::Serialize(bytes)), bytes);
    EXPECT_TRUE(VoDownloadSize::Deserialize("-1").isUnknown());
    for (const char* text : {"", " 1", "1 ", "1.0", "12x", "9223372036854775808", "unknown"})
        EXPECT_THROW_MSG(VoDownloadSize::Deserialize(text), VoInvalidConversionException,
                         std::string("Invalid conversion from ") + text + " to VoDownloadSize");
}

TEST(VoTransferRate, IsShownWithTwoBlanks)
{
    const std::pair<double, const char*> rows[] = {{0, "0.0  bytes/s"},    {999, "999.0  bytes/s"},
                                                   {1000, "1.0  kB/s"},    {12500, "12.5  kB/s"},
                                                   {2000000, "2.0  MB/s"}, {3.2e10, "32000.0  MB/s"}};
    for (const auto& [rate, text] : rows)
        EXPECT_EQ(VoTransferRate(rate).toString().toStdString(), text);
}

TEST(VoTransferRate, UnitsAreDecimal)
{
    const VoTransferRate rate(5000000, VoMilliseconds(500));
    EXPECT_DOUBLE_EQ(rate.bytesPerSecond(), 1e7);
    EXPECT_DOUBLE_EQ(rate.kilobytesPerSecond(), 1e4);
    EXPECT_DOUBLE_EQ(rate.megabytesPerSecond(), 10);
    EXPECT_DOUBLE_EQ(rate.gigabytesPerSecond(), 0.01);
    EXPECT_DOUBLE_EQ(rate.terabytesPerSecond(), 1e-5);
    EXPECT_DOUBLE_EQ((rate + rate * 0.5).megabytesPerSecond(), 15);
}

TEST(VoTransferRate, IsZeroWhereThereIsNoRate)
{
    EXPECT_EQ(VoTransferRate(VoDownloadSize::Unknown(), VoSeconds(1)), nullptr);
    EXPECT_EQ(VoTransferRate(100, VoSeconds(0)), nullptr);
    EXPECT_EQ(VoTransferRate(100, VoSeconds(-1)), nullptr);
    EXPECT_EQ(VoTransferRate(std::numeric_limits<double>::quiet_NaN()), nullptr);
    EXPECT_NE(VoTransferRate(0.001), nullptr);
    EXPECT_TRUE(VoTransferRate(1) == VoTransferRate(1) && !(VoTransferRate(1) == VoTransferRate(2)));
    EXPECT_DOUBLE_EQ((VoTransferRate(1e308) * 1e10).bytesPerSecond(), std::numeric_limits<double>::max());
}

TEST(VoTransferRate, GivesTheTimeForASizeAndTheLongestWhereItNeverEnds)
{
    EXPECT_EQ(VoDownloadSize(1500) / VoTransferRate(1000), VoTimeDuration(VoMilliseconds(1500)));
    EXPECT_EQ(VoDownloadSize(0) / VoTransferRate(1000), VoTimeDuration());
    EXPECT_EQ(VoDownloadSize(1) / VoTransferRate(), VoTimeDuration::Max());
    EXPECT_EQ(VoDownloadSize(1) / VoTransferRate(-5), VoTimeDuration::Max());
    EXPECT_EQ(VoDownloadSize::Unknown() / VoTransferRate(1000), VoTimeDuration::Max());
    EXPECT_EQ(VoDownloadSize(Largest) / VoTransferRate(1e-300), VoTimeDuration::Max());
}

// The weighted sum of the intervals' rates, as it is defined.
double WeightedSum(const std::vector<std::pair<double, double>>& samples)
{
    const double span = samples.back().second - samples.front().second;
    double sum = 0;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const double seconds = samples[i].second - samples[i - 1].second;
        sum += (samples[i].first - samples[i - 1].first) / seconds * (seconds / span);
    }
    return sum;
}

TEST(VoTransferRateMonitor, IsTheWeightedSumOverTheLastSixteenSamples)
{
    std::mt19937 random(5);
    VoTransferRateMonitor monitor;
    std::vector<std::pair<double, double>> window;
    double size = 0;
    double time = 1000;
    for (int i = 0; i < 100; ++i) {
        size += static_cast<double>(random() % 100000);
        time += 0.001 * static_cast<double>(1 + random() % 2000);
        monitor.update(static_cast<std::int64_t>(size), At(time));
        window.emplace_back(size, time);
        if (window.size() > 16)
            window.erase(window.begin());
        const double expected = window.size() < 2 ? 0 : WeightedSum(window);
        ASSERT_NEAR(monitor.value().bytesPerSecond(), expected, 1e-3) << "sample " << i;
    }
    VoTransferRateMonitor copy = monitor;
    copy.update(static_cast<std::int64_t>(size + 1e9), At(time + 1));
    EXPECT_NE(copy.value(), monitor.value());
}

TEST(VoTransferRateMonitor, HasNoRateWithoutTimeOrGainOrKnownSizes)
{
    const struct
    {
        VoDownloadSize first;
        VoDownloadSize second;
        double seconds;
    } rows[] = {{0, 1000, 0},
                {0, 1000, -1},
                {1000, 0, 1},
                {VoDownloadSize::Unknown(), 5, 1},
                {5, VoDownloadSize::Unknown(), 1}};
    for (const auto& row : rows) {
        VoTransferRateMonitor monitor;
        monitor.update(row.first, At(10));
        monitor.update(row.second, At(10 + row.seconds));
        EXPECT_EQ(monitor.value(), nullptr) << row.first << " to " << row.second << " in " << row.seconds;
    }
    VoTransferRateMonitor ages;
    ages.update(0, VoTimePoint(VoTimeDuration::Min()));
    ages.update(Largest, VoTimePoint(VoTimeDuration::Max()));
    EXPECT_NEAR(ages.value().bytesPerSecond(), 5e8, 1);
}

TEST(VoSampleRing, RefusesSamplesWithoutCapacityAndReadingWithoutSamples)
{
    VoSampleRing<int> none(0);
    EXPECT_THROW_MSG(none.add(1), VoBufferOverflowException, "");
    const VoSampleRing<int> empty(3);
    EXPECT_THROW_MSG(empty.oldest(), VoBufferUnderflowException, "");
    EXPECT_THROW_MSG(empty.newest(), VoBufferUnderflowException, "");
}
