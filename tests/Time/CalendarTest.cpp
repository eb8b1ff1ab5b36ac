#include <Core/VoDeque.h>
#include <ScopedEnvironment.h>
#include <ScratchFolder.h>
#include <Time/VoDateTime.h>
#include <Time/detail/ZoneRule.h>
#include <VoTestSupport.h>
#include <Words.h>

#include <QtCore/QDateTime>
#include <QtCore/QLocale>
#include <QtCore/QTimeZone>

#include <ctime>

using vo::test::ScopedEnvironment;

namespace {

// Zones with summer time in both hemispheres, changes of half an hour and of two, whole days left out, mean times until
// long after 1900, rules that follow the moon, and none of these.
const char* const Zones[] = {"America/New_York", "Europe/Berlin",     "Europe/London",     "Asia/Tokyo",
                             "Australia/Sydney", "Asia/Kolkata",      "America/Sao_Paulo", "Africa/Cairo",
                             "Asia/Tehran",      "Pacific/Auckland",  "America/St_Johns",  "Asia/Kathmandu",
                             "Europe/Moscow",    "Africa/Casablanca", "Europe/Dublin",     "Antarctica/Troll",
                             "Pacific/Apia",     "America/Caracas",   "Asia/Pyongyang",    "Australia/Lord_Howe"};

constexpr std::int64_t BeginOf1900 = -2208988800;
constexpr std::int64_t BeginOf2100 = 4102444800;

VoDateTime At(std::int64_t seconds, const VoTimeZone& zone)
{
    return VoDateTime(VoTimePoint(VoSeconds(seconds)), zone);
}

#if defined(__unix__) // the zones of another C library are not those of the system
std::string CLibrarysText(std::time_t instant)
{
    std::tm parts = {};
    localtime_r(&instant, &parts);
    char text[32];
    return std::string(text, std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &parts));
}
#endif

} // namespace

#if defined(__unix__)

TEST(VoTimeZone, LocalAndNamedTimesAreTheCLibrarysInTwentyZonesAndTwoCenturies)
{
    std::mt19937_64 random(1);
    std::uniform_int_distribution<std::int64_t> instants(BeginOf1900, BeginOf2100);
    for (const char* name : Zones) {
        const ScopedEnvironment here("TZ", name);
        const VoTimeZone zone{VoString(name)};
        for (int i = 0; i < 4000; ++i) {
            const std::int64_t instant = instants(random);
            const std::string expected = CLibrarysText(instant);
            ASSERT_EQ(At(instant, zone).toString("%F %T").toStdString(), expected) << name << ' ' << instant;
            ASSERT_EQ(At(instant, VoTimeZone::Local()).toString("%F %T").toStdString(), expected) << name;
        }
    }
}

TEST(VoTimeZone, RecordsThatEndTooSoonAreRefused)
{
    const vo::test::ScratchFolder folder;
    std::ifstream file("/usr/share/zoneinfo/Europe/Berlin", std::ios::binary);
    const std::string whole((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    ASSERT_GT(whole.size(), 500u);
    const std::size_t end = whole.rfind('\n', whole.size() - 2); // the rule behind it may be missing
    const ScopedEnvironment here("TZDIR", folder.native().c_str());
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        const std::string name = "Cut" + std::to_string(length);
        folder.write(name, whole.substr(0, length));
        ASSERT_EQ(VoTimeZone::IsKnown(VoString(name)), length >= end) << length;
    }
}

TEST(ZoneRule, GoesOnForEverAsTheCLibrarysDoes)
{
    std::mt19937_64 random(5);
    std::uniform_int_distribution<std::int64_t> instants(0, 250 * std::int64_t{31556952});
    for (const char* text :
         {"UTC0", "<+0330>-3:30", "CET-1CEST,M3.5.0,M10.5.0/3", "IST-1GMT0,M10.5.0,M3.5.0/1",
          "AEST-10AEDT,M10.1.0,M4.1.0/3", "EET-2EEST,M4.5.5/0,M10.5.4/24", "XXX3YYY,J60/0,J300/-1:30",
          "XXX3YYY2:15:30,59,304/5", "<-02>2<-01>,M3.4.0/-1,M10.5.0/0"}) {
        const ScopedEnvironment here("TZ", text);
        const auto rule = vo::detail::ZoneRule::Read(text);
        ASSERT_TRUE(rule) << text;
        for (int i = 0; i < 20000; ++i) {
            const std::int64_t instant = instants(random);
            ASSERT_EQ(rule->offset(instant),
                      VoDateTime(VoTimePoint(VoSeconds(instant)), VoDateTime::Local).offsetSeconds())
                << text << ' ' << instant;
        }
    }
    for (const char* text :
         {"", "UTC", "U0", "CET-1CEST", "CET-1CEST,M13.5.0,M10.5.0", "CET-1CEST,M3.5.0", "<CET-1", "CET-1 "})
        EXPECT_FALSE(vo::detail::ZoneRule::Read(text)) << text;
}

#endif

TEST(VoTimeZone, UnknownIdentifiersAndWaysOutOfTheZoneDataAreRefused)
{
    for (const char* id : {"", "Mars/Phobos", "../../../etc/passwd", "/etc/localtime", "Europe/Berlin\n", "Europe"})
        EXPECT_THROW_MSG(VoTimeZone{VoString(id)}, VoInvalidParameterException, VoString("Unknown time zone: ") + id);
    for (const VoString& id : VoTimeZone::Ids())
        ASSERT_TRUE(VoTimeZone::IsKnown(id)) << id;
    VoTimeZone zone("Asia/Tokyo");
    const VoTimeZone moved = std::move(zone);
    EXPECT_TRUE(zone.isUtc());
    EXPECT_EQ(moved, VoTimeZone("Asia/Tokyo"));
    EXPECT_NE(moved, VoTimeZone::Local());
}

// Every change of the clocks in twenty zones and two centuries, and what is around it: by an independent, slow search
// among all instants that could be meant.
TEST(VoDateTime, ATimeOfAZoneMeansTheInstantsAtWhichItsClocksShowIt)
{
    std::int64_t skipped = 0, repeated = 0;
    for (const char* name : Zones) {
        if (!VoTimeZone::IsKnown(name)) {
            EXPECT_STREQ(name, "Antarctica/Troll") << "which some systems do not know";
            continue;
        }
        const VoTimeZone zone{VoString(name)};
        const auto offset = [&](std::int64_t instant) { return At(instant, zone).offsetSeconds(); };
        std::mt19937_64 random(2);
        for (std::int64_t day = BeginOf1900; day < BeginOf2100; day += 86400) {
            if (offset(day) == offset(day + 86400))
                continue;
            std::int64_t change = day, end = day + 86400;
            while (end - change > 1)
                (offset(day) == offset((change + end) / 2) ? change : end) = (change + end) / 2;
            const std::int64_t shift = std::abs(offset(end) - offset(change));
            for (int i = 0; i < 3; ++i) {
                const std::int64_t wall = end + offset(change) - shift +
                                          static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(3 * shift));
                std::vector<std::int64_t> meant;
                for (const std::int64_t each : {offset(change), offset(end)}) {
                    if (offset(wall - each) == each)
                        meant.push_back(wall - each);
                }
                if (meant.size() > 1 && meant[0] > meant[1])
                    std::swap(meant[0], meant[1]);
                const auto parts = At(wall, VoTimeZone::Utc()).components();
                const auto seconds = [&](VoClockChange rule) {
                    return VoDateTime::FromZone(parts, zone, rule).timePoint().timeSinceEpoch().count() / 1000000000;
                };
                if (meant.size() == 1) {
                    ASSERT_EQ(seconds(VoClockChange::Refuse), meant[0]) << name << ' ' << wall;
                    continue;
                }
                ASSERT_THROW(seconds(VoClockChange::Refuse), VoInvalidParameterException) << name << ' ' << wall;
                if (meant.empty()) {
                    ++skipped;
                    meant = {wall - std::max(offset(change), offset(end)),
                             wall - std::min(offset(change), offset(end))};
                    ASSERT_EQ(seconds(VoClockChange::Compatible), meant[1]) << name << ' ' << wall;
                } else {
                    ++repeated;
                    ASSERT_EQ(seconds(VoClockChange::Compatible), meant[0]) << name << ' ' << wall;
                }
                ASSERT_EQ(seconds(VoClockChange::Earlier), meant[0]) << name << ' ' << wall;
                ASSERT_EQ(seconds(VoClockChange::Later), meant[1]) << name << ' ' << wall;
            }
        }
    }
    EXPECT_GT(skipped, 500);
    EXPECT_GT(repeated, 500);
}

TEST(VoDateTime, RefusalsOfTheClockAndZonesInTextsAreToldByName)
{
    const VoTimeZone berlin("Europe/Berlin");
    const auto parse = [&](const char* text) {
        return VoDateTime::Parse(text, "%F %T", berlin, VoClockChange::Refuse).toString().toStdString();
    };
    EXPECT_THROW_MSG(parse("2024-03-31 02:30:00"), VoInvalidParameterException,
                     "Time does not exist: 2024-03-31T02:30:00 Europe/Berlin");
    EXPECT_THROW_MSG(parse("2024-10-27 02:30:00"), VoInvalidParameterException,
                     "Time is ambiguous: 2024-10-27T02:30:00 Europe/Berlin");
    const std::string text = parse("2038-03-28 05:00:00");
    EXPECT_EQ(text, "2038-03-28T05:00:00.000000000+02:00[Europe/Berlin]");
    EXPECT_EQ(VoDateTime::Deserialize(VoString(text)).zone(), berlin);
#if defined(__unix__) // others have no records of mean times
    EXPECT_EQ(At(-2500000000, berlin).toString().toStdString(),
              "1890-10-11T20:26:48.000000000+00:53:28[Europe/Berlin]");
#endif
    EXPECT_EQ(At(-2500000000, berlin), VoDateTime::Deserialize(At(-2500000000, berlin).toString()));
    for (const char* wrong : {"2024-05-01T12:00:00+02:00[Mars/Phobos]", "2024-05-01T12:00:00+02:00[Europe/Berlin",
                              "2024-05-01T12:00:00+02:00[]", "2024-05-01T12:00:00Z[Europe/Berlin]"})
        EXPECT_THROW(VoDateTime::Deserialize(wrong), VoInvalidConversionException) << wrong;
}

TEST(VoDateTime, TheCalendarCountsByTheClocksOfTheZoneAndDurationsByRealTime)
{
    const VoTimeZone berlin("Europe/Berlin");
    const VoDateTime noon = VoDateTime::From(VoDate(2024, 3, 30), VoTimeOfDay(12), berlin);
    EXPECT_EQ(noon.addDays(1) - noon, VoTimeDuration(VoHours(23)));
    EXPECT_EQ((noon + VoHours(24)).timeOfDay(), VoTimeOfDay(13));
    EXPECT_EQ(noon.addMonths(-1).date(), VoDate(2024, 2, 29));
    EXPECT_EQ(noon.addYears(-1).addMonths(-1, VoShortMonth::NextMonth).date(), VoDate(2023, 3, 2));
    EXPECT_THROW(noon.addYears(300), VoOverflowException);
}

TEST(VoDate, AgreesWithTheFrameworksCalendar)
{
    const QLocale english(QLocale::C);
    for (VoDate date(1, 1, 1); date.year() < 9999; date = date.addDays(date.year() / 200 == 9 ? 1 : 89)) {
        const QDate other = QDate(1, 1, 1).addDays(VoDate(1, 1, 1).daysTo(date));
        ASSERT_EQ(date.toQDate(), other);
        int weekYear = 0;
        ASSERT_EQ(date.week().number, other.weekNumber(&weekYear)) << date;
        ASSERT_EQ(date.week().year, weekYear) << date;
        ASSERT_EQ(date.weekday(), other.dayOfWeek());
        ASSERT_EQ(date.dayOfYear(), other.dayOfYear());
        if (date.day() == 13) {
            const VoString text = date.toString("%A, %e %B %Y (%j, %a %b)");
            const QString expected = english.toString(other, QStringLiteral("dddd, d MMMM yyyy (%1, ddd MMM)"))
                                         .arg(other.dayOfYear(), 3, 10, QLatin1Char('0'));
            ASSERT_EQ(text.toStdString(), expected.toStdString());
            ASSERT_EQ(VoDate::Parse(text, "%A, %e %B %Y (%j, %a %b)"), date);
        }
    }
    EXPECT_EQ(VoDate(2024, 5, 6).weekday(), VoDate::Monday);
    EXPECT_EQ(VoDate(9999, 12, 30).addDays(1), VoDate(9999, 12, 31));
    EXPECT_THROW(VoDate(9999, 12, 31).addDays(1), VoOverflowException);
    EXPECT_THROW(VoDate().addDays(std::numeric_limits<std::int64_t>::min()), VoOverflowException);
    EXPECT_THROW(VoDate().addYears(std::numeric_limits<std::int64_t>::max()), VoOverflowException);
    EXPECT_THROW_MSG(VoDate(2023, 2, 29), VoInvalidParameterException, "Invalid date or time");
}

TEST(VoDate, MonthsAreAddedAsTheFrameworkDoesOrAsTheRuleSays)
{
    std::mt19937 random(3);
    for (int i = 0; i < 5000; ++i) {
        const VoDate date = VoDate(1900, 1, 1).addDays(static_cast<std::int64_t>(random() % 80000));
        const int months = static_cast<int>(random() % 1000) - 500;
        ASSERT_EQ(date.addMonths(months).toQDate(), date.toQDate().addMonths(months)) << date << ' ' << months;
        ASSERT_EQ(date.addYears(months / 10).toQDate(), date.toQDate().addYears(months / 10)) << date;
    }
    const VoDate last(2023, 1, 31);
    EXPECT_EQ(last.addMonths(1, VoShortMonth::NextMonth), VoDate(2023, 3, 3));
    EXPECT_EQ(VoDate(2024, 2, 29).addYears(1, VoShortMonth::NextMonth), VoDate(2025, 3, 1));
    EXPECT_THROW_MSG(last.addMonths(1, VoShortMonth::Refuse), VoInvalidParameterException, "Invalid date or time");
}

TEST(DatePatterns, TextsThatDoNotFitAreRefused)
{
    const std::pair<const char*, const char*> fitting[] = {
        {"%I:%M %p", "12:05 am"}, {"%H%M%S", "000500"}, {"%T.%3f", "00:05:00.000"}, {"%%%H:%M", "%00:05"}};
    for (const auto& [pattern, text] : fitting)
        EXPECT_EQ(VoTimeOfDay::Parse(text, pattern), VoTimeOfDay(0, 5)) << pattern;
    EXPECT_EQ(VoTimeOfDay::Parse("07.250", "%S.%3f"), VoTimeOfDay(0, 0, 7, 250000000));
    const std::pair<const char*, const char*> wrong[] = {
        {"%H:%M", "24:00"}, {"%H:%M", "1:00"},  {"%H:%M", "01:00 "}, {"%H:%M", "00:60"}, {"%I %p", "13 PM"},
        {"%I %p", "01 XM"}, {"%T", "00:00:60"}, {"%3f", "12"},       {"%%", "x"},        {"%H", ""}};
    for (const auto& [pattern, text] : wrong)
        EXPECT_THROW(VoTimeOfDay::Parse(text, pattern), VoInvalidConversionException) << pattern << ' ' << text;
    for (const char* pattern : {"%Q", "%", "%Y", "%3S", "%z", "%0f"})
        EXPECT_THROW_MSG(VoTimeOfDay().toString(pattern), VoInvalidParameterException,
                         VoString("Invalid pattern: ") + pattern);
    for (const char* text : {"Tue 2024-05-01", "Wed 2024-05-32", "Wed 0000-05-01"})
        EXPECT_THROW(VoDate::Parse(text, "%a %F"), VoInvalidConversionException) << text;
    EXPECT_THROW(VoDate::Parse("367 2024", "%j %Y"), VoInvalidConversionException);
    EXPECT_THROW(VoDate::Parse("24", "%y"), VoInvalidParameterException) << "a year without its century";
    EXPECT_EQ(VoDateTime::Parse("10/May/2024:13:55:36 -07:00", "%d/%b/%Y:%T %z").toString().toStdString(),
              "2024-05-10T20:55:36.000000000Z");
}

TEST(VoTimeOfDay, GoesRoundTheClock)
{
    const VoTimeOfDay evening(23, 30);
    EXPECT_EQ(evening + VoHours(1), VoTimeOfDay(0, 30));
    EXPECT_EQ(VoTimeOfDay() - VoNanoseconds(1), VoTimeOfDay(23, 59, 59, 999999999));
    EXPECT_EQ(evening - VoTimeDuration::Max() + VoTimeDuration::Max(), evening);
    EXPECT_EQ(VoTimeOfDay(1) - evening, VoTimeDuration(VoMinutes(-1350)));
    EXPECT_TRUE(evening > VoTimeOfDay(1) && !(evening > evening) && !(evening < evening));
    for (const char* text : {"00:00:00", "12:34:56.500", "12:34:56.000001", "12:34:56.000000001"})
        EXPECT_EQ(VoTimeOfDay::Deserialize(text).toString().toStdString(), text);
    for (const char* text : {"24:00:00", "00:00", "00:00:00.", "00:00:00.0000000000", "0:00:00"})
        EXPECT_THROW(VoTimeOfDay::Deserialize(text), VoInvalidConversionException) << text;
    EXPECT_EQ(VoTimeOfDay::FromQTime(QTime(1, 2, 3, 4)).toQTime(), QTime(1, 2, 3, 4));
}

TEST(VoDateTime, TheFrameworksKindComesBack)
{
    const VoTimePoint instant{VoTimeDuration(VoMilliseconds(1729989000250))};
    for (const VoTimeZone& zone : {VoTimeZone::Utc(), VoTimeZone::Local(), VoTimeZone("Asia/Kathmandu")}) {
        const VoDateTime date(instant, zone);
        const VoDateTime back = VoDateTime::FromQDateTime(date.toQDateTime());
        EXPECT_EQ(back, date);
        EXPECT_EQ(back.zone(), zone);
    }
    EXPECT_THROW(VoDateTime::FromQDateTime(QDateTime()), VoInvalidParameterException);
}

TEST(VoTimeDuration, ComponentsAndIsoTextsComeBackAndTheirLikeAreRead)
{
    std::mt19937_64 random(4);
    std::vector<std::int64_t> counts = {
        0, 1, -1, 3792500000000, std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()};
    for (int i = 0; i < 2000; ++i)
        counts.push_back(static_cast<std::int64_t>(random()) >> (i % 64));
    for (const std::int64_t count : counts) {
        const VoTimeDuration duration = VoNanoseconds(count);
        ASSERT_EQ(VoTimeDuration::Parse(duration.toComponentsString()), duration) << duration.toComponentsString();
        ASSERT_EQ(VoTimeDuration::Parse(duration.toIsoString()), duration) << duration.toIsoString();
    }
    EXPECT_EQ(VoTimeDuration(VoMilliseconds(3792500)).toComponentsString().toStdString(), "1h 03m 12.5s");
    EXPECT_EQ(VoTimeDuration(VoSeconds(3600)).toComponentsString().toStdString(), "1h 00m 00s");
    EXPECT_EQ(VoTimeDuration(VoMilliseconds(-3792500)).toIsoString().toStdString(), "-PT1H3M12.5S");
    const std::pair<const char*, double> rows[] = {
        {"1.5 h", 5400},     {"90s", 90},      {"2 min", 120},     {"1d 1h", 90000}, {"1H30M", 5400}, {"250 ms", 0.25},
        {"P1DT12H", 129600}, {"P2W", 1209600}, {"-1.5 ns", -2e-9}, {"0.1 us", 1e-7}, {"PT0.25M", 15}};
    for (const auto& [text, seconds] : rows)
        EXPECT_EQ(VoTimeDuration::Parse(text), VoTimeDuration::FromSeconds(seconds)) << text;
    std::vector<std::string> wrong =
        vo::test::Words("- 1 s .5s 1.s P PT P1DT P1Y PT1h 1h-3m 300000d 99999999999999999999s +1s");
    for (const char* text : {"", "1 x", "1m 1h", "1s 1s", "1.5h 3m", "1s "})
        wrong.emplace_back(text);
    for (const std::string& text : wrong)
        EXPECT_THROW_MSG(VoTimeDuration::Parse(text), VoInvalidConversionException,
                         "Invalid conversion from " + text + " to VoTimeDuration");
}

TEST(VoTimeDuration, IsMultipliedAndDividedWithinItsLimits)
{
    const VoTimeDuration minute = VoMinutes(1);
    EXPECT_EQ(VoHours(1) + VoMinutes(3) - VoSeconds(1), VoTimeDuration(VoSeconds(3779)));
    EXPECT_EQ(minute * 3 / 2, VoTimeDuration(VoSeconds(90)));
    EXPECT_EQ(1.5 * minute, minute * 3 / 2);
    EXPECT_EQ(minute / 7, VoTimeDuration(VoNanoseconds(8571428571)));
    EXPECT_EQ(VoTimeDuration::Min() / 2 * 2, VoTimeDuration::Min());
    EXPECT_EQ(minute / VoTimeDuration(VoSeconds(40)), 1.5);
    EXPECT_EQ((minute * -1).magnitude(), minute);
    EXPECT_THROW(VoTimeDuration::Min() * -1, VoOverflowException);
    EXPECT_THROW(VoTimeDuration::Min() / -1, VoOverflowException);
    EXPECT_THROW(minute * 1e30, VoOverflowException);
    EXPECT_THROW(minute * std::numeric_limits<double>::quiet_NaN(), VoOverflowException);
    EXPECT_THROW(minute / 0, VoDivideByZeroException);
    EXPECT_THROW(minute / 0.0, VoDivideByZeroException);
    EXPECT_THROW(minute / VoTimeDuration(), VoDivideByZeroException);
}
