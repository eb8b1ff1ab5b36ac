#include <VoTestSupport.h>
#include <vo/screen/ProgressLine.h>

#include <limits>
#include <random>

using namespace vo::tool;

namespace {

constexpr std::size_t Wide = 200;

VoTimePoint At(std::int64_t milliseconds)
{
    return VoTimePoint() + VoTimeDuration(VoMilliseconds(milliseconds));
}

std::string TextOf(const ProgressLine& line, std::size_t width = Wide)
{
    return line.text(width).toStdString();
}

} // namespace

TEST(ProgressLine, ShowsAmountsRateAndTimeLeft)
{
    ProgressLine line("Installing", ProgressLine::Unit::Files);
    line.update(0, 1000, At(0));
    EXPECT_EQ(TextOf(line), "Installing      0 of 1000 files   0 %");
    line.update(200, 1000, At(1000));
    line.update(400, 1000, At(2000));
    EXPECT_EQ(TextOf(line), "Installing    400 of 1000 files   40 %   200 files/s   0:03 left");
    line.update(1000, 1000, At(3000));
    EXPECT_EQ(TextOf(line), "Installing   1000 of 1000 files   100 %   333 files/s");
}

TEST(ProgressLine, ShowsBytesInTheUnitsOfDownloads)
{
    ProgressLine line("Downloading", ProgressLine::Unit::Bytes);
    line.update(0, 6000000, At(0));
    line.update(3000000, 6000000, At(2000));
    EXPECT_EQ(TextOf(line), "Downloading   3.0 MB of 6.0 MB   50 %   1.5 MB/s   0:02 left");
}

TEST(ProgressLine, WithoutATotalShowsOnlyWhatIsDone)
{
    ProgressLine line("Packing", ProgressLine::Unit::Files);
    line.update(12, 0, At(0));
    EXPECT_EQ(TextOf(line), "Packing   12 files");
    EXPECT_EQ(line.percent(), -1);
    EXPECT_LT(line.timeLeft().count(), 0);
    constexpr auto huge = std::numeric_limits<std::uint64_t>::max();
    line.update(huge - 1, huge, At(1));
    EXPECT_EQ(line.percent(), 99) << "100 is said only when all is done";
}

TEST(ProgressLine, WhatIsBehindGivesWayOnANarrowTerminal)
{
    ProgressLine line("Installing", ProgressLine::Unit::Files);
    line.update(7, 9, At(0));
    EXPECT_EQ(TextOf(line, 20), "Installing   7 of 9 ");
    EXPECT_EQ(TextOf(line, 0), "");
}

TEST(ProgressLine, NeverGoesBackwardsNorBeyondTheEndWhateverItIsTold)
{
    std::mt19937_64 random(11);
    ProgressLine line("Installing", ProgressLine::Unit::Files);
    std::uint64_t done = 0;
    int percent = -1;
    std::int64_t clock = 0;
    for (int i = 0; i < 2000; ++i) {
        clock += static_cast<std::int64_t>(random() % 300) - 50; // the system's clock may be set back
        line.update(random() % 2000, random() % 1500, At(clock));
        EXPECT_GE(line.done(), done);
        EXPECT_GE(line.percent(), percent);
        EXPECT_LE(line.percent(), 100);
        EXPECT_EQ(TextOf(line).find('-'), std::string::npos) << TextOf(line);
        done = line.done();
        percent = line.percent();
    }
}

TEST(ProgressLine, TheFirstSecondAndStalledWorkMakeNoGuess)
{
    ProgressLine line("Installing", ProgressLine::Unit::Files);
    line.update(0, 100, At(0));
    line.update(10, 100, At(500));
    EXPECT_LT(line.timeLeft().count(), 0);
    line.update(20, 100, At(1000));
    EXPECT_EQ(ClockText(line.timeLeft()).toStdString(), "0:04");
    for (int i = 2; i < 50; ++i)
        line.update(20, 100, At(i * 1000));
    EXPECT_EQ(TextOf(line), "Installing    20 of 100 files   20 %");
}

TEST(ClockText, IsReadLikeAClock)
{
    struct
    {
        VoTimeDuration duration;
        const char* text;
    } const rows[] = {
        {VoTimeDuration(VoNanoseconds(0)), "0:00"},     {VoTimeDuration(VoNanoseconds(1)), "0:01"},
        {VoTimeDuration(VoSeconds(59)), "0:59"},        {VoTimeDuration(VoMilliseconds(59001)), "1:00"},
        {VoTimeDuration(VoSeconds(3599)), "59:59"},     {VoTimeDuration(VoSeconds(3600)), "1:00:00"},
        {VoTimeDuration(VoSeconds(37815)), "10:30:15"}, {VoTimeDuration(VoSeconds(-5)), "0:00"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ClockText(row.duration).toStdString(), row.text);
}
