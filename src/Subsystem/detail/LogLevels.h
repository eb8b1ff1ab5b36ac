#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Subsystem/LogConfiguration.h>

namespace vo::logging {

/// The threshold of loggers above every level: nothing is logged.
inline constexpr int NoLevel = static_cast<int>(Level::Critical) + 1;

/// Whether a category matches a pattern, "*" standing for any characters and ASCII letters ignoring case.
VOCORE_PRIVATE_EXPORT bool Matches(const VoString& pattern, const VoString& category);

/// The number of the lowest level that the rules let through for a category; NoLevel for nothing.
VOCORE_PRIVATE_EXPORT int ThresholdOf(const VoString& category, const VoDeque<LevelRule>& rules);

/// Gives every logger, also those made later, the threshold that the rules say.
void ApplyLevelRules(const VoDeque<LevelRule>& rules);

/// Whether lines on standard error have colours; at first they have none.
void ColourStandardError(bool wanted) noexcept;

/// Whether a person sees standard error, on something that shows colours. Makes it show them where it must be told to.
bool StandardErrorShowsColours();

} // namespace vo::logging
