#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadException.h>
#include <Download/VoDownloadSize.h>
#include <Download/VoTransferRate.h>

#include <cstdint>

class VoDownloadCompleteNotification;
class VoDownloadFailedNotification;
class VoDownloadPausedNotification;
class VoDownloadProgressNotification;
class VoDownloadStartedNotification;
class VoNetworkStatusNotification;

/// What happened to a download. A download sends Started when its files begin to come, Progress while they do, and at
/// its end exactly one of Complete and Failed.
///
/// Notifications are constant and shared by all receivers. The as...() casts throw VoInvalidCastException when the
/// notification is of another kind.
class VOCORE_EXPORT VoDownloadNotification
{
public:
    /// The kinds of notifications.
    enum Type : std::int32_t
    {
        Complete = 0,      ///< VoDownloadCompleteNotification
        Failed = 1,        ///< VoDownloadFailedNotification
        NetworkStatus = 2, ///< VoNetworkStatusNotification
        Paused = 3,        ///< VoDownloadPausedNotification
        Progress = 4,      ///< VoDownloadProgressNotification
        Started = 5        ///< VoDownloadStartedNotification
    };

    VoDownloadNotification(const VoDownloadNotification&) = delete;
    VoDownloadNotification& operator=(const VoDownloadNotification&) = delete;
    virtual ~VoDownloadNotification();

    virtual Type type() const = 0;     ///< Which kind of notification it is.
    const VoUUID& id() const noexcept; ///< The download concerned; empty for the status of the network.

    /// This notification as the kind that type() tells.
    /// @{
    const VoDownloadCompleteNotification& asCompleteMessage() const;
    const VoDownloadFailedNotification& asFailedMessage() const;
    const VoNetworkStatusNotification& asNetworkStatusMessage() const;
    const VoDownloadPausedNotification& asPausedMessage() const;
    const VoDownloadProgressNotification& asProgressMessage() const;
    const VoDownloadStartedNotification& asStartedMessage() const;
    /// @}

protected:
    explicit VoDownloadNotification(const VoUUID& id); ///< About a download.

private:
    const VoUUID m_id;
};

/// All files are in their places.
class VOCORE_EXPORT VoDownloadCompleteNotification final : public VoDownloadNotification
{
public:
    explicit VoDownloadCompleteNotification(const VoUUID& id); ///< About a download.
    ~VoDownloadCompleteNotification() override;

    Type type() const override; ///< Complete
};

/// The download has failed or was cancelled. Files that were there before are as they were.
class VOCORE_EXPORT VoDownloadFailedNotification final : public VoDownloadNotification
{
public:
    VoDownloadFailedNotification(const VoString& message, const VoUUID& id); ///< A final failure.
    /// A failure with what its exception tells.
    VoDownloadFailedNotification(const VoDownloadException& failure, const VoUUID& id);
    ~VoDownloadFailedNotification() override;

    Type type() const override;                          ///< Failed
    const VoString& message() const noexcept;            ///< Why.
    const VoDownloadException& failure() const noexcept; ///< The exception that waiting callers get.

private:
    const VoDownloadException m_failure;
};

/// Whether the network can be reached has changed.
class VOCORE_EXPORT VoNetworkStatusNotification final : public VoDownloadNotification
{
public:
    /// The states of the network.
    enum Status : std::int32_t
    {
        Connected = 0,    ///< It can be reached.
        Disconnected = 1, ///< It cannot.
        Unknown = 2       ///< The system does not say.
    };

    explicit VoNetworkStatusNotification(Status status); ///< The state from now on.
    ~VoNetworkStatusNotification() override;

    Type type() const override;     ///< NetworkStatus
    Status status() const noexcept; ///< The state from now on.
    VoString statusString() const;  ///< "Connected", "Disconnected" or "Unknown".

private:
    const Status m_status;
};

/// A download was interrupted and will go on. The service itself never sends it.
class VOCORE_EXPORT VoDownloadPausedNotification final : public VoDownloadNotification
{
public:
    explicit VoDownloadPausedNotification(const VoUUID& id); ///< About a download.
    ~VoDownloadPausedNotification() override;

    Type type() const override; ///< Paused
};

/// How far a download is. The received bytes never become fewer, and the last report has all of them.
class VOCORE_EXPORT VoDownloadProgressNotification final : public VoDownloadNotification
{
public:
    /// So many bytes of so many, at a rate.
    VoDownloadProgressNotification(const VoDownloadSize& received, const VoDownloadSize& total,
                                   const VoTransferRate& rate, const VoUUID& id);
    ~VoDownloadProgressNotification() override;

    Type type() const override;                          ///< Progress
    const VoDownloadSize& received() const noexcept;     ///< Bytes received.
    const VoDownloadSize& processed() const noexcept;    ///< The same, as the updater's messages call it.
    const VoDownloadSize& total() const noexcept;        ///< Bytes there are; unknown when a server does not tell.
    const VoTransferRate& transferRate() const noexcept; ///< Bytes per second, smoothed.

private:
    const VoDownloadSize m_received;
    const VoDownloadSize m_total;
    const VoTransferRate m_rate;
};

/// The sizes are known and the files are being fetched.
class VOCORE_EXPORT VoDownloadStartedNotification final : public VoDownloadNotification
{
public:
    explicit VoDownloadStartedNotification(const VoUUID& id); ///< About a download.
    ~VoDownloadStartedNotification() override;

    Type type() const override; ///< Started
};
