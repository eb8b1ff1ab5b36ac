#pragma once

#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Download/VoDownloadSize.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>

/// Follows a download, or one file of it, through its phases: idle, headers, idle, files, idle. A phase starts only
/// when none is running.
///
/// Phase and received bytes may be read on any thread; everything else belongs to the thread of the download.
class VOCORE_PRIVATE_EXPORT VoAbstractDownloadMonitor
{
public:
    /// What is being asked for.
    enum Phase : int
    {
        Idle = 0,
        Headers = 1,
        Files = 2
    };

    /// Sends the requests of a phase.
    using Issue = std::function<void()>;

    VoAbstractDownloadMonitor(Issue headers, Issue files);
    VoAbstractDownloadMonitor(const VoAbstractDownloadMonitor&) = delete;
    VoAbstractDownloadMonitor& operator=(const VoAbstractDownloadMonitor&) = delete;
    virtual ~VoAbstractDownloadMonitor();

    /// Forgets all sizes, enters the header phase and issues its requests.
    /// @throws VoInvalidCallException "Cannot initialise header request when currently downloading " and "header
    /// information." or "files."
    void requestHeader();
    /// Enters the download phase and issues its requests.
    /// @throws VoInvalidCallException "Cannot initialise download request when currently downloading " and "header
    /// information." or "files."
    void requestDownload();
    void endPhase() noexcept; ///< Back to idle.

    Phase phase() const noexcept;           ///< The running phase.
    std::int64_t received() const noexcept; ///< Bytes of bodies received.
    VoDownloadSize total() const;           ///< Bytes expected; unknown when any size is.

    void addTotal(const VoDownloadSize& size);     ///< A size has become known, or is known to be unknown.
    void setTotal(const VoDownloadSize& size);     ///< The whole size is known better.
    void addReceived(std::int64_t bytes) noexcept; ///< Bytes have come, or, when negative, are void.

protected:
    virtual void started(Phase phase); ///< A phase begins: to be logged and counted.

    static bool IsLogged();                ///< Whether log() has an effect.
    static void Log(const VoString& text); ///< A diagnostic of the category "download".

private:
    void start(Phase phase, const char* what, const Issue& issue);

    const Issue m_headers;
    const Issue m_files;
    std::atomic<int> m_phase{Idle};
    std::atomic<std::int64_t> m_received{0};
    VoDownloadSize m_total;
};

/// A download of one file.
class VOCORE_PRIVATE_EXPORT VoSingleDownloadMonitor : public VoAbstractDownloadMonitor
{
public:
    using VoAbstractDownloadMonitor::VoAbstractDownloadMonitor;
    ~VoSingleDownloadMonitor() override;

    virtual void headersComplete(); ///< All sizes are known: ends the phase.
    virtual void filesComplete();   ///< All files are there: ends the phase.

protected:
    void started(Phase phase) override;
};

/// A download of several files.
class VOCORE_PRIVATE_EXPORT VoGroupDownloadMonitor final : public VoSingleDownloadMonitor
{
public:
    VoGroupDownloadMonitor(std::size_t files, Issue headers, Issue bodies);
    ~VoGroupDownloadMonitor() override;

    void headersComplete() override;
    void filesComplete() override;

private:
    const std::size_t m_files;
};

/// The file of a single download. What becomes known about the file counts for the download too.
class VOCORE_PRIVATE_EXPORT VoSingleFileDownloadMonitor : public VoAbstractDownloadMonitor
{
public:
    VoSingleFileDownloadMonitor(VoAbstractDownloadMonitor& download, Issue header, Issue body);
    ~VoSingleFileDownloadMonitor() override;

    void headerReceived(const VoDownloadSize& size); ///< The size is known, or unknown for good: ends the phase.
    void bytesReceived(std::int64_t bytes);          ///< Bytes of the body have come.
    void discardReceived() noexcept;                 ///< The bytes are void: the file will be fetched anew.
    void fileComplete();                             ///< The file is there: ends the phase.

protected:
    virtual VoString name() const; ///< What log lines add about the file.

private:
    VoAbstractDownloadMonitor& m_download;
};

/// One file of a group.
class VOCORE_PRIVATE_EXPORT VoGroupFileDownloadMonitor final : public VoSingleFileDownloadMonitor
{
public:
    VoGroupFileDownloadMonitor(VoAbstractDownloadMonitor& download, const VoString& name, Issue header, Issue body);
    ~VoGroupFileDownloadMonitor() override;

protected:
    VoString name() const override;

private:
    const VoString m_name;
};
