#include <Download/VoTransferRate.h>

#include <Core/VoString.h>
#include <Download/VoDownloadSize.h>
#include <Download/detail/DownloadText.h>
#include <Time/VoTimeDuration.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>

namespace {

// The units carry a blank of their own.
constexpr vo::detail::QuantityUnit Units[] = {
    {1000, 1, " bytes/s"}, {1000000, 1e3, " kB/s"}, {std::numeric_limits<double>::infinity(), 1e6, " MB/s"}};

double Finite(double value)
{
    constexpr double largest = std::numeric_limits<double>::max();
    return std::isnan(value) ? 0 : std::clamp(value, -largest, largest);
}

double Rate(const VoDownloadSize& size, const VoTimeDuration& duration)
{
    if (size.isUnknown() || duration.count() <= 0)
        return 0;
    return static_cast<double>(size.bytes()) / duration.seconds();
}

} // namespace

VoTransferRate::VoTransferRate(double bytesPerSecond) noexcept
    : m_bytesPerSecond(Finite(bytesPerSecond))
{
}

VoTransferRate::VoTransferRate(const VoDownloadSize& size, const VoTimeDuration& duration) noexcept
    : VoTransferRate(Rate(size, duration))
{
}

double VoTransferRate::bytesPerSecond() const noexcept
{
    return m_bytesPerSecond;
}

double VoTransferRate::kilobytesPerSecond() const noexcept
{
    return m_bytesPerSecond / 1e3;
}

double VoTransferRate::megabytesPerSecond() const noexcept
{
    return m_bytesPerSecond / 1e6;
}

double VoTransferRate::gigabytesPerSecond() const noexcept
{
    return m_bytesPerSecond / 1e9;
}

double VoTransferRate::terabytesPerSecond() const noexcept
{
    return m_bytesPerSecond / 1e12;
}

VoTransferRate& VoTransferRate::operator+=(const VoTransferRate& other) noexcept
{
    return *this = *this + other;
}

VoTransferRate& VoTransferRate::operator*=(double factor) noexcept
{
    return *this = *this * factor;
}

VoTransferRate VoTransferRate::operator+(const VoTransferRate& other) const noexcept
{
    return VoTransferRate(m_bytesPerSecond + other.m_bytesPerSecond);
}

VoTransferRate VoTransferRate::operator*(double factor) const noexcept
{
    return VoTransferRate(m_bytesPerSecond * factor);
}

bool VoTransferRate::operator==(std::nullptr_t) const noexcept
{
    return !(*this != nullptr);
}

bool VoTransferRate::operator!=(std::nullptr_t) const noexcept
{
    return m_bytesPerSecond < 0 || m_bytesPerSecond > 0;
}

bool VoTransferRate::operator==(const VoTransferRate& other) const noexcept
{
    return !(*this != other);
}

bool VoTransferRate::operator!=(const VoTransferRate& other) const noexcept
{
    return m_bytesPerSecond < other.m_bytesPerSecond || other.m_bytesPerSecond < m_bytesPerSecond;
}

bool VoTransferRate::operator<(const VoTransferRate& other) const noexcept
{
    return m_bytesPerSecond < other.m_bytesPerSecond;
}

VoString VoTransferRate::toString() const
{
    return vo::detail::FormatQuantity(m_bytesPerSecond, Units);
}

VoTimeDuration operator/(const VoDownloadSize& size, const VoTransferRate& rate) noexcept
{
    if (size.isUnknown() || rate.bytesPerSecond() <= 0)
        return VoTimeDuration::Max();
    return VoTimeDuration::FromSeconds(static_cast<double>(size.bytes()) / rate.bytesPerSecond());
}

std::ostream& operator<<(std::ostream& stream, const VoTransferRate& rate)
{
    return stream << rate.toString();
}
