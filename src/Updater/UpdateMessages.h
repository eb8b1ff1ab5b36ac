#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Updater/VoDataProgress.h>

#include <cstdint>

/// @file
/// The messages that installers and the registry of installed packages broadcast, and the table of their codes.
///
/// Messages are immutable and shared between all receivers; they may be kept and read on any thread. A receiver asks
/// type() and casts to the class that the table names.

namespace vo::updater {

/// Base of all messages.
class VOCORE_EXPORT AbstractMessage
{
public:
    /// What a message announces. The numbers are fixed; each belongs to exactly one class.
    enum Type : int
    {
        DownloadStarted = 0,           ///< BasicUpdateMessage: the required chunks are being downloaded.
        DownloadProgress = 1,          ///< DownloadProgressMessage
        DownloadComplete = 2,          ///< BasicUpdateMessage: the required chunks are there.
        InstallationStarted = 3,       ///< BasicUpdateMessage: files are about to be written.
        InstallationProgress = 4,      ///< InstallationProgressMessage
        InstallationComplete = 5,      ///< BasicUpdateMessage: the release is installed.
        PackagesUpdated = 6,           ///< PackagesUpdatedMessage: the registry changed on disk.
        UninstallStarted = 7,          ///< BasicUninstallMessage
        UninstallComplete = 8,         ///< BasicUninstallMessage
        PackageDefinitionNotFound = 9, ///< BasicUninstallMessage: no listing of the package, so no files are removed.
        PackageDefinitionRemoved = 10, ///< BasicUninstallMessage: the package's listing was deleted.
        UninstallProgress = 11,        ///< UninstallProgressMessage
        VerificationStarted = 12,      ///< BasicUpdateMessage: installed files are about to be checked.
        VerificationProgress = 13,     ///< VerificationProgressMessage
        FileMismatch = 14,             ///< BasicUpdateMessage: a file has another content than it should; see the text.
        FileMissing = 15,              ///< BasicUpdateMessage: a file is not there; see the text.
        VerificationSuccess = 16,      ///< BasicUpdateMessage: every file is as it should be.
        VerificationFailed = 17,       ///< BasicUpdateMessage: at least one file is not.
        InstallationFailed = 18,       ///< BasicUpdateMessage: with the reason as text.
        UninstallFailed = 19,          ///< UninstallFailedMessage
        StagingComplete = 20,          ///< BasicUpdateMessage: the release is staged, and can be committed.
    };

    virtual ~AbstractMessage();
    AbstractMessage(const AbstractMessage&) = delete;
    AbstractMessage& operator=(const AbstractMessage&) = delete;

    /// What this message announces.
    virtual Type type() const = 0;

protected:
    AbstractMessage() = default;
};

/// A message about the installation or verification of one release.
class VOCORE_EXPORT AbstractUpdateMessage : public AbstractMessage
{
public:
    ~AbstractUpdateMessage() override;

    const VoString& message() const; ///< A text for people; empty when the type says it all.
    const VoUUID& packageID() const; ///< The package concerned.
    const VoUUID& versionID() const; ///< The release concerned.

protected:
    /// Without a text.
    AbstractUpdateMessage(const VoUUID& packageID, const VoUUID& versionID);
    /// With a text.
    AbstractUpdateMessage(const VoString& message, const VoUUID& packageID, const VoUUID& versionID);

private:
    const VoString m_message;
    const VoUUID m_packageID;
    const VoUUID m_versionID;
};

/// A message about the uninstallation of one package.
class VOCORE_EXPORT AbstractUninstallMessage : public AbstractMessage
{
public:
    ~AbstractUninstallMessage() override;

    const VoUUID& packageID() const; ///< The package concerned.

protected:
    /// About a package.
    explicit AbstractUninstallMessage(const VoUUID& packageID);

private:
    const VoUUID m_packageID;
};

/// An update message that carries nothing beyond an optional text. N is its code; only the codes that the table gives
/// to this class exist.
template <int N>
class VOCORE_EXPORT BasicUpdateMessage : public AbstractUpdateMessage
{
public:
    /// Without a text.
    BasicUpdateMessage(const VoUUID& packageID, const VoUUID& versionID);
    /// With a text.
    BasicUpdateMessage(const VoString& message, const VoUUID& packageID, const VoUUID& versionID);
    ~BasicUpdateMessage() override;

    Type type() const override; ///< N
};

/// An uninstall message that carries nothing beyond the package. N is its code; only the codes that the table gives to
/// this class exist.
template <int N>
class VOCORE_EXPORT BasicUninstallMessage : public AbstractUninstallMessage
{
public:
    /// About a package.
    explicit BasicUninstallMessage(const VoUUID& packageID);
    ~BasicUninstallMessage() override;

    Type type() const override; ///< N
};

/// The types whose message is a BasicUpdateMessage, and how grave a line the log gets of each. A new one stands here
/// and in AbstractMessage::Type, and nowhere else.
#define VOCORE_BASIC_UPDATE_MESSAGES(MESSAGE)                                                                          \
    MESSAGE(DownloadStarted, Diagnostic)                                                                               \
    MESSAGE(DownloadComplete, Diagnostic)                                                                              \
    MESSAGE(InstallationStarted, Diagnostic)                                                                           \
    MESSAGE(InstallationComplete, Diagnostic)                                                                          \
    MESSAGE(VerificationStarted, Diagnostic)                                                                           \
    MESSAGE(FileMismatch, Error)                                                                                       \
    MESSAGE(FileMissing, Error)                                                                                        \
    MESSAGE(VerificationSuccess, Diagnostic)                                                                           \
    MESSAGE(VerificationFailed, Error)                                                                                 \
    MESSAGE(InstallationFailed, Error)                                                                                 \
    MESSAGE(StagingComplete, Diagnostic)

/// The same of BasicUninstallMessage.
#define VOCORE_BASIC_UNINSTALL_MESSAGES(MESSAGE)                                                                       \
    MESSAGE(UninstallStarted, Diagnostic)                                                                              \
    MESSAGE(UninstallComplete, Diagnostic)                                                                             \
    MESSAGE(PackageDefinitionNotFound, Warning)                                                                        \
    MESSAGE(PackageDefinitionRemoved, Diagnostic)

/// @cond
// Made once, in the library: a cast on the other side of its boundary must find the same type.
#define VOCORE_MESSAGE(name, level) extern template class BasicUpdateMessage<AbstractMessage::name>;
VOCORE_BASIC_UPDATE_MESSAGES(VOCORE_MESSAGE)
#undef VOCORE_MESSAGE
#define VOCORE_MESSAGE(name, level) extern template class BasicUninstallMessage<AbstractMessage::name>;
VOCORE_BASIC_UNINSTALL_MESSAGES(VOCORE_MESSAGE)
#undef VOCORE_MESSAGE
/// @endcond

/// How far the download of the required chunks is.
class VOCORE_EXPORT DownloadProgressMessage : public AbstractUpdateMessage
{
public:
    /// So many bytes downloaded of so many, at a rate.
    DownloadProgressMessage(const VoDownloadSize& processed, const VoDownloadSize& total, const VoTransferRate& rate,
                            const VoUUID& packageID, const VoUUID& versionID);
    /// The same figures as one value.
    DownloadProgressMessage(const VoDownloadProgress& progress, const VoUUID& packageID, const VoUUID& versionID);
    ~DownloadProgressMessage() override;

    Type type() const override;                 ///< DownloadProgress
    const VoDownloadProgress& progress() const; ///< All figures as one value.
    const VoDownloadSize& processed() const;    ///< Bytes downloaded.
    const VoDownloadSize& received() const;     ///< The same, as the download service's notifications call it.
    const VoDownloadSize& total() const;        ///< Bytes there are; may be unknown.
    const VoTransferRate& transferRate() const; ///< Bytes per second.
    VoTimeDuration timeRemaining() const;       ///< See VoDownloadProgress::timeRemaining().

private:
    const VoDownloadProgress m_progress;
};

/// How many of the files to add, rewrite and remove are done.
class VOCORE_EXPORT InstallationProgressMessage : public AbstractUpdateMessage
{
public:
    /// So many files done of so many.
    InstallationProgressMessage(const VoDownloadSize& processed, const VoDownloadSize& total, const VoUUID& packageID,
                                const VoUUID& versionID);
    ~InstallationProgressMessage() override;

    Type type() const override;              ///< InstallationProgress
    const VoDataProgress& progress() const;  ///< Both figures as one value.
    const VoDownloadSize& processed() const; ///< Files done; a count, not bytes, though its text is that of a size.
    const VoDownloadSize& total() const;     ///< Files there are; likewise.
    std::uint64_t filesProcessed() const;    ///< Files done, as a plain number.
    std::uint64_t filesTotal() const;        ///< Files there are, as a plain number.

private:
    const VoDataProgress m_progress;
};

/// How many of the files to verify are done.
class VOCORE_EXPORT VerificationProgressMessage : public AbstractUpdateMessage
{
public:
    /// So many files checked of so many.
    VerificationProgressMessage(std::uint64_t processed, std::uint64_t total, const VoUUID& packageID,
                                const VoUUID& versionID);
    /// The same, with a text.
    VerificationProgressMessage(const VoString& message, std::uint64_t processed, std::uint64_t total,
                                const VoUUID& packageID, const VoUUID& versionID);
    ~VerificationProgressMessage() override;

    Type type() const override;      ///< VerificationProgress
    std::uint64_t processed() const; ///< Files checked.
    std::uint64_t total() const;     ///< Files there are.

private:
    const std::uint64_t m_processed;
    const std::uint64_t m_total;
};

/// How many files of a package are uninstalled.
class VOCORE_EXPORT UninstallProgressMessage : public AbstractUninstallMessage
{
public:
    /// So many files done of so many.
    UninstallProgressMessage(std::uint64_t processed, std::uint64_t total, const VoUUID& packageID);
    ~UninstallProgressMessage() override;

    Type type() const override;                  ///< UninstallProgress
    const VoUninstallProgress& progress() const; ///< Both figures as one value.
    std::uint64_t processed() const;             ///< Files done.
    std::uint64_t total() const;                 ///< Files there are.

private:
    const VoUninstallProgress m_progress;
};

/// Files of a package that could not be uninstalled.
class VOCORE_EXPORT UninstallFailedMessage : public AbstractUninstallMessage
{
public:
    /// With the reason.
    UninstallFailedMessage(const VoString& message, const VoUUID& packageID);
    ~UninstallFailedMessage() override;

    Type type() const override;      ///< UninstallFailed
    const VoString& message() const; ///< Why.

private:
    const VoString m_message;
};

/// The registry of installed packages changed on disk.
class VOCORE_EXPORT PackagesUpdatedMessage : public AbstractMessage
{
public:
    PackagesUpdatedMessage(); ///< Carries nothing.
    ~PackagesUpdatedMessage() override;

    Type type() const override; ///< PackagesUpdated
};

} // namespace vo::updater
