#include <ScopedEnvironment.h>
#include <Time/VoDateTime.h>
#include <Time/VoTimer.h>
#include <VoTestSupport.h>
#include <Words.h>

using vo::test::ScopedEnvironment;

namespace {

VoDateTime LocalAt(std::int64_t seconds)
{
    return VoDateTime(VoTimePoint(VoSeconds(seconds)), VoDateTime::Local);
}

} // namespace

TEST(VoDateTime, UniversalTextsStandForInstants)
{
    struct
    {
        std::int64_t nanoseconds;
        const char* text;
    } const rows[] = {
        {0, "1970-01-01T00:00:00.000000000Z"},
        {-1, "1969-12-31T23:59:59.999999999Z"},
        {1714566896000000000, "2024-05-01T12:34:56.000000000Z"},
        {1709164799123456789, "2024-02-28T23:59:59.123456789Z"},
        {1709164800000000000, "2024-02-29T00:00:00.000000000Z"},
        {std::numeric_limits<std::int64_t>::max(), "2262-04-11T23:47:16.854775807Z"},
        {std::numeric_limits<std::int64_t>::min(), "1677-09-21T00:12:43.145224192Z"},
    };
    for (const auto& row : rows) {
        const VoDateTime date{VoTimePoint(VoNanoseconds(row.nanoseconds))};
        EXPECT_EQ(date.toString().toStdString(), row.text);
        EXPECT_EQ(VoDateTime::Deserialize(row.text).timePoint().timeSinceEpoch().count(), row.nanoseconds);
        EXPECT_EQ(VoDateTime::FromUtc(date.components()), date);
    }
}

TEST(VoDateTime, LocalTextsTellTheTwoHoursThatSummerTimeRepeats)
{
#if !defined(__unix__)
    GTEST_SKIP() << "the system's zone is not set by the environment";
#endif
    const ScopedEnvironment zone("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(LocalAt(1729988999).toString().toStdString(), "2024-10-27T02:29:59.000000000+02:00");
    EXPECT_EQ(LocalAt(1729992599).toString().toStdString(), "2024-10-27T02:29:59.000000000+01:00");
    const ScopedEnvironment other("TZ", "XXX3:30");
    EXPECT_EQ(LocalAt(0).toString().toStdString(), "1969-12-31T20:30:00.000000000-03:30");
    EXPECT_EQ(LocalAt(0).components().minute, 30);
}

TEST(VoDateTime, EveryInstantComesBackFromItsTextInAnyZone)
{
    std::mt19937_64 random(7);
    for (const char* name : {"UTC0", "CET-1CEST,M3.5.0,M10.5.0/3", "XXX9:30", "YYY-14"}) {
        const ScopedEnvironment zone("TZ", name);
        for (int i = 0; i < 200; ++i) {
            // Away from the ends of the clock, where local time may have no instant.
            const auto count = static_cast<std::int64_t>(random()) / 2;
            const VoDateTime date(VoTimePoint(VoNanoseconds(count)), i % 2 ? VoDateTime::Local : VoDateTime::Utc);
            const VoDateTime back = VoDateTime::Deserialize(VoDateTime::Serialize(date));
            ASSERT_EQ(back.timePoint(), date.timePoint()) << name << ' ' << date;
            ASSERT_EQ(back.representation(), date.representation());
        }
    }
}

TEST(VoDateTime, ReadsIsoTextsStrictly)
{
    for (const char* text : {"2024-05-01T12:34:56Z", "2024-05-01T12:34:56.0Z", "2024-05-01T14:34:56+02:00",
                             "2024-05-02T02:34:56.000000000+14:00", "2024-05-01T11:04:56-01:30"})
        EXPECT_EQ(VoDateTime::Deserialize(text).toUtc().toString().toStdString(), "2024-05-01T12:34:56.000000000Z");
    std::vector<std::string> wrong = vo::test::Words(
        "2024 2024-05-01 2024-05-01T12:34:56 2024-05-01T12:34:56.Z 2024-05-01T12:34:56.0000000000Z "
        "2024-13-01T00:00:00Z "
        "2023-02-29T00:00:00Z 2024-04-31T00:00:00Z 2024-00-01T00:00:00Z 2024-01-00T00:00:00Z 2024-05-01T24:00:00Z "
        "2024-05-01T00:60:00Z 2024-05-01T00:00:60Z 2024-05-01T00:00:00z 2024-05-01T00:00:00ZZ 2024-05-01T00:00:00+0200 "
        "2024-05-01T00:00:00+24:00 2024-05-01T00:00:00+01:60 9999-01-01T00:00:00Z 0000-01-01T00:00:00Z "
        "1677-09-21T00:12:43.145224191Z -024-05-01T00:00:00Z");
    for (const char* text : {"", "2024-05-01 12:34:56Z", " 2024-05-01T00:00:00Z"})
        wrong.emplace_back(text);
    for (const std::string& text : wrong)
        EXPECT_THROW_MSG(VoDateTime::Deserialize(text), VoInvalidConversionException,
                         "Invalid conversion from " + text + " to VoDateTime");
}

TEST(VoDateTime, DatesThatNoCalendarOrClockHasAreRefused)
{
    VoDateTime::Components parts;
    parts.day = 32;
    EXPECT_THROW_MSG(VoDateTime::FromUtc(parts), VoInvalidParameterException, "Invalid date or time");
    parts.day = 1;
    parts.nanosecond = 1000000000;
    EXPECT_THROW_MSG(VoDateTime::FromUtc(parts), VoInvalidParameterException, "Invalid date or time");
    parts.nanosecond = 0;
    parts.year = 2263;
    EXPECT_THROW(VoDateTime::FromUtc(parts), VoOverflowException);
}

TEST(VoTimer, NeverRunsBackwards)
{
    VoTimer timer;
    const VoTimeDuration first = timer.elapsed();
    EXPECT_LE(VoTimeDuration(), first);
    EXPECT_LE(first, timer.restart());
    EXPECT_TRUE(timer.hasExpired(VoTimeDuration()));
    EXPECT_FALSE(timer.hasExpired(VoTimeDuration::Max()));
}
