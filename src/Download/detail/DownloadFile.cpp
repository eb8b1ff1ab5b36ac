#include <Download/detail/DownloadFile.h>

#include <Maths/VoMaths.h>

#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>
#include <algorithm>
#include <utility>

namespace vo::detail {

namespace {

using Kind = VoDownloadException::Kind;

constexpr int MaximumRedirects = 20;
// A body may become twice as long as its header told, and this much more, before it is given up.
constexpr std::int64_t Tolerance = std::int64_t{1024} * 1024;

int StatusOf(const QNetworkReply& reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

// What a server calls a version of a file; nothing that could not be sent back as it came.
VoString TagOf(const QNetworkReply& reply)
{
    constexpr int longest = 256;
    const QByteArray tag = reply.rawHeader("ETag").trimmed();
    const auto isPlain = [](char c) { return c > 0x20 && c < 0x7F; };
    if (tag.size() > longest || !std::all_of(tag.begin(), tag.end(), isPlain))
        return VoString();
    return VoString(tag.toStdString());
}

// The schemes are also the guard against local files, which the network engine would read too.
bool IsSupported(const VoUrl& url)
{
    return url.scheme() == "http" || url.scheme() == "https";
}

double Jitter()
{
    constexpr long long steps = 1000;
    return static_cast<double>(VoMaths::RandomInteger(0, steps)) / static_cast<double>(steps);
}

} // namespace

bool IsRedirect(int status) noexcept
{
    return status == 301 || status == 302 || status == 303 || status == 305 || status == 307 || status == 308;
}

std::int64_t ContentLength(const QNetworkReply& reply)
{
    bool known = false;
    const qint64 length = reply.header(QNetworkRequest::ContentLengthHeader).toLongLong(&known);
    return known && length >= 0 ? length : -1;
}

DownloadFile::DownloadFile(const VoUrl& url, const VoFilePath& path, const VoDownloadSize& limit,
                           const VoDownloadPolicy& policy, bool isAlone)
    : m_policy(policy)
    , m_path(path)
    , m_limit(limit.isUnknown() ? policy.sizeLimit : limit)
    , m_isAlone(isAlone)
{
    for (const VoUrl& place : policy.locations(url))
        m_places.push_back({place});
}

const VoUrl* DownloadFile::unsupportedPlace() const
{
    const auto found =
        std::find_if_not(m_places.begin(), m_places.end(), [](const Place& place) { return IsSupported(place.url); });
    return found == m_places.end() ? nullptr : &found->url;
}

const VoUrl& DownloadFile::ownPlace() const
{
    return m_places.front().url;
}

const VoUrl& DownloadFile::place() const
{
    return m_places[m_place].url;
}

void DownloadFile::begin(Method method)
{
    m_method = method;
    m_target = place().toQUrl();
    m_redirects = 0;
}

void DownloadFile::sent()
{
    m_isAccepted = false;
    m_isUnchanged = false;
    m_announced = -1;
}

bool DownloadFile::follow(const QUrl& target)
{
    if (m_redirects >= MaximumRedirects)
        return false;
    m_target = target;
    ++m_redirects;
    return true;
}

bool DownloadFile::isAskedForChanges() const
{
    return m_method == Method::Get && m_place == 0 && m_isAlone && !m_policy.knownTag.isEmpty();
}

DownloadFailure DownloadFile::failure(const char* text, Kind kind) const
{
    return {VoDownloadException(text + DisplayText(m_target), kind), true, std::nullopt};
}

std::optional<DownloadFailure> DownloadFile::accept(QNetworkReply& reply)
{
    if (m_isAccepted)
        return std::nullopt;
    const int status = StatusOf(reply);
    if (status == 0 || (IsRedirect(status) && !reply.isFinished()))
        return std::nullopt;
    if (status == 304 && isAskedForChanges()) {
        m_isUnchanged = true;
        m_isAccepted = true;
        return std::nullopt;
    }
    if (status != 200)
        return StatusFailure(reply, m_target);
    if (auto refusal = acceptCoding(reply))
        return refusal;
    m_announced = ContentLength(reply);
    if (auto refusal = checkSize(m_announced))
        return refusal;
    m_tag = m_place == 0 ? TagOf(reply) : VoString();
    m_isAccepted = true;
    return std::nullopt;
}

std::optional<DownloadFailure> DownloadFile::acceptCoding(const QNetworkReply& reply)
{
    const QByteArray name = reply.rawHeader("Content-Encoding").trimmed().toLower();
    const bool isPlain = name.isEmpty() || name == "identity";
    if (!isPlain && !(m_policy.acceptCompressed && (name == "gzip" || name == "x-gzip"))) {
        const VoString text = "Unsupported content coding: " + VoString(QString::fromLatin1(name));
        return DownloadFailure{VoDownloadException(text), true, std::nullopt};
    }
    const Coding coding = isPlain ? Coding::None : Coding::Gzip;
    if (m_method == Method::Head) {
        m_headCoding = coding;
        return std::nullopt;
    }
    m_coding = coding;
    // Then the size that was told is not that of what comes.
    if (coding != m_headCoding)
        m_monitor->setTotal(VoDownloadSize::Unknown());
    return std::nullopt;
}

std::optional<DownloadFailure> DownloadFile::checkSize(std::int64_t bytes) const
{
    if (!m_limit.isUnknown() && bytes > m_limit.bytes())
        return failure("Download larger than allowed: ", Kind::Final);
    const VoDownloadSize expected = m_monitor->total();
    if (m_method == Method::Get && !expected.isUnknown() && expected.bytes() < bytes - Tolerance &&
        expected.bytes() < (bytes - Tolerance) / 2)
        return DownloadFailure{VoDownloadException("Download larger than announced"), true, std::nullopt};
    return std::nullopt;
}

std::optional<DownloadFailure> DownloadFile::take(QNetworkReply& reply, std::vector<char>& buffer, std::int64_t limit)
{
    if (m_isUnchanged)
        return std::nullopt;
    try {
        if (!m_streamer)
            m_streamer = std::make_unique<VoDownloadStreamer>(m_path, m_coding, m_limit.bytes());
        while (const std::int64_t count = m_streamer->take(reply, buffer, limit)) {
            limit -= count;
            m_monitor->bytesReceived(count);
            if (auto refusal = checkSize(m_monitor->received()))
                return refusal;
            // Both are bounded: a small body can uncompress to any size.
            if (!m_limit.isUnknown() && m_streamer->written() > m_limit.bytes())
                return failure("Download larger than allowed: ", Kind::Final);
            if (m_streamer->isDamaged())
                return failure("Download damaged: ", Kind::Transient);
        }
        return std::nullopt;
    } catch (const VoDownloadException& e) {
        return LocalFailure(e);
    }
}

std::optional<DownloadFailure> DownloadFile::finish()
{
    if (m_isUnchanged)
        return std::nullopt;
    // The framework notices a body that is shorter than its reply announces. One without an announcement may be cut off
    // unnoticed; then the header's size is all there is to hold it against.
    const std::int64_t expected = m_announced >= 0 ? m_announced : m_monitor->total().bytes();
    if (m_monitor->received() < expected || !m_streamer->isWhole())
        return failure("Download incomplete: ", Kind::Transient);
    try {
        m_streamer->finish();
        return std::nullopt;
    } catch (const VoDownloadException& e) {
        return LocalFailure(e);
    }
}

void DownloadFile::reset()
{
    m_streamer.reset();
}

std::optional<DownloadFile::Attempt> DownloadFile::nextAttempt(const DownloadFailure& failure)
{
    if (!failure.elsewhere)
        return std::nullopt;
    if (failure.exception.kind() == Kind::Final)
        m_places[m_place].isHopeless = true;
    for (std::size_t next = m_place + 1; next < m_places.size(); ++next) {
        if (!m_places[next].isHopeless) {
            m_place = next;
            return Attempt{VoTimeDuration(), m_round};
        }
    }
    return nextRound(failure);
}

std::optional<DownloadFile::Attempt> DownloadFile::nextRound(const DownloadFailure& failure)
{
    const auto first =
        std::find_if(m_places.begin(), m_places.end(), [](const Place& place) { return !place.isHopeless; });
    if (first == m_places.end() || m_round > m_policy.retries)
        return std::nullopt;
    VoTimeDuration delay = m_policy.delayBefore(m_round, Jitter());
    if (failure.retryAfter) {
        if (*failure.retryAfter > m_policy.longestRetryAfter)
            return std::nullopt;
        delay = std::max(delay, *failure.retryAfter);
    }
    m_place = static_cast<std::size_t>(first - m_places.begin());
    return Attempt{delay, ++m_round};
}

} // namespace vo::detail
