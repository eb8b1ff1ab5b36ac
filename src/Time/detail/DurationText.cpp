#include <Core/VoMathsException.h>
#include <Time/detail/CalendarDate.h>
#include <Time/detail/DurationText.h>
#include <Time/detail/TextScanner.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <limits>
#include <utility>

namespace vo::detail {
namespace {

constexpr std::int64_t SecondUnit = 1000000000;
constexpr std::int64_t MinuteUnit = 60 * SecondUnit;
constexpr std::int64_t HourUnit = 60 * MinuteUnit;
constexpr std::int64_t DayUnit = 24 * HourUnit;

using Units = std::pair<std::string_view, std::int64_t>;

// Of two that begin alike the longer one stands first.
constexpr Units NamedUnits[] = {{"d", DayUnit},    {"h", HourUnit},   {"min", MinuteUnit}, {"ms", 1000000},
                                {"m", MinuteUnit}, {"s", SecondUnit}, {"us", 1000},        {"ns", 1}};
constexpr Units IsoDateUnits[] = {{"W", 7 * DayUnit}, {"D", DayUnit}};
constexpr Units IsoTimeUnits[] = {{"H", HourUnit}, {"M", MinuteUnit}, {"S", SecondUnit}};

// ".5" of nanoseconds, without zeros at the end.
std::string Fraction(int nanoseconds)
{
    if (nanoseconds == 0)
        return {};
    std::string digits = Padded(nanoseconds, 9);
    while (digits.back() == '0')
        digits.pop_back();
    return '.' + digits;
}

// Reads components one after the other, each of a smaller unit than the one before.
class Reader
{
public:
    explicit Reader(std::string_view text)
        : m_scanner(text)
        , m_isNegative(m_scanner.accept('-'))
    {
    }

    std::optional<VoTimeDuration> read()
    {
        if (m_scanner.accept('P'))
            readIso();
        else
            readNamed();
        if (!m_scanner.isComplete() || m_smallest == std::numeric_limits<std::int64_t>::max())
            return std::nullopt;
        return m_sum;
    }

private:
    bool goesOn() const { return m_scanner.isValid() && !m_scanner.rest().empty(); }

    void readNamed()
    {
        while (goesOn()) {
            readNumber();
            m_scanner.accept(' ');
            readUnit(NamedUnits, [this](std::string_view name) { return m_scanner.acceptWord(name); });
            // A blank is for the next component.
            if (m_scanner.accept(' ') && m_scanner.rest().empty())
                m_scanner.fail();
        }
    }

    void readIso()
    {
        const auto accepts = [this](std::string_view letter) { return m_scanner.accept(letter.front()); };
        while (goesOn() && !m_scanner.accept('T')) {
            readNumber();
            readUnit(IsoDateUnits, accepts);
            if (m_scanner.rest().empty())
                return;
        }
        do { // behind the T something must come
            readNumber();
            readUnit(IsoTimeUnits, accepts);
        } while (goesOn());
    }

    void readNumber()
    {
        const std::string_view text = m_scanner.rest();
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), m_whole);
        if (!m_scanner.isDigit() || error != std::errc() || m_hasFraction)
            return m_scanner.fail();
        m_scanner.skip(static_cast<std::size_t>(end - text.data()));
        m_hasFraction = m_scanner.accept('.');
        m_fraction = m_scanner.rest();
        while (m_scanner.isDigit())
            m_scanner.skip(1);
        m_fraction.remove_suffix(m_scanner.rest().size());
        if (m_hasFraction == m_fraction.empty())
            m_scanner.fail();
    }

    template <std::size_t size, typename Accepts>
    void readUnit(const Units (&units)[size], const Accepts& accepts)
    {
        if (!m_scanner.isValid())
            return;
        const auto* unit =
            std::find_if(std::begin(units), std::end(units), [&](const Units& each) { return accepts(each.first); });
        if (unit == std::end(units) || unit->second >= m_smallest)
            return m_scanner.fail();
        m_smallest = unit->second;
        add(VoTimeDuration(VoNanoseconds(m_smallest)) * m_whole);
        add(VoNanoseconds(fractionOf(m_smallest)));
    }

    // Subtracted from below zero, the smallest duration can be reached.
    void add(VoTimeDuration part)
    {
        if (m_isNegative)
            m_sum -= part;
        else
            m_sum += part;
    }

    // From the last digit to the first, in thousandths of a nanosecond.
    std::int64_t fractionOf(std::int64_t unit) const
    {
        std::int64_t value = 0;
        for (std::size_t i = m_fraction.size(); i > 0; --i)
            value = (value + (m_fraction[i - 1] - '0') * unit * 1000) / 10;
        return (value + 500) / 1000;
    }

    TextScanner m_scanner;
    bool m_isNegative;
    bool m_hasFraction = false; // of the last number read; only the last component may have one
    std::int64_t m_whole = 0;
    std::string_view m_fraction;
    std::int64_t m_smallest = std::numeric_limits<std::int64_t>::max(); // unit of the last component
    VoTimeDuration m_sum;
};

} // namespace

std::string ComponentsText(const VoTimeDuration::Parts& parts)
{
    std::string text = parts.isNegative ? "-" : "";
    std::size_t width = 1;
    if (parts.hours > 0) {
        text += std::to_string(parts.hours) + "h ";
        width = 2;
    }
    if (parts.hours > 0 || parts.minutes > 0) {
        text += Padded(parts.minutes, width) + "m ";
        width = 2;
    }
    return text + Padded(parts.seconds, width) + Fraction(parts.nanoseconds) + 's';
}

std::string IsoText(const VoTimeDuration::Parts& parts)
{
    std::string text = parts.isNegative ? "-PT" : "PT";
    if (parts.hours > 0)
        text += std::to_string(parts.hours) + 'H';
    if (parts.minutes > 0)
        text += std::to_string(parts.minutes) + 'M';
    if (parts.seconds > 0 || parts.nanoseconds > 0 || text.back() == 'T')
        text += std::to_string(parts.seconds) + Fraction(parts.nanoseconds) + 'S';
    return text;
}

std::optional<VoTimeDuration> ReadDuration(std::string_view text)
{
    try {
        return Reader(text).read();
    } catch (const VoOverflowException&) {
        return std::nullopt;
    }
}

} // namespace vo::detail
