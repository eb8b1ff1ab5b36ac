#include <Download/detail/VoDownloadMonitors.h>

#include <Core/VoException.h>
#include <Download/detail/DownloadLog.h>

#include <utility>

using vo::detail::DownloadLog;

VoAbstractDownloadMonitor::VoAbstractDownloadMonitor(Issue headers, Issue files)
    : m_headers(std::move(headers))
    , m_files(std::move(files))
{
}

VoAbstractDownloadMonitor::~VoAbstractDownloadMonitor() = default;

void VoAbstractDownloadMonitor::requestHeader()
{
    start(Headers, "header", m_headers);
}

void VoAbstractDownloadMonitor::requestDownload()
{
    start(Files, "download", m_files);
}

void VoAbstractDownloadMonitor::start(Phase phase, const char* what, const Issue& issue)
{
    int running = Idle;
    if (!m_phase.compare_exchange_strong(running, phase))
        throw VoInvalidCallException(VoString("Cannot initialise ") + what + " request when currently downloading " +
                                     (running == Headers ? "header information." : "files."));
    m_received.exchange(0);
    if (phase == Headers)
        m_total = 0; // the files' phase goes by the sizes that the headers' phase has found
    try {
        started(phase);
        issue();
    } catch (...) {
        endPhase();
        throw;
    }
}

void VoAbstractDownloadMonitor::endPhase() noexcept
{
    m_phase = Idle;
}

VoAbstractDownloadMonitor::Phase VoAbstractDownloadMonitor::phase() const noexcept
{
    return static_cast<Phase>(m_phase.load());
}

std::int64_t VoAbstractDownloadMonitor::received() const noexcept
{
    return m_received;
}

VoDownloadSize VoAbstractDownloadMonitor::total() const
{
    return m_total;
}

void VoAbstractDownloadMonitor::addTotal(const VoDownloadSize& size)
{
    m_total += size;
}

void VoAbstractDownloadMonitor::setTotal(const VoDownloadSize& size)
{
    m_total = size;
}

void VoAbstractDownloadMonitor::addReceived(std::int64_t bytes) noexcept
{
    m_received += bytes;
}

void VoAbstractDownloadMonitor::started(Phase) {}

bool VoAbstractDownloadMonitor::IsLogged()
{
    return DownloadLog().isEnabled(vo::logging::Level::Diagnostic);
}

void VoAbstractDownloadMonitor::Log(const VoString& text)
{
    DownloadLog().diagnostic(text);
}

VoSingleDownloadMonitor::~VoSingleDownloadMonitor() = default;

void VoSingleDownloadMonitor::started(Phase phase)
{
    if (phase == Files)
        Log("Download started");
}

void VoSingleDownloadMonitor::headersComplete()
{
    endPhase();
}

void VoSingleDownloadMonitor::filesComplete()
{
    setTotal(received()); // which the headers may have got wrong, or not told
    endPhase();
}

VoGroupDownloadMonitor::VoGroupDownloadMonitor(std::size_t files, Issue headers, Issue bodies)
    : VoSingleDownloadMonitor(std::move(headers), std::move(bodies))
    , m_files(files)
{
}

VoGroupDownloadMonitor::~VoGroupDownloadMonitor() = default;

void VoGroupDownloadMonitor::headersComplete()
{
    VoSingleDownloadMonitor::headersComplete();
    Log("Group header download complete. Total size [" + total().toString() + "] : (" + VoString(m_files) + " files)");
}

void VoGroupDownloadMonitor::filesComplete()
{
    VoSingleDownloadMonitor::filesComplete();
    Log("Group download complete: (" + VoString(m_files) + " files, " + total().toString() + ")");
}

VoSingleFileDownloadMonitor::VoSingleFileDownloadMonitor(VoAbstractDownloadMonitor& download, Issue header, Issue body)
    : VoAbstractDownloadMonitor(std::move(header), std::move(body))
    , m_download(download)
{
}

VoSingleFileDownloadMonitor::~VoSingleFileDownloadMonitor() = default;

void VoSingleFileDownloadMonitor::headerReceived(const VoDownloadSize& size)
{
    if (IsLogged())
        Log("Header received - file size [" + size.toString() + "]" + name());
    setTotal(size);
    m_download.addTotal(size);
    endPhase();
}

void VoSingleFileDownloadMonitor::bytesReceived(std::int64_t bytes)
{
    addReceived(bytes);
    m_download.addReceived(bytes);
}

void VoSingleFileDownloadMonitor::discardReceived() noexcept
{
    const std::int64_t bytes = received();
    addReceived(-bytes);
    m_download.addReceived(-bytes);
}

void VoSingleFileDownloadMonitor::fileComplete()
{
    if (IsLogged())
        Log("Download received (" + VoDownloadSize(received()).toString() + ")" + name());
    endPhase();
}

VoString VoSingleFileDownloadMonitor::name() const
{
    return VoString();
}

VoGroupFileDownloadMonitor::VoGroupFileDownloadMonitor(VoAbstractDownloadMonitor& download, const VoString& name,
                                                       Issue header, Issue body)
    : VoSingleFileDownloadMonitor(download, std::move(header), std::move(body))
    , m_name(" : " + name)
{
}

VoGroupFileDownloadMonitor::~VoGroupFileDownloadMonitor() = default;

VoString VoGroupFileDownloadMonitor::name() const
{
    return m_name;
}
