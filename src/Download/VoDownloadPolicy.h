#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoPair.h>
#include <Core/VoString.h>
#include <Download/VoDownloadSize.h>
#include <Download/VoTransferRate.h>
#include <FileSystem/VoUrl.h>
#include <Time/VoTimeDuration.h>

#include <cstdint>
#include <functional>

/// A file that is going to be asked for again after a failure.
struct VOCORE_EXPORT VoDownloadRetry
{
    VoUrl url;            ///< Where it is asked for next, without user name and password: a mirror, or the same place.
    unsigned attempt = 0; ///< The number of the attempt to come; the first attempt of a file is 1.
    VoTimeDuration delay; ///< How long is waited before it.
    VoString reason;      ///< The text of the failure.
};

/// A file that has been received.
struct VOCORE_EXPORT VoDownloadReceipt
{
    VoUrl url;                    ///< Where it came from, without user name and password.
    VoString tag;                 ///< What the server calls this version of it ("ETag"); empty when it does not say.
    std::int64_t transferred = 0; ///< The bytes of the body as they came, maybe compressed.
    bool isUnchanged =
        false; ///< It is the version of VoDownloadPolicy::knownTag: nothing came and nothing was written.
};

/// What a download does about failures, and how much it accepts. The defaults are the plain behaviour: no retries, no
/// mirrors, any size.
///
/// Retries and mirrors count for each file of a grouped download alone: a file that fails is asked for again while the
/// others go on.
///
///     VoDownloadPolicy policy;
///     policy.retries = 3;
///     policy.onRetry = [](const VoDownloadRetry& retry) { Show(retry.url, retry.reason); };
///     request->setPolicy(policy);
struct VOCORE_EXPORT VoDownloadPolicy
{
    /// How often a file is asked for again after a transient failure: a connection refused or lost, nothing received
    /// for too long, a body that is too slow or ends early, the answers 429 and 5xx. Nothing else is tried again, above
    /// all not 401, 403, 404 and 410. With mirrors, all places count as one attempt.
    unsigned retries = 0;

    /// @name Time between attempts
    /// The waits double from the first to the longest, and each is shortened by up to half at random, so that many
    /// clients do not come back in step. A server that names a time ("Retry-After") is left alone for that long at
    /// least; one that asks for more than @ref longestRetryAfter is not asked again.
    /// @{
    VoTimeDuration firstDelay = VoSeconds(1);        ///< Before the first retry.
    VoTimeDuration longestDelay = VoSeconds(30);     ///< What the growing delay stays below.
    VoTimeDuration longestRetryAfter = VoMinutes(5); ///< The most that a server may ask for.
    /// @}

    /// The download fails with "Download timed out" when a file that is being transferred gets no byte for this long.
    /// Files that wait for a free connection do not count. No limit when it is not positive.
    VoTimeDuration stallTimeout = VoSeconds(60);

    /// @name The lowest speed
    /// A body of which fewer bytes come in @ref lowestRateTime than @ref lowestRate makes of it fails with "Download
    /// too slow: " and the URL, a transient failure. Without this a server that sends a byte now and then is waited for
    /// without end. Bytes count as they come, maybe compressed, from the headers on; the time before those and the time
    /// without any byte are @ref stallTimeout's. No lower bound when one of the two is not positive.
    /// @{
    VoTransferRate lowestRate = VoTransferRate(64); ///< Far below what any line gives that is of use.
    VoTimeDuration lowestRateTime = VoSeconds(60);  ///< What the speed is the average of.
    /// @}

    /// The most that all files of the download take together, as an average; half a second's worth may come at once.
    /// More waits on its way, which is not held against the server's speed. No limit when it is not positive.
    VoTransferRate highestRate;

    /// The most bytes that a file may have, checked against what the server announces, what comes, and what that
    /// becomes when it comes compressed; unknown is no limit. More fails with "Download larger than allowed: " and the
    /// URL.
    VoDownloadSize sizeLimit = VoDownloadSize::Unknown();

    /// Asks caches on the way to fetch the file anew; for documents that change under one name.
    bool bypassCaches = false;

    /// Lets the server compress the body on its way ("gzip"), which the file does not show. For texts; what is
    /// compressed already would only cost time. Sizes in progress reports are then those of what is transferred.
    bool acceptCompressed = false;

    /// The version of the file that the caller has, as the receipt of an earlier download named it. When the server
    /// still has that one the download ends well without touching the target, and the receipt tells so. Only the first
    /// place is asked like this, and no grouped download: the words of one server mean nothing to another.
    VoString knownTag;

    /// @name Request headers
    /// Headers that requests carry besides the service's own, such as "Authorization". They go to the server of the
    /// file's own URL (scheme, host and port) only: neither mirrors nor the targets of redirects see them, and they are
    /// never logged.
    /// @{
    /// Adds a header; one of the same name is replaced.
    /// @throws VoInvalidParameterException "Invalid header name: " and the name, unless it is made of the characters
    ///         that names may have; "Header is the download service's own: " and the name, for those that it sets
    ///         itself or that concern the connection; "Invalid value of header: " and the name, when the value has
    ///         control characters
    void setHeader(const VoString& name, const VoString& value);
    const VoDeque<VoPair<VoString, VoString>>& headers() const noexcept { return m_headers; } ///< Names and values.
    /// @}

    /// @name Mirrors
    /// A file whose URL begins with @ref mirrored is also to be had at each of the mirrors, with that beginning
    /// replaced. After a failure on the way or at the server, a missing file included, the next place is asked at once.
    /// @{
    VoUrl mirrored;         ///< The beginning that mirrors replace; without it there are no mirrors.
    VoDeque<VoUrl> mirrors; ///< In the order in which they are asked.
    /// @}

    /// Called before each retry and each change to a mirror, on the thread of the download service and under the rules
    /// of notification callbacks; what it throws is logged. May be empty.
    std::function<void(const VoDownloadRetry&)> onRetry;

    /// Called for each file when it is there, before the download ends, in the same way as @ref onRetry. May be empty.
    std::function<void(const VoDownloadReceipt&)> onReceived;

    /// The wait before retry number `retry`, counted from 1. `jitter`, from 0 to 1, is how much of the random half
    /// is taken off.
    VoTimeDuration delayBefore(unsigned retry, double jitter) const noexcept;

    /// The places of the file at `url`: itself, then those at the mirrors.
    VoDeque<VoUrl> locations(const VoUrl& url) const;

private:
    VoDeque<VoPair<VoString, VoString>> m_headers;
};
