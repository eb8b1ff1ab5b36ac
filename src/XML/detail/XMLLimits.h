#pragma once

#include <cstddef>

namespace vo::detail {

/// Levels of elements that loaders build and trees hold. Rules call one another for their children, and trees are
/// walked and released in calls within calls, so depth costs stack; a document from outside must not be able to exhaust
/// it.
constexpr std::size_t MaximumXMLLevels = 1000;

/// Attributes of one element, and declarations of namespaces that are in force at one place of a document. The parser
/// compares each attribute with all others of its element, and looks each prefix up among all declarations around it;
/// what is read takes a few seconds for a few megabytes at most. Writers keep to it too.
constexpr std::size_t MaximumXMLAttributes = 4096;

} // namespace vo::detail
