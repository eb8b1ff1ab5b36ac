#pragma once

#include <Time/VoTimeDuration.h>

#include <optional>
#include <string>
#include <string_view>

/// @file
/// The texts of durations that VoTimeDuration describes.

namespace vo::detail {

/// "1h 03m 12.5s"
std::string ComponentsText(const VoTimeDuration::Parts& parts);

/// "PT1H3M12.5S"
std::string IsoText(const VoTimeDuration::Parts& parts);

/// Reads either, and what VoTimeDuration::toString writes; none for any other text.
std::optional<VoTimeDuration> ReadDuration(std::string_view text);

} // namespace vo::detail
