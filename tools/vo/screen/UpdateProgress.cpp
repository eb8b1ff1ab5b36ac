#include <vo/screen/UpdateProgress.h>

#include <vo/line/Failures.h>
#include <vo/screen/Console.h>

namespace vo::tool {

using namespace updater;

namespace {

std::uint64_t Known(const VoDownloadSize& amount)
{
    return amount.isUnknown() ? 0 : static_cast<std::uint64_t>(amount.bytes());
}

/// Shows progress, if the message is one of its kinds.
bool ShowProgress(Console& console, const AbstractMessage& message)
{
    using Unit = ProgressLine::Unit;
    if (const auto* download = dynamic_cast<const DownloadProgressMessage*>(&message))
        console.progress("Downloading", Unit::Bytes, Known(download->processed()), Known(download->total()));
    else if (const auto* installation = dynamic_cast<const InstallationProgressMessage*>(&message))
        console.progress("Installing", Unit::Files, Known(installation->processed()), Known(installation->total()));
    else if (const auto* verification = dynamic_cast<const VerificationProgressMessage*>(&message))
        console.progress("Verifying", Unit::Files, verification->processed(), verification->total());
    else if (const auto* removal = dynamic_cast<const UninstallProgressMessage*>(&message))
        console.progress("Removing", Unit::Files, removal->processed(), removal->total());
    else
        return false;
    return true;
}

} // namespace

void ShowUpdateMessage(Console& console, const VoSharedPtr<AbstractMessage>& message)
{
    if (!message || ShowProgress(console, *message))
        return;
    const auto* update = dynamic_cast<const AbstractUpdateMessage*>(message.get());
    if (update != nullptr && !update->message().isEmpty())
        console.detail(TextOfLibrary(update->message()));
}

} // namespace vo::tool
