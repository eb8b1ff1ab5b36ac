#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Time/detail/CalendarDate.h>
#include <Time/detail/DatePattern.h>
#include <Time/detail/TextScanner.h>

#include <cstdlib>
#include <iterator>

namespace vo::detail {
namespace {

constexpr std::string_view Months[] = {"January", "February", "March",     "April",   "May",      "June",
                                       "July",    "August",   "September", "October", "November", "December"};
constexpr std::string_view Weekdays[] = {"Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday"};
constexpr std::size_t ShortName = 3;

constexpr std::string_view DateLetters = "YmdejaAbBuGVyF";
constexpr std::string_view TimeLetters = "HIMSfpT";
constexpr std::string_view ZoneLetters = "zZ";
// Read back neither: the year of the week, the week, a year without its century and the zone's name.
constexpr std::string_view OnlyShown = "GVyZ";

[[noreturn]] void Refuse(std::string_view pattern)
{
    throw VoInvalidParameterException("Invalid pattern: " + VoString(std::string(pattern)));
}

// One piece of a pattern: a character that stands for itself, or a letter with the digits of a fraction.
struct Piece
{
    char letter = 0; ///< 0 for a character that stands for itself.
    char plain = 0;
    int digits = 9; ///< Of a fraction.
};

bool IsOneOf(char letter, std::string_view letters)
{
    return letters.find(letter) != std::string_view::npos;
}

bool HasMeaning(char letter, DateParts parts)
{
    return (parts != DateParts::Time && IsOneOf(letter, DateLetters)) ||
           (parts != DateParts::Date && IsOneOf(letter, TimeLetters)) ||
           (parts == DateParts::All && IsOneOf(letter, ZoneLetters));
}

// Calls back for each piece; %F and %T are taken apart into theirs.
template <typename Callback>
void ForEachPiece(std::string_view pattern, DateParts parts, const Callback& callback)
{
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (pattern[i] != '%') {
            callback(Piece{0, pattern[i]});
            continue;
        }
        Piece piece;
        if (++i < pattern.size() && pattern[i] >= '1' && pattern[i] <= '9') {
            piece.digits = pattern[i] - '0';
            if (++i >= pattern.size() || pattern[i] != 'f')
                Refuse(pattern);
        }
        if (i < pattern.size() && pattern[i] == '%') {
            callback(Piece{0, '%'});
            continue;
        }
        if (i >= pattern.size() || !HasMeaning(pattern[i], parts))
            Refuse(pattern);
        piece.letter = pattern[i];
        if (piece.letter == 'F')
            ForEachPiece("%Y-%m-%d", parts, callback);
        else if (piece.letter == 'T')
            ForEachPiece("%H:%M:%S", parts, callback);
        else
            callback(piece);
    }
}

std::int64_t DayOfFields(const DateFields& fields)
{
    return DayOf({fields.year, fields.month, fields.day});
}

// The year that the week belongs to, and its number in it: that of the week's Thursday.
CalendarDate ThursdayOfWeek(const DateFields& fields)
{
    const std::int64_t day = DayOfFields(fields);
    return DateOf(day - WeekdayOf(day) + 4);
}

std::int64_t DayOfYear(const CalendarDate& date)
{
    return DayOf(date) - DayOf({date.year, 1, 1}) + 1;
}

std::string_view WeekdayName(const DateFields& fields)
{
    return Weekdays[WeekdayOf(DayOfFields(fields)) - 1];
}

std::string DateText(char letter, const DateFields& fields)
{
    switch (letter) {
    case 'Y':
        return Padded(fields.year, 4);
    case 'y':
        return Padded(fields.year % 100, 2);
    case 'm':
        return Padded(fields.month, 2);
    case 'd':
        return Padded(fields.day, 2);
    case 'e':
        return std::to_string(fields.day);
    case 'j':
        return Padded(DayOfYear({fields.year, fields.month, fields.day}), 3);
    case 'a':
        return std::string(WeekdayName(fields).substr(0, ShortName));
    case 'A':
        return std::string(WeekdayName(fields));
    case 'b':
        return std::string(Months[fields.month - 1].substr(0, ShortName));
    case 'B':
        return std::string(Months[fields.month - 1]);
    case 'u':
        return std::to_string(WeekdayOf(DayOfFields(fields)));
    case 'G':
        return Padded(ThursdayOfWeek(fields).year, 4);
    default: // 'V'
        return Padded((DayOfYear(ThursdayOfWeek(fields)) - 1) / 7 + 1, 2);
    }
}

std::string TimeText(const Piece& piece, const DateFields& fields)
{
    switch (piece.letter) {
    case 'H':
        return Padded(fields.hour, 2);
    case 'I':
        return Padded((fields.hour + 11) % 12 + 1, 2);
    case 'M':
        return Padded(fields.minute, 2);
    case 'S':
        return Padded(fields.second, 2);
    case 'f':
        return Padded(fields.nanosecond, 9).substr(0, static_cast<std::size_t>(piece.digits));
    case 'p':
        return fields.hour < 12 ? "AM" : "PM";
    case 'z':
        return OffsetText(fields.offsetSeconds);
    default: // 'Z'
        return fields.zone;
    }
}

// Reads by a pattern. What depends on two pieces, in whatever order they stand, is put together at the end.
class Reader
{
public:
    Reader(std::string_view text, DateFields& fields)
        : m_scanner(text)
        , m_fields(fields)
    {
    }

    void read(const Piece& piece)
    {
        if (piece.letter == 0)
            m_scanner.expect(piece.plain);
        else if (IsOneOf(piece.letter, DateLetters))
            readDate(piece.letter);
        else
            readTime(piece);
    }

    bool finish()
    {
        if (!m_scanner.isComplete())
            return false;
        if (m_halfDay >= 0)
            m_fields.hour = m_fields.hour % 12 + 12 * m_halfDay;
        if (m_dayOfYear > 0 && !placeDayOfYear())
            return false;
        return isWithin() && (m_weekday == 0 || m_weekday == WeekdayOf(DayOfFields(m_fields)));
    }

private:
    void readDate(char letter)
    {
        switch (letter) {
        case 'Y':
            m_fields.year = m_scanner.number(4);
            break;
        case 'm':
            m_fields.month = m_scanner.number(2);
            break;
        case 'd':
            m_fields.day = m_scanner.number(2);
            break;
        case 'e':
            m_fields.day = m_scanner.number(1, 2);
            break;
        case 'j':
            m_dayOfYear = m_scanner.number(3);
            if (m_dayOfYear == 0)
                m_scanner.fail();
            break;
        case 'b':
        case 'B':
            m_fields.month = name(Months, letter == 'b');
            break;
        case 'u':
            m_weekday = m_scanner.number(1);
            if (m_weekday < 1 || m_weekday > 7)
                m_scanner.fail();
            break;
        default: // 'a' and 'A'
            m_weekday = name(Weekdays, letter == 'a');
        }
    }

    void readTime(const Piece& piece)
    {
        switch (piece.letter) {
        case 'H':
            m_fields.hour = m_scanner.number(2);
            break;
        case 'I':
            m_fields.hour = m_scanner.number(2);
            if (m_fields.hour < 1 || m_fields.hour > 12)
                m_scanner.fail();
            break;
        case 'M':
            m_fields.minute = m_scanner.number(2);
            break;
        case 'S':
            m_fields.second = m_scanner.number(2);
            break;
        case 'f':
            readFraction(static_cast<std::size_t>(piece.digits));
            break;
        case 'p':
            m_halfDay = m_scanner.acceptWord("PM") ? 1 : 0;
            if (m_halfDay == 0 && !m_scanner.acceptWord("AM"))
                m_scanner.fail();
            break;
        default: // 'z'
            m_fields.offsetSeconds = ScanOffset(m_scanner);
            m_fields.hasOffset = true;
        }
    }

    void readFraction(std::size_t digits)
    {
        int value = m_scanner.number(digits);
        for (; digits < 9; ++digits)
            value *= 10;
        m_fields.nanosecond = value;
    }

    // The number of a name of a table, from 1.
    template <std::size_t size>
    int name(const std::string_view (&names)[size], bool isShort)
    {
        for (std::size_t i = 0; i < size; ++i) {
            if (m_scanner.acceptWord(isShort ? names[i].substr(0, ShortName) : names[i]))
                return static_cast<int>(i) + 1;
        }
        m_scanner.fail();
        return 1;
    }

    bool placeDayOfYear()
    {
        const CalendarDate date = DateOf(DayOf({m_fields.year, 1, 1}) + m_dayOfYear - 1);
        m_fields.month = static_cast<int>(date.month);
        m_fields.day = static_cast<int>(date.day);
        return date.year == m_fields.year;
    }

    bool isWithin() const
    {
        return m_fields.month >= 1 && m_fields.month <= 12 && m_fields.day >= 1 && m_fields.day <= 31 &&
               m_fields.hour <= 23 && m_fields.minute <= 59 && m_fields.second <= 59;
    }

    TextScanner m_scanner;
    DateFields& m_fields;
    int m_halfDay = -1; // 0 before noon, 1 after, -1 when not named
    int m_dayOfYear = 0;
    int m_weekday = 0; // must agree with the date
};

} // namespace

std::string FormatDate(std::string_view pattern, DateParts parts, const DateFields& fields)
{
    std::string text;
    ForEachPiece(pattern, parts, [&](const Piece& piece) {
        if (piece.letter == 0)
            text += piece.plain;
        else if (IsOneOf(piece.letter, DateLetters))
            text += DateText(piece.letter, fields);
        else
            text += TimeText(piece, fields);
    });
    return text;
}

bool ParseDate(std::string_view pattern, DateParts parts, std::string_view text, DateFields& fields)
{
    Reader reader(text, fields);
    ForEachPiece(pattern, parts, [&](const Piece& piece) {
        if (piece.letter != 0 && IsOneOf(piece.letter, OnlyShown))
            Refuse(pattern);
        reader.read(piece);
    });
    return reader.finish();
}

std::string OffsetText(int seconds)
{
    const int size = std::abs(seconds);
    const std::string text = (seconds < 0 ? '-' : '+') + Padded(size / 3600, 2) + ':' + Padded(size / 60 % 60, 2);
    return size % 60 == 0 ? text : text + ':' + Padded(size % 60, 2);
}

int ScanOffset(TextScanner& scanner)
{
    const bool isBehind = scanner.accept('-');
    if (!isBehind)
        scanner.expect('+');
    const int hours = scanner.number(2);
    scanner.expect(':');
    const int minutes = scanner.number(2);
    const int seconds = scanner.accept(':') ? scanner.number(2) : 0;
    if (hours > 23 || minutes > 59 || seconds > 59)
        scanner.fail();
    return (isBehind ? -1 : 1) * (hours * 3600 + minutes * 60 + seconds);
}

} // namespace vo::detail
