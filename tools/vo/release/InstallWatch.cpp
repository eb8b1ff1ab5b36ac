#include <vo/release/InstallWatch.h>

#include <vo/line/CommandError.h>
#include <vo/line/Paths.h>
#include <vo/screen/Console.h>
#include <vo/screen/UpdateProgress.h>

#include <Updater/InstalledPackages.h>
#include <Updater/VoUpdater.h>

namespace vo::tool {

using namespace updater;

InstallWatch::InstallWatch(Console& console)
    : m_console(console)
    , m_receiver(InstalledPackages::Connect([this](const VoSharedPtr<AbstractMessage>& message) { receive(message); }))
{
}

void InstallWatch::receive(const VoSharedPtr<AbstractMessage>& message)
{
    ShowUpdateMessage(m_console, message);
    if (message->type() == AbstractMessage::VerificationFailed)
        m_isIntact = false;
    // Before it starts, what was interrupted may be recorded.
    if (message->type() == AbstractMessage::InstallationStarted)
        m_isRecorded = false;
    if (message->type() == AbstractMessage::PackagesUpdated)
        m_isRecorded = true;
}

void InstallWatch::requireRecorded()
{
    m_console.endProgress();
    if (!m_isRecorded)
        throw Failure("the files are installed, but " + PathText(VoUpdater::InstalledPackagesPath()) +
                      " cannot be written; the same command completes it");
}

} // namespace vo::tool
