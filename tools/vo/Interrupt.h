#pragma once

#include <Application/VoSignalWatch.h>
#include <Threading/VoStopFlag.h>

namespace vo::tool {

/// Raises a stop flag when the user presses Ctrl-C or the system asks the process to end.
///
/// The work in hand then ends at its next safe point. A second Ctrl-C ends the process at once, which loses nothing
/// either: what is installed is replaced file by file. Objects may be nested: Ctrl-C is the innermost one's, and what
/// asks the process to end goes to those around it as well. The first is made before other threads start.
class Interrupt
{
public:
    /// Failing to set up leaves the system's own treatment of Ctrl-C in place.
    explicit Interrupt(const VoStopFlag& flag);

private:
    const VoSignalWatch m_watch; // gives Ctrl-C back to the system
};

} // namespace vo::tool
