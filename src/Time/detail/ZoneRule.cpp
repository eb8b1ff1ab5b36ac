#include <Time/detail/CalendarDate.h>
#include <Time/detail/TextScanner.h>
#include <Time/detail/ZoneRule.h>

namespace vo::detail {
namespace {

// "<+0330>" or at least three letters.
void SkipName(TextScanner& scanner)
{
    const std::string_view text = scanner.rest();
    const bool isQuoted = scanner.accept('<');
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    std::size_t size = 0;
    while (size < text.size() && (isQuoted ? text[size] != '>' : isLetter(text[size])))
        ++size;
    if (size < 3)
        return scanner.fail();
    scanner.skip(isQuoted ? size - 1 : size);
    if (isQuoted)
        scanner.expect('>');
}

// "[+-]hh[:mm[:ss]]" in seconds.
int ScanTime(TextScanner& scanner)
{
    const bool isNegative = scanner.accept('-');
    if (!isNegative)
        scanner.accept('+');
    int seconds = scanner.number(1, 3) * 3600;
    if (scanner.accept(':'))
        seconds += scanner.number(2) * 60;
    if (scanner.accept(':'))
        seconds += scanner.number(2);
    return isNegative ? -seconds : seconds;
}

} // namespace

ZoneRuleDate::ZoneRuleDate(TextScanner& scanner)
{
    const auto number = [&](std::size_t digits, int least, int most) {
        const int value = scanner.number(1, digits);
        if (value < least || value > most)
            scanner.fail();
        return value;
    };
    if (scanner.accept('M')) {
        m_kind = Kind::WeekdayOfMonth;
        m_month = number(2, 1, 12);
        scanner.expect('.');
        m_week = number(1, 1, 5);
        scanner.expect('.');
        m_day = number(1, 0, 6);
    } else if (scanner.accept('J')) {
        m_kind = Kind::DayWithoutLeapDay;
        m_day = number(3, 1, 365);
    } else {
        m_day = number(3, 0, 365);
    }
    if (scanner.accept('/'))
        m_time = ScanTime(scanner);
}

std::int64_t ZoneRuleDate::day(std::int64_t year) const
{
    const std::int64_t begin = DayOf({year, 1, 1});
    if (m_kind == Kind::DayOfYear)
        return begin + m_day;
    if (m_kind == Kind::DayWithoutLeapDay)
        return begin + m_day - 1 + (m_day >= 60 && DaysInMonth(year, 2) == 29 ? 1 : 0);
    const std::int64_t first = DayOf({year, m_month, 1});
    const int untilFirst = (m_day - WeekdayOf(first) + 7) % 7;
    const int inMonth = untilFirst + 7 * (m_week - 1);
    return first + (inMonth < DaysInMonth(year, m_month) ? inMonth : inMonth - 7);
}

std::int64_t ZoneRuleDate::wallClock(std::int64_t year) const
{
    return day(year) * SecondsPerDay + m_time;
}

std::optional<ZoneRule> ZoneRule::Read(std::string_view text)
{
    TextScanner scanner(text);
    ZoneRule rule;
    SkipName(scanner);
    rule.m_standard = -ScanTime(scanner); // written as what is added to local time
    rule.m_hasSummer = scanner.isValid() && !scanner.rest().empty();
    if (rule.m_hasSummer) {
        SkipName(scanner);
        rule.m_summer = rule.m_standard + 3600;
        if (!scanner.accept(',')) {
            rule.m_summer = -ScanTime(scanner);
            scanner.expect(',');
        }
        rule.m_begin = ZoneRuleDate(scanner);
        scanner.expect(',');
        rule.m_end = ZoneRuleDate(scanner);
    }
    return scanner.isComplete() ? std::optional(rule) : std::nullopt;
}

int ZoneRule::offset(std::int64_t instant) const
{
    if (!m_hasSummer)
        return m_standard;
    const std::int64_t year = DateOf(FloorDivide(instant + m_standard, SecondsPerDay)).year;
    const std::int64_t begin = m_begin.wallClock(year) - m_standard;
    const std::int64_t end = m_end.wallClock(year) - m_summer;
    // In the south a year begins and ends in summer.
    const bool isSummer = begin < end ? begin <= instant && instant < end : instant < end || begin <= instant;
    return isSummer ? m_summer : m_standard;
}

} // namespace vo::detail
