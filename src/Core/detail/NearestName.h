#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace vo::detail {

/// The number of single-character insertions, removals, replacements and swaps of neighbours that turn `a` into `b`.
VOCORE_PRIVATE_EXPORT std::size_t EditDistance(std::string_view a, std::string_view b);

/// The name that was most likely meant by `typed`: the one at the smallest distance, the first of several; none when
/// even the nearest differs in more than a third of its characters (at least one is always forgiven) and `typed` is
/// not the beginning of exactly one name.
VOCORE_PRIVATE_EXPORT std::optional<std::string_view> NearestName(std::string_view typed,
                                                                  const std::vector<std::string_view>& names);

/// The names that may have been meant, the likeliest first and no more than `most`: those that NearestName() would
/// forgive, and those that begin with `typed`.
VOCORE_PRIVATE_EXPORT std::vector<std::string_view>
NearestNames(std::string_view typed, const std::vector<std::string_view>& names, std::size_t most);

} // namespace vo::detail
