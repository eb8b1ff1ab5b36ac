#include "DownloadScenarios.h"
#include "RunService.h"

#include <LogCapture.h>
#include <ScratchFolder.h>
#include <ScriptedHttpServer.h>
#include <VoTestSupport.h>

#include <Core/VoPair.h>
#include <Core/VoSharedPtr.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadException.h>
#include <Download/VoDownloadManager.h>
#include <Download/VoDownloadNotification.h>
#include <Download/VoDownloadPolicy.h>
#include <Download/VoDownloadRequest.h>
#include <Download/VoGroupedDownloadRequest.h>
#include <Download/detail/VoDownloadManagerImpl.h>
#include <Download/detail/VoDownloadManagerInterface.h>
#include <Download/detail/VoSingleDownload.h>
#include <FileSystem/VoUrl.h>
#include <Threading/VoReceiver.h>
#include <Threading/VoStopFlag.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtCore/QProcess>
#include <QtCore/QTimer>
#include <QtNetwork/QNetworkAccessManager>
#include <chrono>
#include <iostream>

#include <zlib.h>

#if defined(__unix__)
#include <sys/resource.h>
#endif

using vo::test::OutcomeOf;
using vo::test::ScratchFolder;
using vo::test::ScriptedAnswer;
using vo::test::ScriptedHttpServer;
using Fault = ScriptedAnswer::Fault;
using Notification = VoSharedPtr<VoDownloadNotification>;
using vo::test::Refusal;

namespace {

/// Keeps what a callback was told.
class Told
{
public:
    VoDownloadManager::Callback callback()
    {
        return [this](const Notification& notification) {
            m_notifications.push_back(notification);
            if (m_onEach)
                m_onEach(*notification);
        };
    }
    void onEach(std::function<void(const VoDownloadNotification&)> action) { m_onEach = std::move(action); }

    /// The kinds in order, equal neighbours once: "Started Progress Complete".
    std::string story() const
    {
        static const char* const names[] = {"Complete", "Failed", "NetworkStatus", "Paused", "Progress", "Started"};
        std::string text;
        int last = -1;
        for (const Notification& notification : m_notifications) {
            if (notification->type() == last && notification->type() == VoDownloadNotification::Progress)
                continue;
            last = notification->type();
            text += (text.empty() ? "" : " ") + std::string(names[last]);
        }
        return text;
    }
    const std::vector<Notification>& all() const { return m_notifications; }

private:
    std::vector<Notification> m_notifications;
    std::function<void(const VoDownloadNotification&)> m_onEach;
};

/// Runs the service until a future is ready.
std::string Outcome(std::future<void> future)
{
    vo::test::RunServiceUntil([&] { return future.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
    return Refusal<VoDownloadException>([&] { future.get(); });
}

std::string Gzip(const std::string& text)
{
    z_stream stream = {};
    deflateInit2(&stream, 9, Z_DEFLATED, 15 + 16, 9, Z_DEFAULT_STRATEGY);
    std::string result(text.size() + 100, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(&result[0]);
    stream.avail_out = static_cast<uInt>(result.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    result.resize(stream.total_out);
    deflateEnd(&stream);
    return result;
}

class DownloadManager : public testing::Test
{
protected:
    VoUrl url(const std::string& target) const { return VoUrl(VoString(m_server.url(target))); }

    VoSharedPtr<VoDownloadRequest> request(const std::string& target, const std::string& name)
    {
        return VoSharedPtr<VoDownloadRequest>::Make(url(target), m_folder.path(name));
    }

    /// Calls a function on another thread while this one runs the service.
    template <typename Function>
    void onWorker(Function function)
    {
        std::atomic<bool> done{false};
        std::thread worker([&] {
            function();
            done = true;
        });
        vo::test::RunServiceUntil([&] { return done.load(); });
        worker.join();
    }

    ScratchFolder m_folder;
    ScriptedHttpServer m_server;
    vo::test::LogCapture m_log;
};

} // namespace

TEST_F(DownloadManager, TellsTheWholeStoryOfADownloadToItsOwnCallbackOnly)
{
    m_server.get("/a", ScriptedAnswer::Body(std::string(300000, 'a')));
    m_server.get("/b", ScriptedAnswer::Body("b"));
    const auto a = request("/a", "a");
    Told told;
    auto other = VoDownloadManager::RequestFuture(request("/b", "b"));
    for (const auto wait :
         {+[](VoDownloadFuture& future) { future.get(); }, +[](VoDownloadFuture& future) { future.wait(); }})
        EXPECT_THROW_MSG(wait(other), VoInvalidCallException,
                         "Cannot wait for a download on the thread that carries it out");
    VoDownloadManager::RequestWait(a, VoStopFlag(), told.callback());
    EXPECT_EQ(Outcome(std::move(other)), "");

    EXPECT_EQ(told.story(), "Started Progress Complete");
    for (const Notification& notification : told.all())
        EXPECT_EQ(notification->id(), a->id());
    const VoDownloadProgressNotification& last = told.all()[told.all().size() - 2]->asProgressMessage();
    EXPECT_EQ(last.received().bytes(), 300000);
    EXPECT_EQ(last.total().bytes(), 300000);
    EXPECT_EQ(m_folder.read("a"), std::string(300000, 'a'));
    EXPECT_EQ(m_folder.read("b"), "b");

    const std::string id = a->id().toString().toStdString();
    const auto logged = [&](const char* category, const std::string& text) {
        return m_log.count(vo::logging::Level::Diagnostic, category, VoString(text));
    };
    EXPECT_EQ(logged("updater", "Download request for " + m_server.url("/a") + " [" + id + "]"), 1U);
    for (const std::string& text :
         {"Allocating download requested [" + id + "] : " + m_server.url("/a"), "Download started: " + id,
          "Download complete: " + id, "Download request complete [" + id + "]",
          "Deallocating download request [" + id + "]", std::string("Header received - file size [300.0 KB]")})
        EXPECT_EQ(logged("download", text), 1U) << text;
}

TEST_F(DownloadManager, ProgressOfAGroupOnlyGrowsAndIsExactAtTheEndAlthoughFilesAreFetchedAnew)
{
    constexpr int files = 40;
    auto group = VoSharedPtr<VoGroupedDownloadRequest>::Make();
    for (int i = 0; i < files; ++i) {
        const std::string target = "/" + std::to_string(i);
        const ScriptedAnswer good = ScriptedAnswer::Body(std::string(50000, static_cast<char>('A' + i)));
        m_server.get(target, i % 10 == 0 ? std::vector<ScriptedAnswer>{good.failing(Fault::Close, 40000),
                                                                       good.trickling(5000, 30)}
                                         : std::vector<ScriptedAnswer>{good});
        m_server.head(target, {good});
        group->add(url(target), m_folder.path(std::to_string(i)));
    }
    VoDownloadPolicy policy;
    policy.retries = 1;
    policy.firstDelay = VoMilliseconds(1);
    int retries = 0;
    policy.onRetry = [&](const VoDownloadRetry& retry) {
        ++retries;
        EXPECT_EQ(retry.attempt, 2U);
        EXPECT_EQ(retry.reason, VoString("Connection closed"));
    };
    group->setPolicy(policy);
    Told told;
    EXPECT_EQ(
        Refusal<VoDownloadException>([&] { VoDownloadManager::RequestWait(group, VoStopFlag(), told.callback()); }),
        "");

    EXPECT_EQ(retries, 4);
    EXPECT_EQ(told.story(), "Started Progress Complete");
    std::int64_t before = 0;
    for (const Notification& notification : told.all()) {
        if (notification->type() != VoDownloadNotification::Progress)
            continue;
        const std::int64_t received = notification->asProgressMessage().received().bytes();
        EXPECT_GE(received, before);
        before = received;
        EXPECT_EQ(notification->asProgressMessage().total().bytes(), files * 50000);
    }
    EXPECT_EQ(before, files * 50000);
    for (int i = 0; i < files; ++i) {
        EXPECT_EQ(m_folder.read(std::to_string(i)), std::string(50000, static_cast<char>('A' + i)));
        EXPECT_EQ(m_server.count("GET", "/" + std::to_string(i)), i % 10 == 0 ? 2U : 1U) << "only what failed again";
    }
}

// Only the shortest time is certain: 300 KB, of which 150 KB may come at once, at 300 KB/s.
TEST_F(DownloadManager, AGroupKeepsToItsHighestRateTogether)
{
    auto group = VoSharedPtr<VoGroupedDownloadRequest>::Make();
    for (const char* const name : {"a", "b", "c"}) {
        m_server.get(std::string("/") + name, ScriptedAnswer::Body(std::string(100000, *name)));
        group->add(url(std::string("/") + name), m_folder.path(name));
    }
    VoDownloadPolicy policy;
    policy.highestRate = VoTransferRate(300000);
    group->setPolicy(policy);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Refusal<VoDownloadException>([&] { VoDownloadManager::RequestWait(group); }), "");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(490));
    for (const char* const name : {"a", "b", "c"})
        EXPECT_EQ(m_folder.read(name), std::string(100000, *name));
}

TEST_F(DownloadManager, RetriesOnlyWhatMayPassAndHonoursRetryAfter)
{
    const ScriptedAnswer good = ScriptedAnswer::Body("good");
    const auto failing = [](int status) { return ScriptedAnswer::Status(status, "No"); };
    const struct
    {
        const char* name;
        std::vector<ScriptedAnswer> answers;
        std::size_t asked;
        bool complete;
        double shortestDelay; // seconds
    } rows[] = {
        {"once 503", {failing(503), good}, 2, true, 0},
        {"four times 500", {failing(500), failing(500), failing(500), failing(500), good}, 4, false, 0},
        {"429 with a time", {failing(429).with("Retry-After", "1"), good}, 2, true, 1},
        {"429 with too long a time", {failing(429).with("Retry-After", "86400"), good}, 1, false, 0},
        {"404", {failing(404), good}, 1, false, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        m_server.clear();
        m_server.get("/file", row.answers);
        m_server.head("/file", {good});
        const auto wanted = request("/file", "file");
        VoDownloadPolicy policy;
        policy.retries = 3;
        policy.firstDelay = VoMilliseconds(1);
        VoTimeDuration waited;
        policy.onRetry = [&](const VoDownloadRetry& retry) { waited += retry.delay; };
        wanted->setPolicy(policy);
        EXPECT_EQ(Refusal<VoDownloadException>([&] { VoDownloadManager::RequestWait(wanted); }).empty(), row.complete);
        EXPECT_EQ(m_server.count("GET", "/file"), row.asked);
        EXPECT_GE(waited.seconds(), row.shortestDelay);
    }
}

TEST_F(DownloadManager, TriesMirrorsInOrderAndNotAgainThoseWithoutHope)
{
    m_server.get("/one/file", ScriptedAnswer::Status(404, "Not Found"));
    m_server.get("/two/file", {ScriptedAnswer::Status(503, "Busy"), ScriptedAnswer::Body("two")});
    m_server.head("/two/file", {ScriptedAnswer::Status(503, "Busy"), ScriptedAnswer::Body("two")});
    m_server.get("/three/file", ScriptedAnswer::Status(500, "Broken"));
    const auto wanted = request("/one/file", "file");
    VoDownloadPolicy policy;
    policy.retries = 2;
    policy.firstDelay = VoMilliseconds(1);
    policy.mirrored = url("/one/");
    policy.mirrors = {url("/two/"), url("/three/")};
    std::vector<std::string> asked;
    policy.onRetry = [&](const VoDownloadRetry& retry) { asked.push_back(retry.url.toString().toStdString()); };
    wanted->setPolicy(policy);
    VoDownloadManager::RequestWait(wanted);
    EXPECT_EQ(m_folder.read("file"), "two");
    EXPECT_EQ(asked, (std::vector<std::string>{m_server.url("/two/file"), m_server.url("/three/file"),
                                               m_server.url("/two/file"), m_server.url("/three/file"),
                                               m_server.url("/two/file")}));
    EXPECT_EQ(m_server.count("HEAD", "/one/file"), 1U);
}

TEST_F(DownloadManager, HeadersGoToTheFilesOwnServerAndNowhereElse)
{
    VoDownloadManager::SetRedirectHosts("localhost", "");
    ScriptedHttpServer mirror;
    mirror.get("/file", ScriptedAnswer::Body("mirrored"));
    m_server.get("/own", ScriptedAnswer::Body("own"));
    m_server.get("/moved", ScriptedAnswer::Redirect(302, m_server.url("/there", "localhost")));
    m_server.get("/there", ScriptedAnswer::Body("there"));
    VoDownloadPolicy policy;
    policy.setHeader("X-Token", "old");
    policy.setHeader("x-token", "s3cret");
    policy.mirrored = url("/");
    policy.mirrors = {VoUrl(VoString(mirror.url("/")))};
    for (const char* name : {"own", "moved", "file"}) {
        const auto wanted = request(std::string("/") + name, name);
        wanted->setPolicy(policy);
        VoDownloadManager::RequestWait(wanted);
    }
    VoDownloadManager::SetRedirectHosts("", "");
    const auto token = [](const vo::test::ScriptedRequest& asked) -> std::string {
        const auto found = asked.headers.find("x-token");
        return found == asked.headers.end() ? "" : found->second;
    };
    for (const vo::test::ScriptedRequest& asked : m_server.requests())
        EXPECT_EQ(token(asked), asked.target == "/there" ? "" : "s3cret") << asked.method << asked.target;
    EXPECT_EQ(m_server.count("GET", "/there"), 1U);
    EXPECT_EQ(mirror.count("GET", "/file"), 1U);
    for (const vo::test::ScriptedRequest& asked : mirror.requests())
        EXPECT_EQ(token(asked), "");
    for (const vo::logging::Record& record : m_log.records())
        EXPECT_FALSE(record.text.contains("s3cret")) << record.text;
}

TEST_F(DownloadManager, CancelAndStopFlagGiveExactlyOneFailureInEveryPhase)
{
    const ScriptedAnswer good = ScriptedAnswer::Body(std::string(100000, 'x'));
    const ScriptedAnswer silent = good.failing(Fault::Stall, ScriptedAnswer::BeforeHeaders);
    const ScriptedAnswer half = good.failing(Fault::Stall, 50000);
    const struct
    {
        const char* name;
        ScriptedAnswer head;
        ScriptedAnswer get;
        const char* method; // the request during which it happens; empty: at Started, between the two
        const char* story;
    } rows[] = {
        {"during HEAD", silent, good, "HEAD", "Failed"},
        {"between", good, silent, "", "Started Failed"},
        {"during GET, before the answer", good, silent, "GET", "Started Failed"},
        {"within the body", good, half, "GET", "Started Progress Failed"},
    };
    int number = 0;
    for (const auto& row : rows) {
        for (const bool byFlag : {false, true}) {
            for (const bool grouped : {false, true}) {
                SCOPED_TRACE(std::string(row.name) + (byFlag ? ", flag" : ", cancel") + (grouped ? ", group" : ""));
                // A new name each time: a request that was given up may still arrive later.
                const std::string target = "/" + std::to_string(++number);
                m_server.get(target, row.get);
                m_server.head(target, {row.head});
                m_folder.write("file", "old");
                const auto single = request(target, "file");
                const auto group = VoSharedPtr<VoGroupedDownloadRequest>::Make();
                group->add(url(target), m_folder.path("file"));
                const VoUUID id = grouped ? group->id() : single->id();
                const VoStopFlag stop;
                const auto end = [&] { byFlag ? stop.stop() : VoDownloadManager::CancelDownload(id); };

                Told told;
                const bool atProgress = std::string(row.story).find("Progress") != std::string::npos;
                told.onEach([&](const VoDownloadNotification& n) {
                    if ((*row.method == 0 && n.type() == VoDownloadNotification::Started) ||
                        (atProgress && n.type() == VoDownloadNotification::Progress && m_server.count("GET", target)))
                        end();
                });
                std::thread watcher([&] {
                    if (*row.method != 0 && !atProgress && m_server.waitFor(row.method, target))
                        end();
                });
                const std::string failure = Refusal<VoDownloadException>([&] {
                    if (grouped)
                        VoDownloadManager::RequestWait(group, stop, told.callback());
                    else
                        VoDownloadManager::RequestWait(single, stop, told.callback());
                });
                watcher.join();
                EXPECT_EQ(failure, "Download cancelled");
                EXPECT_EQ(told.story(), row.story);
                EXPECT_EQ(told.all().back()->asFailedMessage().message(), VoString("Download cancelled"));
                EXPECT_EQ(m_folder.read("file"), "old");
            }
        }
    }
    EXPECT_EQ(m_log.count(vo::logging::Level::Diagnostic, "download", "Cancelling download: nobody"), 0U);
    VoDownloadManager::CancelDownload(VoUUID("nobody"));
    QCoreApplication::processEvents();
    EXPECT_EQ(m_log.count(vo::logging::Level::Diagnostic, "download", "Cancelling download: nobody"), 1U);
}

TEST_F(DownloadManager, AFlagRaisedBeforeStartsNothing)
{
    m_server.get("/file", ScriptedAnswer::Body("x"));
    const VoStopFlag stop;
    stop.stop();
    EXPECT_EQ(Refusal<VoDownloadException>(
                  [&] { VoDownloadManager::RequestWait(url("/file"), m_folder.path("file"), stop); }),
              "Download cancelled");
    QCoreApplication::processEvents();
    EXPECT_TRUE(m_server.requests().empty());
}

TEST_F(DownloadManager, WaitsOnAWorkerWhileTheOwnerRunsItsLoop)
{
    m_server.get("/file", ScriptedAnswer::Body("x"));
    std::string found = "never ran";
    std::string missing;
    std::thread::id calledOn;
    onWorker([&] {
        found = Refusal<VoDownloadException>([&] {
            VoDownloadManager::RequestWait(url("/file"), m_folder.path("file"), VoStopFlag(),
                                           [&](const Notification&) { calledOn = std::this_thread::get_id(); });
        });
        missing =
            Refusal<VoDownloadException>([&] { VoDownloadManager::RequestWait(url("/none"), m_folder.path("none")); });
    });
    EXPECT_EQ(found, "");
    EXPECT_EQ(calledOn, std::this_thread::get_id());
    EXPECT_EQ(missing,
              "Header request failed: Error transferring " + m_server.url("/none") + " - server replied: Not Found");
}

TEST_F(DownloadManager, RefusesToWaitInsideACallbackButRequestsAndSurvivesWhatCallbacksThrow)
{
    m_server.get("/file", ScriptedAnswer::Body("x"));
    std::string refusal;
    std::future<void> second;
    const VoReceiver bad = VoDownloadManager::Connect([](const Notification&) { throw 1; });
    VoDownloadManager::RequestWait(url("/file"), m_folder.path("file"), VoStopFlag(), [&](const Notification& n) {
        if (n->type() != VoDownloadNotification::Started)
            return;
        refusal = Refusal<VoInvalidCallException>(
            [&] { VoDownloadManager::RequestWait(url("/file"), m_folder.path("other")); });
        second = VoDownloadManager::RequestFuture(request("/file", "second"));
        throw VoDownloadException();
    });
    EXPECT_EQ(refusal, "Cannot wait for a download inside a notification callback");
    EXPECT_EQ(Outcome(std::move(second)), "");
}

TEST_F(DownloadManager, CompressedBodiesBecomeTheFileOrFailWithinTheLimit)
{
    const std::string text(300000, 'a');
    const std::string other = "the rest";
    const std::string bytes = Gzip(text);
    const auto coded = [](const std::string& body) {
        return ScriptedAnswer::Body(body).with("Content-Encoding", "gzip");
    };
    const ScriptedAnswer chunked = coded(bytes).inChunks();
    const ScriptedAnswer cut = coded(bytes.substr(0, bytes.size() - 9)).inChunks();
    std::string wrong = bytes;
    wrong[bytes.size() - 6] ^= 0x55;
    struct Row
    {
        const char* name;
        ScriptedAnswer answer;
        ScriptedAnswer head;
        std::string result; // or how the failure begins
        std::int64_t limit;
    };
    const std::string larger = "Download larger than allowed: " + m_server.url("/file");
    for (const Row& row : {
             Row{"compressed", coded(bytes), coded(bytes), text, 300000},
             Row{"the size is that of the other form", chunked, ScriptedAnswer::Body(text), text, 300000},
             Row{"plain after all", ScriptedAnswer::Body(text), coded(bytes), text, 300000},
             Row{"one byte", coded(Gzip("a")), coded(bytes), "a", -1},
             Row{"two members", coded(bytes + Gzip(other)), coded(bytes), text + other, -1},
             Row{"cut", cut, chunked, "Download incomplete: ", -1},
             Row{"wrong", coded(wrong), coded(wrong), "Download damaged: ", -1},
             Row{"a bomb", coded(bytes), coded(bytes), larger, 299999},
         }) {
        SCOPED_TRACE(row.name);
        m_server.get("/file", row.answer);
        m_server.head("/file", {row.head});
        m_folder.write("file", "old");
        VoDownloadPolicy policy;
        policy.acceptCompressed = true;
        policy.sizeLimit = VoDownloadSize(row.limit);
        VoDownloadReceipt receipt;
        policy.onReceived = [&](const VoDownloadReceipt& received) { receipt = received; };
        const auto wanted = request("/file", "file");
        wanted->setPolicy(policy);
        const std::string failure = Refusal<VoDownloadException>([&] { VoDownloadManager::RequestWait(wanted); });
        if (row.result[0] == 'D') {
            EXPECT_EQ(failure.substr(0, row.result.size()), row.result);
            EXPECT_TRUE(m_folder.read("file") == "old");
        } else {
            EXPECT_EQ(failure, "");
            EXPECT_TRUE(m_folder.read("file") == row.result);
            EXPECT_EQ(receipt.transferred, static_cast<std::int64_t>(row.answer.body.size()));
        }
    }
    m_server.get("/file", coded(bytes));
    EXPECT_EQ(Refusal<VoDownloadException>([&] { VoDownloadManager::RequestWait(request("/file", "file")); }),
              "Header request failed: Unsupported content coding: gzip")
        << "it was not asked for";
}

TEST_F(DownloadManager, AnIdThatIsTakenFailsTheNewRequestOnly)
{
    ScriptedAnswer slow = ScriptedAnswer::Body("x");
    slow.delay = 50;
    m_server.get("/file", slow);
    Told told;
    const auto first = request("/file", "first");
    const auto second = VoSharedPtr<VoDownloadRequest>::Make(url("/file"), m_folder.path("second"), first->id());
    const VoReceiver receiver = VoDownloadManager::Connect(told.callback());
    std::future<void> good = VoDownloadManager::RequestFuture(first);
    EXPECT_EQ(Outcome(VoDownloadManager::RequestFuture(second)), "Download failed to register");
    EXPECT_EQ(Outcome(std::move(good)), "");
    EXPECT_EQ(told.story(), "Started Progress Complete");
}

TEST_F(DownloadManager, AnEmptyGroupAndOneWithAFailingFileFailAsOne)
{
    Told told;
    EXPECT_EQ(Refusal<VoDownloadException>([&] {
                  VoDownloadManager::RequestWait(VoSharedPtr<VoGroupedDownloadRequest>::Make(), VoStopFlag(),
                                                 told.callback());
              }),
              "Empty request");
    EXPECT_EQ(told.story(), "Failed");

    auto group = VoSharedPtr<VoGroupedDownloadRequest>::Make();
    for (int i = 0; i < 20; ++i) {
        const std::string target = "/" + std::to_string(i);
        m_server.get(target, i == 7 ? ScriptedAnswer::Status(500, "Broken") : ScriptedAnswer::Body("x"));
        m_server.head(target, {ScriptedAnswer::Body("x")});
        group->add(url(target), m_folder.path(std::to_string(i)));
    }
    EXPECT_EQ(Refusal<VoDownloadException>([&] { VoDownloadManager::RequestWait(group); }),
              "Error transferring " + m_server.url("/7") + " - server replied: Broken");
    EXPECT_FALSE(std::filesystem::exists(m_folder.native("7")));
}

TEST_F(DownloadManager, ADroppedReceiverIsNotCalledAndALimitOfOneFileHoldsInAGroup)
{
    m_server.get("/small", ScriptedAnswer::Body("1234"));
    m_server.get("/large", ScriptedAnswer::Body("12345678"));
    auto group = VoSharedPtr<VoGroupedDownloadRequest>::Make();
    group->add(url("/large"), m_folder.path("large"));
    group->add(url("/small"), m_folder.path("small"), 3);
    Told told;
    {
        const auto dropped = VoDownloadManager::RequestDownload(request("/small", "x"), told.callback());
        EXPECT_TRUE(dropped.second.isReceiving());
    }
    EXPECT_EQ(Refusal<VoDownloadException>([&] { VoDownloadManager::RequestWait(group); }),
              "Header request failed: Download larger than allowed: " + m_server.url("/small"));
    EXPECT_EQ(told.story(), "");
}

#if defined(__unix__)
TEST_F(DownloadManager, FetchesTwoThousandFilesWithTwoHundredAndFiftySixDescriptors)
{
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit few = before;
    few.rlim_cur = 256;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    m_server.get("/file", ScriptedAnswer::Body("0123456789"));
    auto group = VoSharedPtr<VoGroupedDownloadRequest>::Make();
    for (int i = 0; i < 2000; ++i)
        group->add(url("/file"), m_folder.path(std::to_string(i)));
    const std::string failure = Refusal<VoDownloadException>([&] { VoDownloadManager::RequestWait(group); });
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(failure, "");
    // Six at a time; one that was given up counts until the server learns of its end.
    EXPECT_LE(m_server.mostConnections(), 24U);
    for (const int i : {0, 1000, 1999})
        EXPECT_EQ(m_folder.read(std::to_string(i)), "0123456789");
}
#endif

TEST_F(DownloadManager, TheEngineTellsNetworkChangesAndRefusesToWorkWithoutItsParts)
{
    VoDownloadManagerInterface requests;
    const auto broadcaster = std::make_shared<VoDownloadManagerImpl::Broadcaster>();
    Told told;
    const VoReceiver receiver = broadcaster->connect(told.callback());
    auto engine =
        std::make_unique<VoDownloadManagerImpl>(requests, broadcaster, [] { return vo::detail::RedirectHosts(); });

    QObject stranger;
    const auto wanted = request("/none", "none");
    EXPECT_THROW_MSG(VoSingleDownload(*wanted, &stranger), VoDownloadException, "Download must have a parent manager");
    auto* const orphan = new VoSingleDownload(*wanted, engine.get());
    EXPECT_THROW_MSG(orphan->issueRequest(QUrl(), VoDownload::Method::Get), VoDownloadException,
                     "Parent network access manager unavailable");
    orphan->setParent(nullptr);
    EXPECT_THROW_MSG(orphan->issueRequest(QUrl(), VoDownload::Method::Get), VoNullPointerException,
                     "Download has no manager");
    delete orphan;

    const auto ticket = VoDownloadTicketPtr::Make();
    std::future<void> ended = ticket->future();
    requests.request(wanted, ticket);
    EXPECT_NE(Outcome(std::move(ended)), "");
    ASSERT_TRUE(engine->networkAccessManager());
#if QT_VERSION_MAJOR < 6 && !defined(_WIN32) // else a service of the system is asked, which a test does not have
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    engine->networkAccessManager()->setNetworkAccessible(QNetworkAccessManager::NotAccessible);
    QT_WARNING_POP
    EXPECT_EQ(told.story(), "Failed NetworkStatus");
    EXPECT_EQ(told.all().back()->asNetworkStatusMessage().status(), VoNetworkStatusNotification::Disconnected);
#endif
}

TEST_F(DownloadManager, EndsClearlyWithoutAnApplicationWhileItQuitsAndWithoutItsThreadAndFindsAnotherHome)
{
    m_server.get("/file", ScriptedAnswer::Body("content"));
    m_server.get("/silent", ScriptedAnswer::Body("x").failing(Fault::Stall, ScriptedAnswer::BeforeHeaders));
    m_server.head("/silent", {ScriptedAnswer::Body("x").failing(Fault::Stall, ScriptedAnswer::BeforeHeaders)});
    const std::string silent = m_server.url("/silent");
    const std::string target = m_folder.native("x").string();
    const std::string ended = "Download service is not available\n";
    EXPECT_EQ(OutcomeOf({"no-application", silent, target}), "Download service requires an application object\n");
    EXPECT_EQ(OutcomeOf({"quit-under-owner", silent, target, m_server.url("/file")}), ended + "\n\n");
    EXPECT_EQ(OutcomeOf({"quit-under-worker", silent, target, m_server.url("/file")}), ended + "\n\n");
    EXPECT_EQ(OutcomeOf({"application-ends", silent, target, m_server.url("/file")}), ended + ended + "\n");
    EXPECT_EQ(OutcomeOf({"owner-ends", silent, target, m_server.url("/file")}), ended + "\n");
}

namespace vo::test {

namespace {

void Print(const std::string& line)
{
    std::cout << line << std::endl;
}

std::string WaitFor(const char* url, const char* target)
{
    return Refusal<VoDownloadException>([&] { VoDownloadManager::RequestWait(VoUrl(url), VoFilePath(target)); });
}

} // namespace

int RunScenario(int argc, char** argv)
{
    vo::logging::DisableStandardError();
    const std::string name = argv[2];
    const char* const url = argv[3];
    const char* const target = argv[4];
    if (name == "no-application") {
        Print(WaitFor(url, target));
        return 0;
    }
    // What can be fetched, once there is a service again; an empty line when it is.
    const char* const file = argv[5];
    auto application = std::make_unique<QCoreApplication>(argc, argv);
    if (name == "quit-under-owner") {
        // The waiting is inside the application's loop, which is told to end meanwhile.
        QTimer::singleShot(0, [&] {
            QTimer::singleShot(100, application.get(), [] { QCoreApplication::quit(); });
            Print(WaitFor(url, target));
        });
        application->exec();
        Print(WaitFor(file, target));
        // The application's loop may run again, and carries out what was asked for between.
        std::future<void> end =
            VoDownloadManager::RequestFuture(VoSharedPtr<VoDownloadRequest>::Make(VoUrl(file), VoFilePath(target)));
        std::thread worker([&] {
            Print(Refusal<VoDownloadException>([&] { end.get(); }));
            QMetaObject::invokeMethod(application.get(), "quit", Qt::QueuedConnection);
        });
        application->exec();
        worker.join();
    } else if (name == "quit-under-worker") {
        VoDownloadManager::Get();
        std::thread worker([&] { Print(WaitFor(url, target)); });
        QTimer::singleShot(100, application.get(), [] { QCoreApplication::quit(); });
        application->exec();
        worker.join();
        // Nobody runs the owner's loop any more, so this thread does.
        std::thread([&] { Print(WaitFor(file, target)); }).join();
        std::thread([&] { Print(WaitFor(file, target)); }).join();
    } else if (name == "application-ends") {
        VoDownloadManager::Get();
        std::promise<void> asked;
        std::thread worker([&] {
            std::future<void> end =
                VoDownloadManager::RequestFuture(VoSharedPtr<VoDownloadRequest>::Make(VoUrl(url), VoFilePath(target)));
            asked.set_value();
            Print(Refusal<VoDownloadException>([&] { end.get(); }));
        });
        asked.get_future().get();
        application.reset();
        worker.join();
        Print(WaitFor(url, target));
        application = std::make_unique<QCoreApplication>(argc, argv);
        Print(WaitFor(file, target));
    } else if (name == "owner-ends") {
        std::future<void> end;
        std::thread owner([&] {
            end =
                VoDownloadManager::RequestFuture(VoSharedPtr<VoDownloadRequest>::Make(VoUrl(url), VoFilePath(target)));
            QCoreApplication::processEvents();
        });
        owner.join();
        Print(Refusal<VoDownloadException>([&] { end.get(); }));
        Print(WaitFor(file, target));
    }
    return 0;
}

std::string OutcomeOf(const std::vector<std::string>& scenario)
{
    QStringList arguments{QStringLiteral("--scenario")};
    for (const std::string& argument : scenario)
        arguments << QString::fromStdString(argument);
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QCoreApplication::applicationFilePath(), arguments);
    if (!process.waitForFinished(20000)) {
        process.kill();
        process.waitForFinished();
        return "timeout: " + process.readAllStandardOutput().toStdString();
    }
    return process.readAllStandardOutput().replace("\r\n", "\n").toStdString() +
           (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0 ? "" : "crashed\n");
}

} // namespace vo::test
