#pragma once

#include <Threading/VoReceiver.h>
#include <Updater/UpdateMessages.h>

#include <atomic>

namespace vo::tool {

class Console;

/// Shows what an installation tells as long as it lives, and knows afterwards how it ended.
class InstallWatch
{
public:
    explicit InstallWatch(Console& console);

    /// Whether the check of the installed files found them right.
    bool isIntact() const { return m_isIntact; }
    /// To be called when the installation has returned: ends the progress line.
    /// @throws Failure when the files are installed but not recorded
    void requireRecorded();

private:
    void receive(const VoSharedPtr<updater::AbstractMessage>& message);

    Console& m_console;
    std::atomic<bool> m_isIntact{true};
    std::atomic<bool> m_isRecorded{false};
    VoReceiver m_receiver;
};

} // namespace vo::tool
