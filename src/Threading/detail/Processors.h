#pragma once

#include <Core/VoExport.h>

#include <cstddef>

namespace vo::detail {

/// The number of processors that this process may use, at least 1. What the system or a container keeps it from does
/// not count: more threads than that only take each other's caches.
VOCORE_PRIVATE_EXPORT std::size_t AvailableProcessors() noexcept;

} // namespace vo::detail
