#pragma once

#include <Core/VoPrintable.h>
#include <Core/VoString.h>
#include <Core/VoVersion.h>
#include <Time/VoTimeDuration.h>

#include <cstdint>
#include <optional>

/// @file
/// Texts of the command line read as values, and values shown to people. Pure; a text that is not what it should be
/// gives no value.

namespace vo::tool {

/// A decimal integer, with "-" in front when negative.
std::optional<std::int64_t> ParseInteger(const VoString& text);

/// A number of bytes: decimal digits and perhaps K, M or G for powers of 1024 ("65536", "512K", "4M").
std::optional<std::uint64_t> ParseBytes(const VoString& text);

/// A duration: a whole number and s, m, h or d for seconds, minutes, hours or days ("30d").
std::optional<VoTimeDuration> ParseDuration(const VoString& text);

/// A share in ten-thousandths: a percentage with up to two decimals, with or without its sign ("20%", "0.5").
std::optional<std::uint64_t> ParseShare(const VoString& text);
/// "20%", "0.5%"
VoString ShareText(std::uint64_t share);

/// The number of a release.
struct ReleaseNumber
{
    VoVersion version;
    /// Whether the text named a build type too: as documents write it, major.minor.build.revision.
    bool hasBuildType = false;
};

/// "4", "4.2" and "4.2.17" are major, minor and revision; "4.2.1.17" has the build type in the third place.
std::optional<ReleaseNumber> ParseRelease(const VoString& text);

/// How a release is shown: "4.2.17", and "4.2.17 (build type 1)" when it is not build type 0.
VoString ReleaseText(const VoVersion& version);

/// "12.3 MB"
VoString BytesText(std::uint64_t bytes);

/// "12.34"
VoString RatioText(double ratio);

/// A time with its units, for people: "12.34 s" (with `decimals` below a minute), "3 min 4 s", "2 h 5 min".
VoString TimeText(double seconds, int decimals = 2);

using vo::Printable;

} // namespace vo::tool
