#include <VoTestSupport.h>
#include <vo/screen/ProgressLine.h>

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
    EXPECT_EQ(TextOf(line), "Installing    400 of 1000 files   40 %   200 files/s   3 s left");
    line.update(1000, 1000, At(3000));
    EXPECT_EQ(TextOf(line), "Installing   1000 of 1000 files   100 %   333 files/s");
}

TEST(ProgressLine, ShowsBytesInTheUnitsOfDownloads)
{
    ProgressLine line("Downloading", ProgressLine::Unit::Bytes);
    line.update(0, 6000000, At(0));
    line.update(3000000, 6000000, At(2000));
    EXPECT_EQ(TextOf(line), "Downloading   3.0 MB of 6.0 MB   50 %   1.5 MB/s   2 s left");
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

TEST(ProgressLine, OnANarrowTerminalHowFarTheWorkIsStaysTheLongest)
{
    ProgressLine line("Installing", ProgressLine::Unit::Files);
    line.update(0, 1000, At(0));
    line.update(400, 1000, At(2000));
    for (const auto& [width, text] :
         {std::pair(63, "Installing    400 of 1000 files   40 %   200 files/s   3 s left"),
          std::pair(50, "Installing    400 of 1000 files   40 %   3 s left"),
          std::pair(40, "Installing    400 of 1000 files   40 %"), std::pair(30, "Installing   40 %   3 s left"),
          std::pair(20, "Installing   40 %"), std::pair(5, "Insta"), std::pair(0, "")})
        EXPECT_EQ(TextOf(line, static_cast<std::size_t>(width)), text);
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
    EXPECT_EQ(line.timeLeft().seconds(), 4);
    for (int i = 2; i < 50; ++i)
        line.update(20, 100, At(i * 1000));
    EXPECT_EQ(TextOf(line), "Installing    20 of 100 files   20 %");
}
