#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>

class VoString;

/// A colour of a screen: red, green, blue and alpha in the sRGB space, with 8 bits each.
///
///     VoColour line = VoColour::FromText("steelblue");
///     if (line.contrast(background) < 3)
///         line = line.readableOn(background, 3);
///
/// A value of four bytes. argb() is what the framework's colour is made of (QColor::fromRgba), and gives it back.
class VOCORE_EXPORT VoColour
{
public:
    /// The coordinates of hue, saturation and value.
    struct HSV
    {
        double hue;        ///< In degrees, from 0 to below 360; 0 of a grey.
        double saturation; ///< From 0, a grey, to 1.
        double value;      ///< From 0, black, to 1.
    };

    /// The coordinates of hue, saturation and lightness.
    struct HSL
    {
        double hue;        ///< In degrees, from 0 to below 360; 0 of a grey.
        double saturation; ///< From 0, a grey, to 1.
        double lightness;  ///< From 0, black, to 1, white.
    };

    constexpr VoColour() noexcept = default; ///< Opaque black.
    /// Of its parts; an alpha of 0 cannot be seen, 255 hides what is below.
    constexpr VoColour(std::uint8_t red, std::uint8_t green, std::uint8_t blue, std::uint8_t alpha = 255) noexcept
        : m_red(red)
        , m_green(green)
        , m_blue(blue)
        , m_alpha(alpha)
    {
    }

    /// Of alpha, red, green and blue, the most significant byte first.
    static VoColour FromARGB(std::uint32_t argb) noexcept;
    /// @name Of other coordinates
    /// The hue may be any number of degrees; the others are cut to their range.
    /// @throws VoInvalidParameterException "Invalid colour", when one is not finite
    /// @{
    static VoColour FromHSV(const HSV& hsv); ///< Opaque.
    static VoColour FromHSL(const HSL& hsl); ///< Opaque.
    /// @}
    /// Of "#rgb", "#rgba", "#rrggbb", "#rrggbbaa" or one of the 148 names of CSS; "transparent" too. Case and blanks
    /// around it do not count.
    /// @throws VoInvalidConversionException "Invalid colour: " + text
    static VoColour FromText(const VoString& text);

    constexpr std::uint8_t red() const noexcept { return m_red; }     ///< From 0 to 255.
    constexpr std::uint8_t green() const noexcept { return m_green; } ///< From 0 to 255.
    constexpr std::uint8_t blue() const noexcept { return m_blue; }   ///< From 0 to 255.
    constexpr std::uint8_t alpha() const noexcept { return m_alpha; } ///< From 0 to 255, opaque.
    std::uint32_t argb() const noexcept;                              ///< As FromARGB() takes it.
    HSV hsv() const noexcept;                                         ///< Without alpha.
    HSL hsl() const noexcept;                                         ///< Without alpha.
    VoString toString() const; ///< "#rrggbb", or "#rrggbbaa" unless it is opaque.
    VoString name() const;     ///< Its name in CSS, the first in the alphabet; empty without one.

    VoColour withAlpha(std::uint8_t alpha) const noexcept; ///< The same with another alpha.
    /// This colour with a share of another one, 0 for none to 1 for that alone, mixed as light is, and by alpha.
    /// Shares beyond are cut; one that is no number counts as none.
    VoColour mixed(const VoColour& other, double share) const noexcept;
    VoColour over(const VoColour& background) const noexcept; ///< What is seen of it before an opaque background.

    /// How light it is for the eye, from 0 to 1: the relative luminance of WCAG 2, without alpha.
    double luminance() const noexcept;
    /// The contrast ratio of WCAG 2, from 1, none, to 21: texts need 4.5, lines and symbols 3. Without alpha.
    double contrast(const VoColour& other) const noexcept;
    /// This colour, mixed with so much black or white, whichever takes less, that it has a contrast with a background;
    /// black or white where none is enough.
    VoColour readableOn(const VoColour& background, double contrast = 4.5) const noexcept;

    /// Equal in all four parts.
    friend constexpr bool operator==(const VoColour& a, const VoColour& b) noexcept
    {
        return a.m_red == b.m_red && a.m_green == b.m_green && a.m_blue == b.m_blue && a.m_alpha == b.m_alpha;
    }
    friend constexpr bool operator!=(const VoColour& a, const VoColour& b) noexcept { return !(a == b); } ///< Differ.
    /// Writes toString().
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoColour& colour);

private:
    std::uint8_t m_red = 0;
    std::uint8_t m_green = 0;
    std::uint8_t m_blue = 0;
    std::uint8_t m_alpha = 255;
};

/// Hash that agrees with ==.
template <>
struct VOCORE_EXPORT std::hash<VoColour>
{
    std::size_t operator()(const VoColour& colour) const noexcept; ///< Of all four parts.
};

/// Colours of the series of a chart: VoSeriesColour(0) of the first, and so on; after the eighth they begin anew.
///
/// People of all kinds of colour vision can tell them apart from one another, and see them before white: each two
/// differ clearly also where red, green or blue is not seen, and each has a contrast with white of 3 or more.
VOCORE_EXPORT VoColour VoSeriesColour(std::size_t series) noexcept;
