#include <VoTestSupport.h>

#include <Core/VoSharedPtr.h>
#include <Download/VoDownloadNotification.h>
#include <Download/VoDownloadPolicy.h>
#include <Download/detail/DownloadFailure.h>
#include <Download/detail/RateLimit.h>
#include <Download/detail/SpeedFloor.h>
#include <Download/detail/VoDownloadMonitors.h>
#include <Download/detail/VoRedirectPolicy.h>

#include <QtCore/QDateTime>
#include <QtCore/QUrl>

using vo::detail::RedirectVerdict;

namespace {

QUrl Url(const char* text)
{
    return QUrl(QString::fromLatin1(text));
}

} // namespace

TEST(RedirectPolicy, AllowsOnlyTheConfiguredHostsAndOnlyHttpsForAnotherScheme)
{
    constexpr auto approved = RedirectVerdict::Approved;
    constexpr auto unsafeScheme = RedirectVerdict::UnsafeScheme;
    constexpr auto unsafeDomain = RedirectVerdict::UnsafeDomain;
    const struct
    {
        const char* from;
        const char* to;
        const char* primary;
        const char* secondary;
        RedirectVerdict verdict;
    } rows[] = {
        {"http://a.test/x", "https://good.test/x", "good.test", "", approved},
        {"https://a.test/x", "http://good.test/x", "good.test", "", unsafeScheme},
        {"https://a.test/x", "https://evil.test/x", "good.test", "", unsafeDomain},
        {"http://a.test/x", "http://good.test/y", "good.test", "", approved},
        {"http://a.test/x", "ftp://good.test/y", "good.test", "", unsafeScheme},
        {"http://a.test/x", "file:///etc/passwd", "good.test", "", unsafeScheme},
        {"https://a.test/x", "https://a.test/y", "", "", unsafeDomain}, // the same host is no reason
        {"https://a.test/x", "https:///y", "", "", unsafeDomain},
        {"https://a.test/x", "https://GOOD.Test/y", "good.test", "", approved},
        {"https://a.test/x", "https://good.test./y", "good.test", "", approved},
        {"https://a.test/x", "https://good.test:8443/y", "good.test", "", approved},
        {"https://a.test/x", "https://sub.good.test/y", "good.test", "", unsafeDomain},
        {"https://a.test/x", "https://good.test@evil.test/y", "good.test", "", unsafeDomain},
        {"https://a.test/x", "https://cdn.example.com/y", "", "example.com", approved},
        {"https://a.test/x", "https://cdn.example.com/y", "", ".example.com", approved},
        {"https://a.test/x", "https://example.com/y", "", "example.com", approved},
        {"https://a.test/x", "https://evilexample.com/y", "", "example.com", unsafeDomain},
        {"https://a.test/x", "https://example.com.evil.test/y", "", "example.com", unsafeDomain},
        {"https://a.test/x", "https://xn--mller-kva.test/y", "m\xC3\xBCller.test", "", approved},
        {"http://a.test/x", "http://127.0.0.1:81/y", "127.0.0.1", "", approved},
        {"http://a.test/x", "http://[::1]:81/y", "::1", "", approved},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(vo::detail::RedirectDecision(Url(row.from), Url(row.to), {row.primary, row.secondary}), row.verdict)
            << row.from << " -> " << row.to << " with " << row.primary << " and " << row.secondary;
    }
}

TEST(DownloadPolicy, HeadersCannotSmuggleOthersNorReplaceTheServicesOwn)
{
    VoDownloadPolicy policy;
    for (const char* value : {"a\r\nHost: evil", "a\nb", "a\rb", "\x7f", "\x01"})
        EXPECT_THROW_MSG(policy.setHeader("X-A", value), VoInvalidParameterException, "Invalid value of header: X-A");
    EXPECT_THROW_MSG(policy.setHeader("X-A", VoString(std::string("a\0b", 3))), VoInvalidParameterException,
                     "Invalid value of header: X-A");
    for (const char* name : {"", "X A", "X:", "X\r\n", "\xc3\xa4"})
        EXPECT_THROW_MSG(policy.setHeader(name, "v"), VoInvalidParameterException,
                         VoString("Invalid header name: ") + name);
    for (const char* name : {"host", "Transfer-Encoding", "IF-NONE-MATCH"})
        EXPECT_THROW_MSG(policy.setHeader(name, "v"), VoInvalidParameterException,
                         VoString("Header is the download service's own: ") + name);
    EXPECT_TRUE(policy.headers().isEmpty());
}

TEST(DownloadPolicy, ReadsRetryAfterAsSecondsOrDate)
{
    const QDateTime now = QDateTime::fromString(QStringLiteral("2024-02-29T12:00:00Z"), Qt::ISODate);
    const struct
    {
        const char* value;
        long long seconds; // -1: nothing
    } rows[] = {
        {"", -1},
        {"7", 7},
        {" 120 ", 120},
        {"-1", -1},
        {"1.5", -1},
        {"soon", -1},
        {"99999999999999999999999", 1000000000},
        {"Thu, 29 Feb 2024 12:00:30 GMT", 30},
        {"Thu, 29 Feb 2024 11:00:00 GMT", 0},
        {"Thu, 31 Feb 2024 11:00:00 GMT", -1},
    };
    for (const auto& row : rows) {
        const auto asked = vo::detail::RetryAfter(row.value, now);
        EXPECT_EQ(asked ? asked->count() / 1000000000 : -1, row.seconds) << '"' << row.value << '"';
    }
}

TEST(DownloadPolicy, DelaysDoubleUpToTheLongestAndLoseAtMostHalf)
{
    VoDownloadPolicy policy;
    policy.firstDelay = VoSeconds(1);
    policy.longestDelay = VoSeconds(10);
    const double full[] = {1, 2, 4, 8, 10, 10};
    for (unsigned i = 0; i < 6; ++i) {
        EXPECT_DOUBLE_EQ(policy.delayBefore(i + 1, 0).seconds(), full[i]);
        EXPECT_DOUBLE_EQ(policy.delayBefore(i + 1, 1).seconds(), full[i] / 2);
    }
    EXPECT_DOUBLE_EQ(policy.delayBefore(4000000000U, 0).seconds(), 10);
}

TEST(DownloadPolicy, TheLowestSpeedIsAnAverageOverEachSpan)
{
    using Received = std::vector<std::int64_t>; // at each second
    for (const auto& [rate, seconds, received, expected] :
         {std::tuple(2, 3, Received{0, 1, 2, 3}, 3), std::tuple(2, 3, Received{0, 2, 4, 6, 8, 10, 12}, -1),
          std::tuple(2, 3, Received{0, 0, 0, 6, 8, 10, 11}, 6), std::tuple(2, 3, Received{0, 0, 0, 6, 6, 6, 12}, -1),
          std::tuple(2, 3, Received{0, 1000, 1000, 1000, 1001, 1002, 1003}, 6),
          std::tuple(0, 3, Received{0, 0, 0, 0, 0}, -1), std::tuple(2, 0, Received{0, 0, 0, 0, 0}, -1)}) {
        vo::detail::SpeedFloor floor{VoTransferRate(rate), VoSeconds(seconds)};
        int below = -1; // the second at which it is found too slow
        for (int second = 1; below < 0 && second < static_cast<int>(received.size()); ++second)
            below = floor.isBelow(second * 1000, received[static_cast<std::size_t>(second)]) ? second : -1;
        EXPECT_EQ(below, expected) << rate << " over " << seconds << ", " << received.back();
    }
}

TEST(DownloadPolicy, TheHighestSpeedHoldsOnAverageWithABurstOfHalfASecond)
{
    vo::detail::RateLimit limit(VoTransferRate(2000));
    for (const auto& [now, allowed, taken] :
         {std::tuple(70000, 1000, 400), std::tuple(70000, 600, 600), std::tuple(70000, 0, 0), std::tuple(70001, 2, 2),
          std::tuple(70101, 200, 0), std::tuple(9999999, 1000, 1000)}) {
        EXPECT_EQ(limit.allowed(now), allowed) << now;
        limit.took(taken);
    }
    vo::detail::RateLimit none{VoTransferRate()};
    none.took(none.allowed(0));
    EXPECT_GT(none.allowed(0), 1000000000) << "no limit is used up";
}

TEST(DownloadPolicy, MirrorsReplaceTheBeginningOfUrlsAtABoundary)
{
    const struct
    {
        const char* mirrored;
        const char* mirror;
        const char* url;
        const char* expected; // null: no mirror
    } rows[] = {
        {"http://a.test/r/", "http://b.test/", "http://a.test/r/x/y", "http://b.test/x/y"},
        {"http://a.test/r", "http://b.test/", "http://a.test/r/x", "http://b.test/x"},
        {"http://a.test/r/", "http://b.test", "http://a.test/r/x", "http://b.test/x"},
        {"http://a.test", "https://b.test/m", "http://a.test/x", "https://b.test/m/x"},
        {"http://a.test", "https://b.test/m", "http://a.test.evil/x", nullptr},
        {"http://a.test/r/", "http://b.test/", "http://a.test/other", nullptr},
        {"", "http://b.test/", "http://a.test/other", nullptr},
    };
    for (const auto& row : rows) {
        VoDownloadPolicy policy;
        policy.mirrored = VoUrl(row.mirrored);
        policy.mirrors.pushBack(VoUrl(row.mirror));
        const VoDeque<VoUrl> places = policy.locations(VoUrl(row.url));
        ASSERT_EQ(places.size(), row.expected ? 2U : 1U) << row.url;
        EXPECT_EQ(places[0], VoUrl(row.url));
        if (row.expected) {
            EXPECT_EQ(places[1], VoUrl(row.expected));
        }
    }
}

TEST(DownloadMonitors, RefuseAPhaseWhileAnotherRunsAndSayWhich)
{
    const auto nothing = [] {};
    VoSingleDownloadMonitor single(nothing, nothing);
    VoGroupDownloadMonitor group(2, nothing, nothing);
    VoSingleFileDownloadMonitor file(single, nothing, nothing);
    VoGroupFileDownloadMonitor groupFile(group, "x", nothing, nothing);
    for (VoAbstractDownloadMonitor* const monitor :
         {static_cast<VoAbstractDownloadMonitor*>(&single), static_cast<VoAbstractDownloadMonitor*>(&group),
          static_cast<VoAbstractDownloadMonitor*>(&file), static_cast<VoAbstractDownloadMonitor*>(&groupFile)}) {
        monitor->requestHeader();
        EXPECT_THROW_MSG(monitor->requestHeader(), VoInvalidCallException,
                         "Cannot initialise header request when currently downloading header information.");
        EXPECT_THROW_MSG(monitor->requestDownload(), VoInvalidCallException,
                         "Cannot initialise download request when currently downloading header information.");
        monitor->endPhase();
        monitor->requestDownload();
        EXPECT_THROW_MSG(monitor->requestHeader(), VoInvalidCallException,
                         "Cannot initialise header request when currently downloading files.");
        EXPECT_THROW_MSG(monitor->requestDownload(), VoInvalidCallException,
                         "Cannot initialise download request when currently downloading files.");
        monitor->endPhase();
        EXPECT_EQ(monitor->phase(), VoAbstractDownloadMonitor::Idle);
    }
}

TEST(DownloadMonitors, AddUpFilesAndTakeBackWhatIsFetchedAnew)
{
    const auto nothing = [] {};
    VoGroupDownloadMonitor group(2, nothing, nothing);
    VoGroupFileDownloadMonitor a(group, "a", nothing, nothing);
    VoGroupFileDownloadMonitor b(group, "b", nothing, nothing);
    group.requestHeader();
    a.headerReceived(100);
    b.headerReceived(50);
    EXPECT_EQ(group.total().bytes(), 150);
    a.bytesReceived(60);
    b.bytesReceived(50);
    a.discardReceived();
    EXPECT_EQ(a.received(), 0);
    EXPECT_EQ(group.received(), 50);
    group.addTotal(VoDownloadSize::Unknown());
    EXPECT_TRUE(group.total().isUnknown());
    group.endPhase();
    group.requestHeader();
    EXPECT_EQ(group.total().bytes(), 0) << "a new header phase begins with nothing";
}

TEST(DownloadNotification, CastsOnlyToItsOwnKind)
{
    const VoUUID id("id");
    const VoDownloadProgressNotification progress(10, 20, VoTransferRate(5), id);
    const VoDownloadNotification& base = progress;
    EXPECT_EQ(&base.asProgressMessage(), &progress);
    EXPECT_THROW_MSG(base.asFailedMessage(), VoInvalidCastException,
                     "Invalid cast from VoDownloadProgressNotification to VoDownloadFailedNotification");

    EXPECT_EQ(VoNetworkStatusNotification(VoNetworkStatusNotification::Disconnected).statusString(), "Disconnected");
    EXPECT_EQ(VoNetworkStatusNotification(VoNetworkStatusNotification::Unknown).statusString(), "Unknown");
}
