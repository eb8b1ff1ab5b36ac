#pragma once

#include <Core/VoExport.h>

#include <optional>
#include <string_view>
#include <vector>

namespace vo {

/// The name that was most likely meant by a mistyped one, for "did you mean": the one that the fewest insertions,
/// removals, replacements and swaps of neighbours lead to, the first of several. None when even that differs in more
/// than a third of its characters (at least one is always forgiven) and `typed` is not the beginning of exactly one name.
/// The result views one of `names`.
VOCORE_EXPORT std::optional<std::string_view> NearestName(std::string_view typed,
                                                          const std::vector<std::string_view>& names);

} // namespace vo
