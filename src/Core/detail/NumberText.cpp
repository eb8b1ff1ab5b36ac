#include <Core/detail/NumberText.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace vo::detail {
namespace {

// The largest double has 309 digits before the point.
constexpr std::size_t LongestNumber = 384;

template <typename... Arguments>
std::string ToText(Arguments... arguments)
{
    char buffer[LongestNumber];
    const std::to_chars_result result = std::to_chars(buffer, buffer + LongestNumber, arguments...);
    return std::string(buffer, result.ptr);
}

// As C's isspace in the "C" locale.
bool IsSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsHexDigit(char c)
{
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Takes white space and one sign off the front; whether the sign is a minus.
bool TakeSpaceAndSign(std::string_view& text)
{
    while (!text.empty() && IsSpace(text.front()))
        text.remove_prefix(1);
    if (text.empty() || (text.front() != '-' && text.front() != '+'))
        return false;
    const bool isNegative = text.front() == '-';
    text.remove_prefix(1);
    return isNegative;
}

struct Magnitude
{
    unsigned long long value = 0;
    bool fits = true;
};

Magnitude ParseDigits(std::string_view text)
{
    Magnitude result;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), result.value);
    result.fits = parsed.ec != std::errc::result_out_of_range;
    return result;
}

bool HasHexPrefix(std::string_view text)
{
    if (text.size() < 3 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X'))
        return false;
    return IsHexDigit(text[2]) || (text.size() > 3 && text[2] == '.' && IsHexDigit(text[3]));
}

// Some standard libraries read "1p+-3" as 2^-3; in C the number ends before the "p".
std::string_view WithoutBadExponent(std::string_view hexNumber)
{
    const std::size_t mark = hexNumber.find_first_of("pP");
    const bool isBad = mark != std::string_view::npos && hexNumber.substr(mark + 1, 2) == "+-";
    return isBad ? hexNumber.substr(0, mark) : hexNumber;
}

// The sign of the exponent tells a number that is too large from one that is too small, once the exponent of the first
// digit that is not zero is added to it.
bool IsTooLarge(std::string_view number, std::chars_format format)
{
    const bool isHex = format == std::chars_format::hex;
    const std::string_view exponentMarks = isHex ? "pP" : "eE";
    const std::size_t mark = number.find_first_of(exponentMarks);
    const std::string_view mantissa = number.substr(0, mark);
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t digit = mantissa.find_first_not_of("0.");
    const long long places = static_cast<long long>(point) - static_cast<long long>(digit);

    long long exponent = 0;
    if (mark != std::string_view::npos) {
        std::string_view text = number.substr(mark + 1);
        const bool isNegative = TakeSpaceAndSign(text);
        const Magnitude magnitude = ParseDigits(text);
        const unsigned long long limit = std::numeric_limits<long long>::max() / 2;
        exponent = static_cast<long long>(magnitude.fits ? std::min(magnitude.value, limit) : limit);
        exponent = isNegative ? -exponent : exponent;
    }
    return exponent + places * (isHex ? 4 : 1) > 0;
}

} // namespace

std::string IntegerText(long long value)
{
    return ToText(value);
}

std::string UnsignedText(unsigned long long value)
{
    return ToText(value);
}

std::string FixedText(double value)
{
    return ToText(value, std::chars_format::fixed, 6);
}

std::string GeneralText(double value, int precision)
{
    return ToText(value, std::chars_format::general, std::clamp(precision, 0, 32));
}

std::string ShortestText(double value)
{
    return ToText(value);
}

ParsedDouble ParseDouble(std::string_view text)
{
    std::string_view number = text;
    const bool isNegative = TakeSpaceAndSign(number);
    if (number.empty() || number.front() == '-')
        return {};
    const bool isHex = HasHexPrefix(number);
    if (isHex)
        number = WithoutBadExponent(number.substr(2));
    const std::chars_format format = isHex ? std::chars_format::hex : std::chars_format::general;

    double value = 0;
    const auto parsed = std::from_chars(number.data(), number.data() + number.size(), value, format);
    if (parsed.ec == std::errc::invalid_argument)
        return {};
    if (parsed.ec == std::errc::result_out_of_range) {
        const std::string_view read(number.data(), static_cast<std::size_t>(parsed.ptr - number.data()));
        value = IsTooLarge(read, format) ? std::numeric_limits<double>::infinity() : 0.0;
    }
    return {isNegative ? -value : value, static_cast<std::size_t>(parsed.ptr - text.data())};
}

int ParseInt(std::string_view text)
{
    const bool isNegative = TakeSpaceAndSign(text);
    const Magnitude magnitude = ParseDigits(text);
    constexpr unsigned long long largest = std::numeric_limits<long long>::max();
    const unsigned long long limit = isNegative ? largest + 1 : largest;
    const unsigned long long clamped = magnitude.fits ? std::min(magnitude.value, limit) : limit;
    return static_cast<int>(static_cast<unsigned>(isNegative ? 0 - clamped : clamped));
}

std::size_t ParseSize(std::string_view text)
{
    const bool isNegative = TakeSpaceAndSign(text);
    const Magnitude magnitude = ParseDigits(text);
    constexpr std::size_t largest = std::numeric_limits<std::size_t>::max();
    if (!magnitude.fits || magnitude.value > largest)
        return largest;
    const auto value = static_cast<std::size_t>(magnitude.value);
    return isNegative ? 0 - value : value;
}

std::optional<long long> ParseInteger(std::string_view text)
{
    long long value = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, value);
    if (parsed.ec != std::errc() || parsed.ptr != end)
        return std::nullopt;
    return value;
}

} // namespace vo::detail
