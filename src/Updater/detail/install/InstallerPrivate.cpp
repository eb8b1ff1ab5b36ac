#include <Updater/detail/install/InstallerPrivate.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Subsystem/VoLogging.h>

#include <exception>

namespace vo::updater::detail {

void BroadcastGuarded(MessageBroadcaster& broadcaster, const VoSharedPtr<AbstractMessage>& message)
{
    try {
        broadcaster.broadcast(message);
    } catch (...) {
        vo::logging::Logger::Get("updater").error("Receiver of a message failed: " + CurrentExceptionText());
    }
}

VoString FailureText()
{
    try {
        throw;
    } catch (const VoExceptionInterface&) {
        return CurrentExceptionText();
    } catch (const std::exception&) {
        return CurrentExceptionText();
    } catch (...) {
        return VoString();
    }
}

VoString WithText(const char* sentence, const VoString& text)
{
    return text.isEmpty() ? VoString(sentence) : sentence + VoString(": ") + text;
}

} // namespace vo::updater::detail
