#pragma once

#include <Threading/VoThread.h>

#include <functional>

namespace vo::detail {

/// Starts a thread that runs `function`, which must not throw. `name` (at most 15 bytes are used) is shown by
/// debuggers.
/// @throws VoThreadException with the system's text when no thread can be had
VOCORE_PRIVATE_EXPORT VoThread CreateThread(std::function<void()> function, const char* name);

/// Names the calling thread for debuggers; does nothing where the system has no such names.
void NameCurrentThread(const char* name) noexcept;

} // namespace vo::detail
