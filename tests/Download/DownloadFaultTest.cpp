#include <FileSizeLimit.h>
#include <LogCapture.h>
#include <ScratchFolder.h>
#include <ScriptedHttpServer.h>
#include <VoTestSupport.h>

#include <Core/VoSharedPtr.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadException.h>
#include <Download/VoDownloadManager.h>
#include <Download/VoDownloadPolicy.h>
#include <Download/VoDownloadRequest.h>
#include <FileSystem/VoUrl.h>

#include <cstdio>

using vo::test::RefusingUrl;
using vo::test::ScratchFolder;
using vo::test::ScriptedAnswer;
using vo::test::ScriptedHttpServer;
using Fault = ScriptedAnswer::Fault;
using Kind = VoDownloadException::Kind;

namespace {

const std::string Content(5000, 'n');
constexpr const char* Complete = "complete";

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

/// One fault: what the server does, and what becomes of the download.
struct Row
{
    const char* name;
    std::function<void(ScriptedHttpServer&)> script;
    const char* outcome; // the message, with "SERVER" for the server's address, or Complete
    Kind kind = Kind::Final;
    int status = 0;
    std::string content = Content; // of the file, when complete
    std::function<void(VoDownloadPolicy&)> policy = {};
    const char* target = "/file";      // what is asked for; or a whole URL
    const char* alternative = nullptr; // another outcome, where it depends on what arrives first
};

/// What GET and HEAD are answered.
std::function<void(ScriptedHttpServer&)> Answers(const ScriptedAnswer& get, const ScriptedAnswer& head)
{
    return [=](ScriptedHttpServer& s) {
        s.get("/file", get);
        s.head("/file", {head});
    };
}

/// The header is good, the body's answer is not.
std::function<void(ScriptedHttpServer&)> Body(const ScriptedAnswer& answer)
{
    return Answers(answer, ScriptedAnswer::Body(Content));
}

std::function<void(ScriptedHttpServer&)> RedirectTo(int status, const std::string& host, const std::string& target)
{
    return [=](ScriptedHttpServer& s) {
        s.get("/file", ScriptedAnswer::Redirect(status, s.url(target, host)));
        s.get("/moved", ScriptedAnswer::Body(Content));
    };
}

std::vector<Row> Rows()
{
    const ScriptedAnswer good = ScriptedAnswer::Body(Content);
    const auto failing = [good](Fault fault, std::int64_t at) { return good.failing(fault, at); };
    const auto impatient = [](VoDownloadPolicy& policy) { policy.stallTimeout = VoMilliseconds(200); };
    const auto demanding = [](VoDownloadPolicy& policy) {
        policy.lowestRate = VoTransferRate(1000000);
        policy.lowestRateTime = VoMilliseconds(100);
    };
    constexpr auto beforeHeaders = ScriptedAnswer::BeforeHeaders;

    std::vector<Row> rows = {
        {"connection refused", {}, "Header request failed: Connection refused", Kind::Transient},
        {"reset before the headers", Body(failing(Fault::Reset, beforeHeaders)), "Connection closed", Kind::Transient},
        {"closed before the headers", Body(failing(Fault::Close, beforeHeaders)), "Connection closed", Kind::Transient},
        {"reset after the headers", Body(failing(Fault::Reset, 0)), "Connection closed", Kind::Transient},
        {"reset within the body", Body(failing(Fault::Reset, 1000)), "Connection closed", Kind::Transient},
        {"body shorter than announced", Body(failing(Fault::Close, 1000)), "Connection closed", Kind::Transient},
        {"body longer than announced", Body(good.announcing(3000)), Complete, Kind::Final, 0, Content.substr(0, 3000)},
        {"body without end", Body(failing(Fault::Endless, 0).withoutLength()), "Download larger than announced"},
        {"announced far larger than by HEAD", Body(good.announcing(50000000)), "Download larger than announced"},
        {"body without length", Body(good.withoutLength()), Complete},
        {"body without length, cut off", Body(failing(Fault::Close, 1000).withoutLength()),
         "Download incomplete: SERVER/file", Kind::Transient},
        {"chunked body", Body(good.inChunks()), Complete},
        {"chunked body, cut off",
         Body(failing(Fault::Close, 1000).inChunks()),
         "Connection closed",
         Kind::Transient,
         0,
         Content,
         {},
         "/file",
         "Download incomplete: SERVER/file"},
        {"body in a trickle", Body(good.trickling(500, 20)), Complete, Kind::Final, 0, Content, impatient},
        {"body below the lowest speed", Body(good.trickling(1, 5)), "Download too slow: SERVER/file", Kind::Transient,
         0, Content, demanding},
        {"stall before the headers", Body(failing(Fault::Stall, beforeHeaders)), "Download timed out", Kind::Transient,
         0, Content, impatient},
        {"stall within the body", Body(failing(Fault::Stall, 1000)), "Download timed out", Kind::Transient, 0, Content,
         impatient},
        {"stall at HEAD", Answers(good, failing(Fault::Stall, beforeHeaders)),
         "Header request failed: Download timed out", Kind::Transient, 0, Content, impatient},
        {"200 with no body", Body(ScriptedAnswer::Body("")), Complete, Kind::Final, 0, ""},
        {"wrong bytes of the right length", Body(ScriptedAnswer::Body(std::string(5000, 'w'))), Complete, Kind::Final,
         0, std::string(5000, 'w')},
        {"204 at GET", Body(ScriptedAnswer::Status(204, "No Content")),
         "Error transferring SERVER/file - server replied: No Content", Kind::Final, 204},
        {"206 unasked", Body(ScriptedAnswer::Status(206, "Partial Content", "nnn")),
         "Error transferring SERVER/file - server replied: Partial Content", Kind::Final, 206},
        {"304 unasked", Body(ScriptedAnswer::Status(304, "Not Modified")),
         "Error transferring SERVER/file - server replied: Not Modified", Kind::Final, 304},
        {"404 at GET only", Body(ScriptedAnswer::Status(404, "Not Found", "<html>gone meanwhile</html>")),
         "Error transferring SERVER/file - server replied: Not Found", Kind::Final, 404},
        {"301 within the policy", RedirectTo(301, "127.0.0.1", "/moved"), Complete},
        {"302 within the policy", RedirectTo(302, "127.0.0.1", "/moved"), Complete},
        {"307 within the policy", RedirectTo(307, "127.0.0.1", "/moved"), Complete},
        {"302 through three hops",
         [=](ScriptedHttpServer& s) {
             s.get("/file", ScriptedAnswer::Redirect(302, "/hop1"));
             s.get("/hop1", ScriptedAnswer::Redirect(302, "hop2"));
             s.get("/hop2", ScriptedAnswer::Redirect(302, s.url("/moved")));
             s.get("/moved", good);
         },
         Complete},
        {"302 to another host", RedirectTo(302, "localhost", "/moved"),
         "Header request failed: Unsafe domain redirect from (SERVER/file) to (LOCALHOST/moved)"},
        {"302 to another host at GET only",
         [=](ScriptedHttpServer& s) {
             s.get("/file", ScriptedAnswer::Redirect(302, s.url("/moved", "localhost")));
             s.head("/file", {good});
         },
         "Unsafe domain redirect from (SERVER/file) to (LOCALHOST/moved)"},
        {"302 in a loop", [](ScriptedHttpServer& s) { s.get("/file", ScriptedAnswer::Redirect(302, s.url("/file"))); },
         "Header request failed: Too many redirects"},
        {"302 to a local file",
         [](ScriptedHttpServer& s) { s.get("/file", ScriptedAnswer::Redirect(302, "file:///etc/hostname")); },
         "Header request failed: Unknown protocol specified"},
        {"302 without a target", [](ScriptedHttpServer& s) { s.get("/file", ScriptedAnswer::Redirect(302, "")); },
         "Header request failed: Unknown protocol specified"},
        {"gzip content coding", Body(good.with("Content-Encoding", "gzip")), "Unsupported content coding: gzip"},
        {"HEAD refused", Answers(good, ScriptedAnswer::Status(405, "Method Not Allowed")),
         "Header request failed: Error transferring SERVER/file - server replied: Method Not Allowed", Kind::Final,
         405},
        {"HEAD says less than GET", Answers(good, good.announcing(10)), Complete},
        {"HEAD says more than GET", Answers(good, good.announcing(1000000)), Complete},
        {"larger than the limit, said so", Body(good),
         "Header request failed: Download larger than allowed: SERVER/file", Kind::Final, 0, Content,
         [](VoDownloadPolicy& policy) { policy.sizeLimit = 4999; }},
        {"larger than the limit, not said", [=](ScriptedHttpServer& s) { s.get("/file", good.withoutLength()); },
         "Download larger than allowed: SERVER/file", Kind::Final, 0, Content,
         [](VoDownloadPolicy& policy) { policy.sizeLimit = 4999; }},
        {"no HTTP at all", {}, "Unsupported URL scheme: ftp", Kind::Final, 0, Content, {}, "ftp://127.0.0.1/file"},
        {"local file", {}, "Unsupported URL scheme: file", Kind::Final, 0, Content, {}, "file:///etc/hostname"},
    };
    for (const auto& [name, status, kind] :
         {std::tuple("401", 401, Kind::Final), std::tuple("403", 403, Kind::Final), std::tuple("404", 404, Kind::Final),
          std::tuple("410", 410, Kind::Final), std::tuple("429", 429, Kind::Transient),
          std::tuple("500", 500, Kind::Transient), std::tuple("503", 503, Kind::Transient)})
        rows.push_back({name,
                        [answer = ScriptedAnswer::Status(status, "No", "<html>no</html>")](ScriptedHttpServer& s) {
                            s.get("/file", answer);
                        },
                        "Header request failed: Error transferring SERVER/file - server replied: No", kind, status});
    return rows;
}

/// What RequestWait gave.
struct Outcome
{
    std::string text = Complete;
    Kind kind = Kind::Final;
    int status = 0;
};

Outcome Fetch(const std::string& url, const VoFilePath& path, const VoDownloadPolicy& policy = {})
{
    const auto request = VoSharedPtr<VoDownloadRequest>::Make(VoUrl(VoString(url)), path);
    request->setPolicy(policy);
    try {
        VoDownloadManager::RequestWait(request);
        return {};
    } catch (const VoDownloadException& e) {
        return {e.message().toStdString(), e.kind(), e.httpStatus()};
    }
}

class DownloadFaults : public testing::Test
{
protected:
    DownloadFaults() { VoDownloadManager::SetRedirectHosts("127.0.0.1", ""); }
    ~DownloadFaults() override { VoDownloadManager::SetRedirectHosts("", ""); }

    ScratchFolder m_folder;
    ScriptedHttpServer m_server;
    vo::test::LogCapture m_log;
};

} // namespace

/// The same from a server that announces each answer by an interim one, at which the framework ends a request.
class DownloadFaultsBehindHints : public DownloadFaults, public testing::WithParamInterface<const char*>
{
};

INSTANTIATE_TEST_SUITE_P(, DownloadFaultsBehindHints,
                         testing::Values("", "HTTP/1.1 103 Early Hints\r\nLink: </a>; rel=preload\r\n\r\n"
                                             "HTTP/1.1 102 Processing\r\nContent-Length: 7\r\n\r\n"),
                         [](const auto& set) { return *set.param ? "Interim" : "Alone"; });

TEST_P(DownloadFaultsBehindHints, EachEndsInAClearErrorLeavesTheOldFileAndIsOverTheNextTime)
{
    m_server.sayBefore(GetParam());
    std::printf("| fault | outcome | target |\n| --- | --- | --- |\n");
    for (const Row& row : Rows()) {
        SCOPED_TRACE(row.name);
        m_server.clear();
        const VoFilePath path = m_folder.write("target", "old");
        std::string url = row.target[0] == '/' ? m_server.url(row.target) : row.target;
        if (row.script)
            row.script(m_server);
        else if (row.target[0] == '/')
            url = RefusingUrl(row.target);
        VoDownloadPolicy policy;
        if (row.policy)
            row.policy(policy);

        const Outcome outcome = Fetch(url, path, policy);

        std::string text = Replaced(outcome.text, m_server.url(""), "SERVER");
        text = Replaced(text, m_server.url("", "localhost"), "LOCALHOST");
        const bool complete = row.outcome == std::string(Complete);
        std::printf("| %s | %s%s | %s |\n", row.name, text.c_str(),
                    outcome.kind == Kind::Transient ? " (transient)" : "",
                    m_folder.read("target") == "old" ? "as before" : "replaced");
        if (!row.alternative || text != row.alternative) {
            EXPECT_EQ(text, row.outcome);
        }
        EXPECT_EQ(outcome.kind, row.kind);
        EXPECT_EQ(outcome.status, row.status);
        EXPECT_EQ(m_folder.read("target"), complete ? row.content : "old");
        EXPECT_EQ(m_folder.tree("").size(), 1U) << "a partial file was left";

        m_server.clear();
        m_server.get("/file", ScriptedAnswer::Body(Content));
        EXPECT_EQ(Fetch(m_server.url("/file"), path).text, Complete);
        EXPECT_EQ(m_folder.read("target"), Content);
    }
}

TEST_F(DownloadFaults, BehindAnInterimAnswerAMalformedHeadIsRefused)
{
    m_server.sayBefore("HTTP/1.1 103 Early Hints\r\n\r\n");
    const ScriptedAnswer good = ScriptedAnswer::Body(Content);
    const VoFilePath path = m_folder.write("target", "old");
    for (const auto& [bad, message] :
         {std::pair(good.with("Content-Length", "7"), "Invalid HTTP header"),
          std::pair(good.withoutLength().with("Content-Length", "-7"), "Invalid HTTP header"),
          std::pair(good.withoutLength().with("Content-Length", "7x"), "Invalid HTTP header"),
          std::pair(good.with(" Folded", "x"), "Invalid HTTP header"),
          std::pair(good.with("", "x"), "Invalid HTTP header"),
          std::pair(good.with("Long", std::string(300000, 'x')), "Invalid HTTP header"),
          std::pair(good.with("Transfer-Encoding", "chunked"), "Unexpected transfer coding"),
          std::pair(ScriptedAnswer::Status(7, "OK", "x"), "Invalid HTTP status line")}) {
        m_server.get("/file", bad);
        m_server.head("/file", {good});
        EXPECT_EQ(Fetch(m_server.url("/file"), path).text, message);
        EXPECT_EQ(m_folder.read("target"), "old");
    }
    m_server.get("/file", good);
    EXPECT_EQ(Fetch(Replaced(m_server.url("/file"), "http://", "http://user:se%20cret@"), path).text, Complete);
    const auto requests = m_server.requests();
    EXPECT_EQ(requests.back().headers.at("authorization"), "Basic dXNlcjpzZSBjcmV0");
    EXPECT_EQ(std::count_if(requests.begin(), requests.end(), [](const auto& request) { return !request.isOld; }), 1);
}

TEST_F(DownloadFaults, RedirectsAskOnceForEachHop)
{
    m_server.get("/file", ScriptedAnswer::Redirect(302, "/a"));
    m_server.get("/a", ScriptedAnswer::Redirect(302, "/b"));
    m_server.get("/b", ScriptedAnswer::Body(Content));
    EXPECT_EQ(Fetch(m_server.url("/file"), m_folder.path("target")).text, Complete);
    EXPECT_EQ(m_folder.read("target"), Content);
    for (const char* const target : {"/file", "/a", "/b"}) {
        EXPECT_EQ(m_server.count("HEAD", target), 1U) << target;
        EXPECT_EQ(m_server.count("GET", target), 1U) << target;
    }
    EXPECT_EQ(
        m_log.count(vo::logging::Level::Diagnostic, "download",
                    VoString("Redirect requested from (" + m_server.url("/a") + ") to (" + m_server.url("/b") + ")")),
        2U);
}

TEST_F(DownloadFaults, PasswordsStayOutOfMessagesAndLogs)
{
    const std::string url = Replaced(m_server.url("/none"), "http://", "http://user:secret@");
    const Outcome outcome = Fetch(url, m_folder.path("target"));
    EXPECT_EQ(outcome.status, 404);
    EXPECT_EQ(outcome.text.find("secret"), std::string::npos) << outcome.text;
    for (const vo::logging::Record& record : m_log.records())
        EXPECT_FALSE(record.text.contains("secret")) << record.text.toStdString();
}

TEST_F(DownloadFaults, ATargetThatCannotBeMadeIsNamed)
{
    m_server.get("/file", ScriptedAnswer::Body(Content));
    const VoFilePath path = m_folder.path("missing/target");
    EXPECT_EQ(Fetch(m_server.url("/file"), path).text,
              "Cannot open file for writing: " + path.toString().toStdString());
}

#if defined(__unix__)
TEST_F(DownloadFaults, ADiskThatTakesNoMoreFailsTheDownloadAndLeavesNothing)
{
    m_server.get("/file", ScriptedAnswer::Body(std::string(400000, 'n')));
    const VoFilePath path = m_folder.write("target", "old");
    const Outcome outcome = [&] {
        const vo::test::FileSizeLimit limit(100000);
        return Fetch(m_server.url("/file"), path);
    }();
    EXPECT_EQ(outcome.text, "Cannot write to file: " + path.toString().toStdString());
    EXPECT_EQ(m_folder.read("target"), "old");
    EXPECT_EQ(m_folder.tree("").size(), 1U);
}
#endif
