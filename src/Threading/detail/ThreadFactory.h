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

/// Waits for the end of a thread whose owner ends. Where that happens on the thread itself, it runs on alone and may
/// need nothing of the owner any more. Does nothing without a thread.
void FinishThread(VoThread& thread);

} // namespace vo::detail
