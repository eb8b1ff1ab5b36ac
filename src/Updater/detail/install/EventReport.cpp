#include <Updater/detail/install/EventReport.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Updater/detail/documents/Log.h>

#include <exception>

namespace vo::updater::detail {

namespace {

using vo::logging::Level;

struct BasicMessage
{
    Level level; // of its line in the log
    VoSharedPtr<AbstractMessage> (*make)(const VoString& text, const VoUUID& packageID, const VoUUID& versionID);
};

template <AbstractMessage::Type N>
VoSharedPtr<AbstractMessage> MakeUpdateMessage(const VoString& text, const VoUUID& packageID, const VoUUID& versionID)
{
    return VoSharedPtr<BasicUpdateMessage<N>>::Make(text, packageID, versionID);
}

template <AbstractMessage::Type N>
VoSharedPtr<AbstractMessage> MakeUninstallMessage(const VoString&, const VoUUID& packageID, const VoUUID&)
{
    return VoSharedPtr<BasicUninstallMessage<N>>::Make(packageID);
}

BasicMessage BasicMessageOf(AbstractMessage::Type type)
{
    switch (type) {
#define VOCORE_MESSAGE(name, grave)                                                                                    \
    case AbstractMessage::name:                                                                                        \
        return {Level::grave, MakeUpdateMessage<AbstractMessage::name>};
        VOCORE_BASIC_UPDATE_MESSAGES(VOCORE_MESSAGE)
#undef VOCORE_MESSAGE
#define VOCORE_MESSAGE(name, grave)                                                                                    \
    case AbstractMessage::name:                                                                                        \
        return {Level::grave, MakeUninstallMessage<AbstractMessage::name>};
        VOCORE_BASIC_UNINSTALL_MESSAGES(VOCORE_MESSAGE)
#undef VOCORE_MESSAGE
    default:
        throw VoInvalidParameterException("No basic message of type " + VoString(static_cast<int>(type)));
    }
}

} // namespace

void BroadcastGuarded(MessageBroadcaster& broadcaster, const VoSharedPtr<AbstractMessage>& message)
{
    try {
        broadcaster.broadcast(message);
    } catch (...) {
        Log().error("Receiver of a message failed: " + CurrentExceptionText());
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

EventReport::EventReport(const VoUUID& packageID, const VoUUID& versionID, MessageReceiver receiver,
                         vo::logging::Logger* log, Label label)
    : m_packageID(packageID)
    , m_versionID(versionID)
    , m_receiver(std::move(receiver))
    , m_log(log)
    , m_label(label)
{
}

void EventReport::report(AbstractMessage::Type type, const VoString& text) const
{
    report(type, text, text);
}

void EventReport::report(AbstractMessage::Type type, const VoString& text, const VoString& logged) const
{
    const BasicMessage message = BasicMessageOf(type);
    if (!logged.isEmpty())
        log(message.level, logged);
    if (m_receiver)
        m_receiver(message.make(text, m_packageID, m_versionID));
}

void EventReport::diagnostic(const VoString& text) const
{
    log(Level::Diagnostic, text);
}

void EventReport::warning(const VoString& text) const
{
    log(Level::Warning, text);
}

void EventReport::error(const VoString& text) const
{
    log(Level::Error, text);
}

void EventReport::log(Level level, const VoString& text) const
{
    if (!m_log || !m_log->isEnabled(level))
        return;
    if (m_label == Label::None)
        m_log->log(level, text);
    else
        m_log->log(level, text + " [package=" + m_packageID.toString() + "] [version=" + m_versionID.toString() + "]");
}

} // namespace vo::updater::detail
