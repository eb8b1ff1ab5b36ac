#pragma once

#include <Core/VoString.h>
#include <Download/VoDownloadPolicy.h>
#include <Download/VoDownloadSize.h>
#include <Download/detail/DownloadFailure.h>
#include <Download/detail/VoDownloadMonitors.h>
#include <Download/detail/VoDownloadStreamer.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoUrl.h>

#include <QtCore/QUrl>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class QNetworkReply;

namespace vo::detail {

bool IsRedirect(int status) noexcept; ///< Whether a status sends to another place.

/// The length of a body by its headers; -1 when they do not say.
std::int64_t ContentLength(const QNetworkReply& reply);

/// What is asked of a server.
enum class DownloadMethod
{
    Head,
    Get
};

/// One file of a download: the places that it may come from, the answer of the one that is being asked, and what has
/// come of its body. It decides and writes; sending, waiting and telling are the download's.
///
/// The order of its steps: begin(), then sent() for each request, follow() where that is redirected; accept() until the
/// answer is judged, take() as often as bytes come, finish(). A failure that any of them gives ends the attempt:
/// reset(), and nextAttempt() says whether and when there is another one.
class DownloadFile
{
public:
    using Method = DownloadMethod;

    /// What is to be done after a failure.
    struct Attempt
    {
        VoTimeDuration delay; ///< 0 for the next place of the same round.
        unsigned number = 1;  ///< Rounds begun, this one included.
    };

    /// A limit that is unknown is that of the policy, which must outlive the file.
    DownloadFile(const VoUrl& url, const VoFilePath& path, const VoDownloadSize& limit, const VoDownloadPolicy& policy,
                 bool isAlone);

    /// The counters, set before anything begins.
    void setMonitor(std::unique_ptr<VoSingleFileDownloadMonitor> monitor) { m_monitor = std::move(monitor); }
    VoSingleFileDownloadMonitor& monitor() const { return *m_monitor; }

    const VoUrl* unsupportedPlace() const; ///< One whose scheme is not of the network; null when there is none.
    const VoUrl& place() const;            ///< The place being asked.
    const VoUrl& ownPlace() const;         ///< The one that was asked for: neither a mirror nor a redirect's target.
    Method method() const { return m_method; }
    const QUrl& target() const { return m_target; } ///< Where the request goes; not place() after redirects.

    void begin(Method method);       ///< Begins to ask the current place.
    void sent();                     ///< A request has been sent: nothing is known of its answer.
    bool follow(const QUrl& target); ///< Turns to where a redirect leads; false when there were too many.
    bool isAskedForChanges() const;  ///< Whether the answer may be that nothing has changed.

    /// Looks at status and headers before a byte of the body is taken: error pages must not get into the file. Neither
    /// a failure nor isAccepted() after it: the headers are not there yet, or a redirect is coming.
    std::optional<DownloadFailure> accept(QNetworkReply& reply);
    bool isAccepted() const { return m_isAccepted; }
    bool isUnchanged() const { return m_isUnchanged; } ///< The caller has this version already.
    const VoString& tag() const { return m_tag; } ///< This version's; only where the caller may ask for changes of it.

    /// Takes what has come of the body, at most `limit` bytes of it.
    std::optional<DownloadFailure> take(QNetworkReply& reply, std::vector<char>& buffer, std::int64_t limit);
    /// Checks that the body is whole and puts it in its place.
    std::optional<DownloadFailure> finish();
    void reset(); ///< Lets go of what has come, but for the counters.

    /// Goes to the next place that may have the file, or to the next round over all of them; nothing when no hope is
    /// left, or when the server asks for more patience than the policy has.
    std::optional<Attempt> nextAttempt(const DownloadFailure& failure);

private:
    struct Place
    {
        VoUrl url;
        bool isHopeless = false; // it will not give the file however often it is asked
    };
    using Coding = VoDownloadStreamer::Coding;

    std::optional<DownloadFailure> acceptCoding(const QNetworkReply& reply);
    std::optional<DownloadFailure> checkSize(std::int64_t bytes) const;
    DownloadFailure failure(const char* text, VoDownloadException::Kind kind) const;
    std::optional<Attempt> nextRound(const DownloadFailure& failure);

    const VoDownloadPolicy& m_policy;
    const VoFilePath m_path;
    const VoDownloadSize m_limit;
    const bool m_isAlone;
    std::unique_ptr<VoSingleFileDownloadMonitor> m_monitor;

    std::vector<Place> m_places;
    std::size_t m_place = 0;
    unsigned m_round = 1;

    Method m_method = Method::Head;
    QUrl m_target;
    int m_redirects = 0;

    bool m_isAccepted = false;
    bool m_isUnchanged = false;
    std::int64_t m_announced = -1;      // by the headers of the body's reply; -1 when they do not say
    Coding m_headCoding = Coding::None; // in which the size was told
    Coding m_coding = Coding::None;     // of the body's reply
    VoString m_tag;
    std::unique_ptr<VoDownloadStreamer> m_streamer; // null before the first byte, and between attempts
};

} // namespace vo::detail
