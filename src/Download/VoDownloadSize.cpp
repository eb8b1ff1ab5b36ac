#include <Download/VoDownloadSize.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Download/detail/DownloadText.h>

#include <charconv>
#include <limits>
#include <ostream>

namespace {

constexpr std::int64_t UnknownBytes = -1;
constexpr std::int64_t Largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t Smallest = std::numeric_limits<std::int64_t>::min();

constexpr vo::detail::QuantityUnit Units[] = {{1000, 1, "B"},
                                              {1000000, 1e3, "KB"},
                                              {1000000000, 1e6, "MB"},
                                              {std::numeric_limits<double>::infinity(), 1e9, "GB"}};

std::int64_t SaturatedSum(std::int64_t a, std::int64_t b)
{
    if (b > 0 && a > Largest - b)
        return Largest;
    if (b < 0 && a < Smallest - b)
        return Smallest;
    return a + b;
}

std::int64_t SaturatedDifference(std::int64_t a, std::int64_t b)
{
    if (b < 0 && a > Largest + b)
        return Largest;
    if (b > 0 && a < Smallest + b)
        return Smallest;
    return a - b;
}

} // namespace

struct VoDownloadSize::Private
{
    std::int64_t bytes;
};

VoDownloadSize::VoDownloadSize() noexcept = default;

// No bytes need no memory.
VoDownloadSize::VoDownloadSize(Count count)
    : m_private(count.value == 0 ? nullptr : new Private{count.value})
{
}

VoDownloadSize::VoDownloadSize(const VoDownloadSize& other)
    : VoDownloadSize(Count{other.bytes()})
{
}

VoDownloadSize::VoDownloadSize(VoDownloadSize&& other) noexcept = default;

VoDownloadSize& VoDownloadSize::operator=(const VoDownloadSize& other)
{
    if (m_private && other.m_private)
        m_private->bytes = other.m_private->bytes;
    else if (this != &other)
        *this = VoDownloadSize(other);
    return *this;
}

VoDownloadSize& VoDownloadSize::operator=(VoDownloadSize&& other) noexcept = default;

VoDownloadSize::~VoDownloadSize() = default;

VoDownloadSize VoDownloadSize::Unknown()
{
    return VoDownloadSize(Count{UnknownBytes});
}

bool VoDownloadSize::isUnknown() const noexcept
{
    return bytes() == UnknownBytes;
}

std::int64_t VoDownloadSize::bytes() const noexcept
{
    return m_private ? m_private->bytes : 0;
}

VoDownloadSize::operator std::int64_t() const noexcept
{
    return bytes();
}

VoDownloadSize::operator VoString() const
{
    return toString();
}

VoDownloadSize& VoDownloadSize::operator+=(const VoDownloadSize& other)
{
    return *this = Sum(*this, other);
}

VoDownloadSize VoDownloadSize::Sum(const VoDownloadSize& a, const VoDownloadSize& b)
{
    return a.isUnknown() || b.isUnknown() ? VoDownloadSize::Unknown()
                                          : VoDownloadSize(SaturatedSum(a.bytes(), b.bytes()));
}

VoDownloadSize VoDownloadSize::Difference(const VoDownloadSize& a, const VoDownloadSize& b)
{
    return a.isUnknown() || b.isUnknown() ? VoDownloadSize::Unknown()
                                          : VoDownloadSize(SaturatedDifference(a.bytes(), b.bytes()));
}

VoString VoDownloadSize::toString() const
{
    return vo::detail::FormatQuantity(static_cast<double>(bytes()), Units);
}

VoString VoDownloadSize::Serialize(const VoDownloadSize& size)
{
    return VoString(static_cast<long long>(size.bytes()));
}

VoDownloadSize VoDownloadSize::Deserialize(const VoString& text)
{
    const std::string& digits = text.toStdString();
    std::int64_t bytes = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), bytes);
    if (error != std::errc() || end != digits.data() + digits.size())
        throw VoInvalidConversionException(text, "VoDownloadSize");
    return VoDownloadSize(bytes);
}

VoString operator+(const char* text, const VoDownloadSize& size)
{
    return text + size.toString();
}

std::ostream& operator<<(std::ostream& stream, const VoDownloadSize& size)
{
    return stream << size.toString();
}
