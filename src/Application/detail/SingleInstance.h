#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <FileSystem/VoDirectoryPath.h>
#include <Time/VoTimeDuration.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vo::detail {

/// What one start of an application hands to the first one: the working directory, then the arguments.
///
/// On the wire: four letters, the length of the rest in four bytes, most significant first, and the texts with a zero
/// byte behind each.
/// @{
inline constexpr std::size_t LargestMessage = 1000000;
inline constexpr std::size_t MessageHeader = 8;

/// The bytes of texts.
/// @throws VoInvalidParameterException "Command line too long to hand over"
VOCORE_PRIVATE_EXPORT std::string InstanceMessage(const std::vector<std::string>& texts);
/// Takes the texts out of what has come so far; none while bytes are missing.
/// @throws VoValidationException "Invalid message of another start" for what can never become a message
VOCORE_PRIVATE_EXPORT std::optional<std::vector<std::string>> TextsOfMessage(const std::string& bytes);
/// @}

/// Keeps an application to one process for each user.
///
/// A lock file decides who is the first: the system lets go of it when that process ends, however it ends. The local
/// socket, which only this user can reach, carries what later starts hand over.
class SingleInstance
{
public:
    using Callback = std::function<void(const std::vector<std::string>&)>;

    /// `directory` belongs to the user and the application; `callback` gets what later starts hand over, on the
    /// thread that calls claim().
    SingleInstance(const VoDirectoryPath& directory, Callback callback);
    ~SingleInstance(); ///< Lets another process be the first.
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    /// Whether this process is the first now; otherwise the first one has taken the texts. Nothing when it has not
    /// answered in time.
    std::optional<bool> claim(const std::vector<std::string>& texts, const VoTimeDuration& patience);

private:
    struct Private;

    void listen();

    std::unique_ptr<Private> m_private;
};

} // namespace vo::detail
