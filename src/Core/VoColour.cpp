#include <Core/VoColour.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/detail/ColourNames.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <ostream>
#include <string_view>

namespace {

// Of a part between 0 and 1.
std::uint8_t Byte(double part)
{
    return static_cast<std::uint8_t>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
}

// Of a byte of sRGB to an amount of light, and back.
double Light(std::uint8_t part)
{
    const double c = part / 255.0;
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

std::uint8_t FromLight(double light)
{
    return Byte(light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055);
}

void RequireFinite(double a, double b, double c)
{
    if (!std::isfinite(a) || !std::isfinite(b) || !std::isfinite(c))
        throw VoInvalidParameterException("Invalid colour");
}

// How much of a hue there is in a part: 1 in the third of the circle around its own, 0 in the opposite one.
double Share(double hue, double of)
{
    const double turn = std::fmod(hue - of, 360);
    const double away = std::min(std::fabs(turn), 360 - std::fabs(turn));
    return std::clamp(2 - away / 60, 0.0, 1.0);
}

// A colour whose parts lie between the least and the most.
VoColour OfHue(double hue, double least, double most)
{
    const auto part = [&](double of) { return Byte(least + (most - least) * Share(hue, of)); };
    return {part(0), part(120), part(240)};
}

struct Range
{
    double least;
    double most;
};

Range RangeOf(const VoColour& colour)
{
    const auto [least, most] = std::minmax({colour.red(), colour.green(), colour.blue()});
    return {least / 255.0, most / 255.0};
}

double Hue(const VoColour& colour)
{
    const double red = colour.red();
    const double green = colour.green();
    const double blue = colour.blue();
    const auto [least, most] = std::minmax({red, green, blue});
    if (least == most)
        return 0;
    const double range = most - least;
    if (most == red)
        return std::fmod(60 * (green - blue) / range + 360, 360);
    return most == green ? 60 * (blue - red) / range + 120 : 60 * (red - green) / range + 240;
}

int HexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// The parts of three, four, six or eight digits.
bool ParseDigits(std::string_view digits, std::array<std::uint8_t, 4>& parts)
{
    const bool isShort = digits.size() == 3 || digits.size() == 4;
    if (!isShort && digits.size() != 6 && digits.size() != 8)
        return false;
    if (std::any_of(digits.begin(), digits.end(), [](char c) { return HexDigit(c) < 0; }))
        return false;
    const std::size_t width = isShort ? 1 : 2;
    for (std::size_t i = 0; i * width < digits.size(); ++i) {
        const int high = HexDigit(digits[i * width]);
        const int low = HexDigit(digits[i * width + width - 1]);
        parts[i] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return true;
}

void AppendByte(VoString& text, std::uint8_t byte)
{
    constexpr const char* digits = "0123456789abcdef";
    text += digits[byte >> 4];
    text += digits[byte & 15];
}

} // namespace

VoColour VoColour::FromARGB(std::uint32_t argb) noexcept
{
    const auto byte = [argb](int shift) { return static_cast<std::uint8_t>(argb >> shift); };
    return {byte(16), byte(8), byte(0), byte(24)};
}

VoColour VoColour::FromHSV(const HSV& hsv)
{
    RequireFinite(hsv.hue, hsv.saturation, hsv.value);
    const double value = std::clamp(hsv.value, 0.0, 1.0);
    return OfHue(hsv.hue, value * (1 - std::clamp(hsv.saturation, 0.0, 1.0)), value);
}

VoColour VoColour::FromHSL(const HSL& hsl)
{
    RequireFinite(hsl.hue, hsl.saturation, hsl.lightness);
    const double lightness = std::clamp(hsl.lightness, 0.0, 1.0);
    const double reach = std::clamp(hsl.saturation, 0.0, 1.0) * std::min(lightness, 1 - lightness);
    return OfHue(hsl.hue, lightness - reach, lightness + reach);
}

VoColour VoColour::FromText(const VoString& text)
{
    const VoString trimmed = text.trimmed().toString();
    std::array<std::uint8_t, 4> parts = {0, 0, 0, 255};
    if (trimmed == "transparent")
        return {0, 0, 0, 0};
    if (const std::uint32_t* const named = vo::detail::FindColour(trimmed))
        return FromARGB(*named | 0xff000000);
    if (trimmed.isEmpty() || trimmed[0] != '#' ||
        !ParseDigits(std::string_view(trimmed.toStdString()).substr(1), parts))
        throw VoInvalidConversionException("Invalid colour: " + text);
    return {parts[0], parts[1], parts[2], parts[3]};
}

std::uint32_t VoColour::argb() const noexcept
{
    return std::uint32_t(m_alpha) << 24 | std::uint32_t(m_red) << 16 | std::uint32_t(m_green) << 8 | m_blue;
}

VoColour::HSV VoColour::hsv() const noexcept
{
    const auto [least, most] = RangeOf(*this);
    return {Hue(*this), most > 0 ? (most - least) / most : 0, most};
}

VoColour::HSL VoColour::hsl() const noexcept
{
    const auto [least, most] = RangeOf(*this);
    const double lightness = (least + most) / 2;
    return {Hue(*this), most > least ? (most - least) / (2 * std::min(lightness, 1 - lightness)) : 0, lightness};
}

VoString VoColour::toString() const
{
    VoString text = "#";
    for (const std::uint8_t part : {m_red, m_green, m_blue})
        AppendByte(text, part);
    if (m_alpha != 255)
        AppendByte(text, m_alpha);
    return text;
}

VoString VoColour::name() const
{
    return m_alpha == 255 ? VoString(vo::detail::ColourName(argb() & 0xffffff)) : VoString();
}

VoColour VoColour::withAlpha(std::uint8_t alpha) const noexcept
{
    return {m_red, m_green, m_blue, alpha};
}

VoColour VoColour::mixed(const VoColour& other, double share) const noexcept
{
    const double second = share > 0 ? std::min(share, 1.0) : 0;
    const double weight = (1 - second) * m_alpha;
    const double otherWeight = second * other.m_alpha;
    const double alpha = weight + otherWeight;
    if (alpha == 0)
        return withAlpha(0);
    const auto part = [&](std::uint8_t a, std::uint8_t b) {
        return FromLight((Light(a) * weight + Light(b) * otherWeight) / alpha);
    };
    return {part(m_red, other.m_red), part(m_green, other.m_green), part(m_blue, other.m_blue), Byte(alpha / 255)};
}

VoColour VoColour::over(const VoColour& background) const noexcept
{
    return withAlpha(255).mixed(background.withAlpha(255), 1 - m_alpha / 255.0);
}

double VoColour::luminance() const noexcept
{
    return 0.2126 * Light(m_red) + 0.7152 * Light(m_green) + 0.0722 * Light(m_blue);
}

double VoColour::contrast(const VoColour& other) const noexcept
{
    const auto [darker, lighter] = std::minmax({luminance(), other.luminance()});
    return (lighter + 0.05) / (darker + 0.05);
}

VoColour VoColour::readableOn(const VoColour& background, double contrast) const noexcept
{
    constexpr int steps = 64;
    const VoColour black(0, 0, 0, m_alpha);
    const VoColour white(255, 255, 255, m_alpha);
    for (int step = 0; step <= steps; ++step) {
        for (const VoColour& end : {black, white}) {
            const VoColour candidate = mixed(end, double(step) / steps);
            if (candidate.contrast(background) >= contrast)
                return candidate;
        }
    }
    return black.contrast(background) > white.contrast(background) ? black : white;
}

std::ostream& operator<<(std::ostream& stream, const VoColour& colour)
{
    return stream << colour.toString();
}

std::size_t std::hash<VoColour>::operator()(const VoColour& colour) const noexcept
{
    return std::hash<std::uint32_t>()(colour.argb());
}

VoColour VoSeriesColour(std::size_t series) noexcept
{
    // Found by a search for the largest smallest distance, in CIELAB, over normal vision, protanopia, deuteranopia and
    // tritanopia, with hues that have names of their own.
    static constexpr VoColour colours[] = {
        {0x14, 0x4c, 0xee}, // blue
        {0xf0, 0x6b, 0x05}, // orange
        {0x2b, 0xa4, 0x9e}, // teal
        {0x61, 0x06, 0x90}, // purple
        {0x5f, 0x1a, 0x00}, // brown
        {0xc3, 0x63, 0xdc}, // pink
        {0x84, 0x81, 0x52}, // olive
        {0x00, 0x39, 0x40}, // dark green
    };
    return colours[series % std::size(colours)];
}
