#include <Time/VoTimePoint.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Time/detail/CalendarDate.h>

#include <cstdint>
#include <ostream>
#include <string>

using namespace vo::detail;

namespace {

constexpr std::int64_t NanosecondsPerMillisecond = 1000000;
constexpr std::int64_t MillisecondsPerDay = 86400000;

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
    const CalendarDate date = DateOf(day);
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
