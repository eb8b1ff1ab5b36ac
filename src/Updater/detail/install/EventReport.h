#pragma once

#include <Core/VoSharedPtr.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Subsystem/VoLogging.h>
#include <Threading/VoBroadcaster.h>
#include <Updater/UpdateMessages.h>

#include <functional>
#include <utility>

namespace vo::updater::detail {

using MessageReceiver = std::function<void(const VoSharedPtr<AbstractMessage>&)>;
using MessageBroadcaster = VoBroadcaster<VoSharedPtr<AbstractMessage>>;

/// Sends a message. What a receiver throws is logged: work goes on whatever they do.
void BroadcastGuarded(MessageBroadcaster& broadcaster, const VoSharedPtr<AbstractMessage>& message);

/// The text of the exception in flight; empty for one that is neither of the library nor of the standard.
VoString FailureText();

/// "sentence: text", or the sentence alone when there is no text.
VoString WithText(const char* sentence, const VoString& text);

/// Tells of the events of one operation on a package: the line of the log, as grave as the event is, and the message
/// for receivers are made in one place.
class EventReport
{
public:
    /// What stands behind each line of the log.
    enum class Label
    {
        None,
        IDs, ///< The IDs of package and release.
    };

    /// Of a release, or with an empty version ID of a package. A null `log` keeps the log out of it. An empty receiver
    /// is told nothing.
    EventReport(const VoUUID& packageID, const VoUUID& versionID, MessageReceiver receiver, vo::logging::Logger* log,
                Label label);

    /// One event, in the log and as the basic message of its type; those of uninstalling have no text. An empty text is
    /// not logged.
    void report(AbstractMessage::Type type, const VoString& text) const;
    /// The same where the log words it otherwise than the message.
    void report(AbstractMessage::Type type, const VoString& text, const VoString& logged) const;

    /// A message of a class of its own, from its figures; the IDs are added.
    template <typename M, typename... Arguments>
    void send(Arguments&&... arguments) const
    {
        if (m_receiver)
            m_receiver(VoSharedPtr<M>::Make(std::forward<Arguments>(arguments)..., m_packageID, m_versionID));
    }

    /// @{ A line of the log alone.
    void diagnostic(const VoString& text) const;
    void warning(const VoString& text) const;
    void error(const VoString& text) const;
    /// @}

private:
    void log(vo::logging::Level level, const VoString& text) const;

    const VoUUID m_packageID;
    const VoUUID m_versionID;
    const MessageReceiver m_receiver;
    vo::logging::Logger* const m_log;
    const Label m_label;
};

} // namespace vo::updater::detail
