#include <vo/line/Values.h>

#include <Download/VoDownloadSize.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace vo::tool {
namespace {

template <typename Integer>
std::optional<Integer> ParseAll(std::string_view text)
{
    Integer value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

/// The shift of a suffix; none for a character that is no suffix.
std::optional<unsigned> ShiftOf(char suffix)
{
    switch (suffix) {
    case 'K':
    case 'k':
        return 10;
    case 'M':
    case 'm':
        return 20;
    case 'G':
    case 'g':
        return 30;
    default:
        return std::nullopt;
    }
}

VoString FixedText(double value, int decimals)
{
    char text[64];
    const auto [end, error] = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    return error == std::errc() ? VoString(text, static_cast<std::size_t>(end - text)) : VoString();
}

} // namespace

std::optional<std::int64_t> ParseInteger(const VoString& text)
{
    return ParseAll<std::int64_t>(text.toStdString());
}

std::optional<VoTimeDuration> ParseDuration(const VoString& text)
{
    constexpr std::int64_t longest = 100 * 366; // days
    std::string_view digits = text.toStdString();
    if (digits.empty())
        return std::nullopt;
    const std::size_t unit = std::string_view("smhd").find(digits.back());
    digits.remove_suffix(1);
    constexpr std::array<std::int64_t, 4> seconds = {1, 60, 3600, 86400};
    const auto value = ParseAll<std::uint32_t>(digits);
    if (unit == std::string_view::npos || !value || *value * seconds.at(unit) > longest * 86400)
        return std::nullopt;
    return VoSeconds(*value * seconds.at(unit));
}

std::optional<std::uint64_t> ParseShare(const VoString& text)
{
    std::string_view digits = text.toStdString();
    if (!digits.empty() && digits.back() == '%')
        digits.remove_suffix(1);
    const std::size_t point = digits.find('.');
    std::string decimals(point == std::string_view::npos ? std::string_view() : digits.substr(point + 1));
    if (decimals.size() > 2 || (point != std::string_view::npos && decimals.empty()))
        return std::nullopt;
    decimals.resize(2, '0');
    const auto whole = ParseAll<std::uint16_t>(digits.substr(0, point));
    const auto part = ParseAll<std::uint16_t>(decimals);
    if (!whole || !part || *whole > 100 || *whole * 100u + *part > 10000)
        return std::nullopt;
    return *whole * 100u + *part;
}

VoString ShareText(std::uint64_t share)
{
    VoString text(share / 100);
    if (share % 100 != 0)
        text +=
            "." + VoString(share % 100 < 10 ? "0" : "") + VoString(share % 10 == 0 ? share % 100 / 10 : share % 100);
    return text + "%";
}

std::optional<std::uint64_t> ParseBytes(const VoString& text)
{
    std::string_view digits = text.toStdString();
    unsigned shift = 0;
    if (const auto suffix = digits.empty() ? std::nullopt : ShiftOf(digits.back())) {
        shift = *suffix;
        digits.remove_suffix(1);
    }
    const auto value = ParseAll<std::uint64_t>(digits);
    if (!value || *value > (std::numeric_limits<std::uint64_t>::max() >> shift))
        return std::nullopt;
    return *value << shift;
}

std::optional<ReleaseNumber> ParseRelease(const VoString& text)
{
    std::vector<int> parts;
    for (std::string_view rest = text.toStdString();;) {
        const std::size_t dot = std::min(rest.find('.'), rest.size());
        const auto part = ParseAll<int>(rest.substr(0, dot));
        if (!part || *part < 0 || parts.size() == 4)
            return std::nullopt;
        parts.push_back(*part);
        if (dot == rest.size())
            break;
        rest.remove_prefix(dot + 1);
    }
    const bool hasBuildType = parts.size() == 4;
    const int build = hasBuildType ? parts[2] : 0;
    if (hasBuildType)
        parts.erase(parts.begin() + 2);
    parts.resize(3, 0);
    return ReleaseNumber{VoVersion(parts[0], parts[1], parts[2], static_cast<VoVersion::BuildType>(build)),
                         hasBuildType};
}

VoString ReleaseText(const VoVersion& version)
{
    VoString text = VoString(version.major()) + "." + VoString(version.minor()) + "." + VoString(version.revision());
    if (version.build() != 0)
        text += " (build type " + VoString(static_cast<int>(version.build())) + ")";
    return text;
}

VoString BytesText(std::uint64_t bytes)
{
    return VoString(VoDownloadSize(bytes).toString().trimmed());
}

VoString RatioText(double ratio)
{
    return FixedText(ratio, 2);
}

VoString TimeText(double seconds, int decimals)
{
    constexpr double longest = 1e9; // hours that nobody waits for
    const double time = std::clamp(seconds, 0.0, longest);
    if (time < 59.995)
        return FixedText(time, decimals) + " s";
    const auto whole = static_cast<std::int64_t>(std::llround(time));
    if (whole < 3600)
        return VoString(whole / 60) + " min " + VoString(whole % 60) + " s";
    return VoString(whole / 3600) + " h " + VoString(whole / 60 % 60) + " min";
}

} // namespace vo::tool
