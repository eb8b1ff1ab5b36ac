#pragma once

namespace vo::detail {

/// How many processors this process may use at once, at least 1: those of the machine, less what the system withholds
/// from it.
unsigned UsableProcessors() noexcept;

} // namespace vo::detail
