#include <Time/VoTimeDuration.h>
#include <Time/VoTimePoint.h>

#include <VoTestSupport.h>

#include <QtCore/QDateTime>

#include <cstdint>

namespace {

constexpr std::int64_t Largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t Smallest = std::numeric_limits<std::int64_t>::min();

std::string TooGreat(const std::string& unit)
{
    return "Number of " + unit + " is greater than the value a time duration can hold";
}

VoTimeDuration Nanoseconds(std::int64_t count)
{
    return VoNanoseconds(count);
}

static_assert(VoTimeDuration(VoHours(1)) == VoTimeDuration(VoMinutes(59)) + VoSeconds(60), "usable in constants");

} // namespace

TEST(VoTimeDuration, ComponentsFitUpToTheLastOneThatNanosecondsCanHold)
{
    EXPECT_EQ(VoTimeDuration(VoHours(2562047)).count(), 9223369200000000000);
    EXPECT_EQ(VoTimeDuration(VoMinutes(-153722867)).count(), -9223372020000000000);
    EXPECT_EQ(VoTimeDuration(VoSeconds(9223372036)).count(), 9223372036000000000);
    EXPECT_EQ(VoTimeDuration(VoMilliseconds(-9223372036854)).count(), -9223372036854000000);
    EXPECT_EQ(VoTimeDuration(VoMicroseconds(9223372036854775)).count(), 9223372036854775000);
    EXPECT_EQ(VoTimeDuration(VoNanoseconds(Smallest)).count(), Smallest);

    for (const int sign : {1, -1}) {
        EXPECT_THROW_MSG(VoTimeDuration(VoHours(sign * 2562048)), VoOverflowException, TooGreat("hours"));
        EXPECT_THROW_MSG(VoTimeDuration(VoMinutes(sign * 153722868)), VoOverflowException, TooGreat("minutes"));
        EXPECT_THROW_MSG(VoTimeDuration(VoSeconds(sign * 9223372037)), VoOverflowException, TooGreat("seconds"));
        EXPECT_THROW_MSG(VoTimeDuration(VoMilliseconds(sign * 9223372036855)), VoOverflowException,
                         TooGreat("milliseconds"));
        EXPECT_THROW_MSG(VoTimeDuration(VoMicroseconds(sign * 9223372036854776)), VoOverflowException,
                         TooGreat("microseconds"));
    }
}

TEST(VoTimeDuration, SumsAndDifferencesReachTheLimitsAndNoFurther)
{
    EXPECT_EQ(Nanoseconds(Largest - 1) + Nanoseconds(1), VoTimeDuration::Max());
    EXPECT_EQ(Nanoseconds(Smallest + 1) - Nanoseconds(1), VoTimeDuration::Min());
    EXPECT_EQ(Nanoseconds(-1) - VoTimeDuration::Min(), VoTimeDuration::Max());
    EXPECT_EQ(-VoTimeDuration::Max(), Nanoseconds(Smallest + 1));

    constexpr char message[] = "Overflow - result too large";
    EXPECT_THROW_MSG(VoTimeDuration::Max() + Nanoseconds(1), VoOverflowException, message);
    EXPECT_THROW_MSG(VoTimeDuration::Min() + Nanoseconds(-1), VoOverflowException, message);
    EXPECT_THROW_MSG(VoTimeDuration() - VoTimeDuration::Min(), VoOverflowException, message);
    EXPECT_THROW_MSG(VoTimeDuration::Min() - Nanoseconds(1), VoOverflowException, message);
    EXPECT_THROW_MSG(-VoTimeDuration::Min(), VoOverflowException, message);

    VoTimeDuration unchanged = VoTimeDuration::Max();
    EXPECT_THROW(unchanged += VoSeconds(1), VoOverflowException);
    EXPECT_EQ(unchanged, VoTimeDuration::Max());
}

TEST(VoTimeDuration, SecondsOutsideTheRangeGiveTheNearestDuration)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(VoTimeDuration::FromSeconds(1.5), VoTimeDuration(VoMilliseconds(1500)));
    EXPECT_EQ(VoTimeDuration::FromSeconds(9223372036.9), VoTimeDuration::Max());
    EXPECT_EQ(VoTimeDuration::FromSeconds(infinity), VoTimeDuration::Max());
    EXPECT_EQ(VoTimeDuration::FromSeconds(-infinity), VoTimeDuration::Min());
    EXPECT_EQ(VoTimeDuration::FromSeconds(std::numeric_limits<double>::quiet_NaN()), VoTimeDuration());
}

TEST(VoTimeDuration, IsShownInTheLargestUnitThatItFills)
{
    const std::pair<std::int64_t, const char*> rows[] = {{0, "0 ns"},
                                                         {999, "999 ns"},
                                                         {1000, "1 us"},
                                                         {1234567, "1.234 ms"},
                                                         {1500000000, "1.5 s"},
                                                         {59999999999, "59.999 s"},
                                                         {60000000000, "1 min"},
                                                         {-5400000000000, "-1.5 h"},
                                                         {3600010000000, "1 h"},
                                                         {Smallest, "-2562047.788 h"}};
    for (const auto& [count, text] : rows)
        EXPECT_EQ(Nanoseconds(count).toString().toStdString(), text);
}

TEST(VoTimeDuration, TicksReadBackAndOtherTextsAreRefused)
{
    for (const std::int64_t count : {std::int64_t(0), std::int64_t(-1), Largest, Smallest})
        EXPECT_EQ(VoTimeDuration::Deserialize(VoTimeDuration::Serialize(Nanoseconds(count))).count(), count);
    for (const char* text : {"", " 1", "1 ", "+1", "1.5", "0x1", "9223372036854775808", "--1"}) {
        EXPECT_THROW_MSG(VoTimeDuration::Deserialize(text), VoInvalidConversionException,
                         std::string("Invalid conversion from ") + text + " to VoTimeDuration");
        EXPECT_THROW_MSG(VoTimePoint::Deserialize(text), VoInvalidConversionException,
                         std::string("Invalid conversion from ") + text + " to VoTimePoint");
    }
}

TEST(VoTimePoint, ShowsTheDateThatQtShowsAlsoNow)
{
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    const std::int64_t now = VoTimePoint::Now().timeSinceEpoch().count() / 1000000;
    EXPECT_TRUE(before <= now && now <= QDateTime::currentMSecsSinceEpoch());
    EXPECT_THROW(VoTimePoint(VoTimeDuration::Max()) - VoTimePoint(VoTimeDuration::Min()), VoOverflowException);
    std::mt19937_64 random(3);
    std::vector<std::int64_t> counts = {0, -1, 951782400000000000, 951868799999999999, Largest, Smallest};
    for (int i = 0; i < 20000; ++i)
        counts.push_back(static_cast<std::int64_t>(random()));
    for (const std::int64_t count : counts) {
        const std::int64_t milliseconds = count / 1000000 - (count % 1000000 < 0 ? 1 : 0);
        const QString expected = QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC).toString(Qt::ISODateWithMs);
        ASSERT_EQ(VoTimePoint(Nanoseconds(count)).toString().toStdString(), expected.toStdString()) << count;
    }
}
