#include <Updater/VoInstallationFailedException.h>

#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>

#include <utility>

VOCORE_DEFINE_EXCEPTION(VoInstallationFailedException, "VoInstallationFailedException")

VoInstallationFailedException::VoInstallationFailedException()
    : VoException(VoString("Installation failed"))
{
}

VoInstallationFailedException::VoInstallationFailedException(const VoString& message)
    : VoException(message)
{
}

VoInstallationFailedException::VoInstallationFailedException(const VoException& cause)
    : VoInstallationFailedException(cause.message(), std::current_exception())
{
}

VoInstallationFailedException::VoInstallationFailedException(const std::exception& cause)
    : VoInstallationFailedException(VoString(cause.what()), std::current_exception())
{
}

VoInstallationFailedException::VoInstallationFailedException(const VoString& message, std::exception_ptr cause)
    : VoException(message)
    , m_cause(std::move(cause))
{
    if (!m_cause)
        return;
    try {
        std::rethrow_exception(m_cause);
    } catch (const VoFileException& failure) {
        complete(failure.subject().isEmpty() ? failure.path1().path() : failure.subject(), failure.reason());
    } catch (const VoException& failure) {
        complete(failure.subject(), failure.reason());
    } catch (...) { // nothing more is known of it
    }
}

const std::exception_ptr& VoInstallationFailedException::cause() const noexcept
{
    return m_cause;
}

VoFilePath VoInstallationFailedException::path() const
{
    const VoString& about = subject();
    return about.contains("://") ? VoFilePath() : VoFilePath::CreateUnchecked(VoString(about));
}
