#pragma once

#include <Core/VoExport.h>

#include <functional>
#include <memory>

/// Calls a function when the system or the user asks the process to end: by SIGINT, SIGTERM or SIGHUP, or by the events
/// of Windows' consoles, told by the number of the nearest signal. For programs without a VoApplication, which does
/// this itself.
///
/// The function runs on a thread of its own, so it may do everything. A second signal of one kind ends the process.
/// Objects may be nested: SIGINT is the innermost one's, the others go to those around it as well. Failing to set up
/// leaves the system's own treatment in place.
class VOCORE_EXPORT VoSignalWatch
{
public:
    explicit VoSignalWatch(std::function<void(int signal)> function); ///< The function must not throw.
    ~VoSignalWatch(); ///< Gives the signals back; waits for the function where it is running.
    VoSignalWatch(const VoSignalWatch&) = delete;
    VoSignalWatch& operator=(const VoSignalWatch&) = delete;

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
