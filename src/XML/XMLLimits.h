#pragma once

#include <cstddef>

namespace vo::detail {

/// Levels of elements that loaders build. Rules call one another for their children, so depth costs stack; a document
/// from outside must not be able to exhaust it.
constexpr std::size_t MaximumXMLLevels = 1000;

} // namespace vo::detail
