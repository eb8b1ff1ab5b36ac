#include <Time/VoTimePoint.h>

#include <Core/VoException.h>
#include <Core/VoString.h>

#include <cstdint>
#include <ostream>
#include <string>

namespace {

constexpr std::int64_t NanosecondsPerMillisecond = 1000000;
constexpr std::int64_t MillisecondsPerDay = 86400000;

struct Date
{
    std::int64_t year;
    std::int64_t month;
    std::int64_t day;
};

// Rounded down also for what is before 1970.
std::int64_t FloorDivide(std::int64_t dividend, std::int64_t divisor)
{
    return dividend / divisor - (dividend % divisor < 0 ? 1 : 0);
}

// The Gregorian date of a day counted from 1970-01-01. Counts in eras of 400 years that begin on a first of March, so
// that the leap day is the last of its year.
Date DateOf(std::int64_t day)
{
    constexpr std::int64_t daysPerEra = 146097;
    const std::int64_t sinceMarch0000 = day + 719468;
    const std::int64_t era = FloorDivide(sinceMarch0000, daysPerEra);
    const std::int64_t dayOfEra = sinceMarch0000 - era * daysPerEra;
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    const std::int64_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    return {era * 400 + yearOfEra + (month <= 2 ? 1 : 0), month, dayOfYear - (153 * monthFromMarch + 2) / 5 + 1};
}

std::string Padded(std::int64_t number, std::size_t width)
{
    std::string digits = std::to_string(number);
    return digits.size() < width ? std::string(width - digits.size(), '0') + digits : digits;
}

} // namespace

VoTimePoint VoTimePoint::Now() noexcept
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return VoTimePoint(VoTimeDuration(std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch)));
}

VoString VoTimePoint::toString() const
{
    const std::int64_t milliseconds = FloorDivide(m_sinceEpoch.count(), NanosecondsPerMillisecond);
    const std::int64_t day = FloorDivide(milliseconds, MillisecondsPerDay);
    const std::int64_t ofDay = milliseconds - day * MillisecondsPerDay;
    const Date date = DateOf(day);
    return VoString(Padded(date.year, 4) + '-' + Padded(date.month, 2) + '-' + Padded(date.day, 2) + 'T' +
                    Padded(ofDay / 3600000, 2) + ':' + Padded(ofDay / 60000 % 60, 2) + ':' +
                    Padded(ofDay / 1000 % 60, 2) + '.' + Padded(ofDay % 1000, 3) + 'Z');
}

VoString VoTimePoint::Serialize(VoTimePoint point)
{
    return VoTimeDuration::Serialize(point.m_sinceEpoch);
}

VoTimePoint VoTimePoint::Deserialize(const VoString& text)
{
    try {
        return VoTimePoint(VoTimeDuration::Deserialize(text));
    } catch (const VoInvalidConversionException&) {
        throw VoInvalidConversionException(text, "VoTimePoint");
    }
}

std::ostream& operator<<(std::ostream& stream, VoTimePoint point)
{
    return stream << point.toString();
}
