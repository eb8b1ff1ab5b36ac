#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vo::test {

/// What the server does with one request.
struct ScriptedAnswer
{
    /// Where an answer goes wrong.
    enum class Fault
    {
        None,
        Reset,  ///< The connection is reset, as by a crashed server.
        Close,  ///< The connection is closed in order.
        Stall,  ///< Nothing more comes; the connection stays open.
        Endless ///< The body never ends.
    };

    /// Where in the answer the fault is, when it is not after a number of bytes of the body.
    static constexpr std::int64_t BeforeHeaders = -1;

    int status = 200;
    std::string reason = "OK";
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
    bool chunked = false;
    bool withLength = true;            ///< Send "Content-Length"; without it the end of the connection ends the body.
    std::int64_t announcedLength = -1; ///< What "Content-Length" says, where that is not the truth.
    Fault fault = Fault::None;
    std::int64_t faultAt = 0; ///< Bytes of the body that come before the fault, or BeforeHeaders.
    int delay = 0;            ///< Milliseconds before the first byte.
    std::size_t trickle = 0;  ///< Send the body in pieces of so many bytes...
    int trickleInterval = 5;  ///< ...with so many milliseconds between them.

    static ScriptedAnswer Body(std::string body);
    static ScriptedAnswer Status(int status, const std::string& reason, std::string body = {});
    static ScriptedAnswer Redirect(int status, const std::string& location);

    /// This answer with another fault, header, form or speed.
    /// @{
    ScriptedAnswer failing(Fault how, std::int64_t at) const;
    ScriptedAnswer with(const std::string& name, const std::string& value) const;
    ScriptedAnswer inChunks(bool on = true) const;
    ScriptedAnswer withoutLength() const;
    ScriptedAnswer announcing(std::int64_t length) const;
    ScriptedAnswer trickling(std::size_t bytes, int milliseconds) const;
    /// @}
};

/// A request as it came.
struct ScriptedRequest
{
    std::string method;
    std::string target;
    bool isOld = false; ///< Of HTTP/1.0: its answer comes without chunks and ends the connection.
    std::map<std::string, std::string> headers; ///< Names in lower case.
};

/// An HTTP server on a loopback port, in a thread of its own, that answers as it was told and keeps what it was asked.
/// Unknown targets get 404. All members may be called from any thread.
class ScriptedHttpServer
{
public:
    ScriptedHttpServer();
    ~ScriptedHttpServer();
    ScriptedHttpServer(const ScriptedHttpServer&) = delete;
    ScriptedHttpServer& operator=(const ScriptedHttpServer&) = delete;

    /// "http://127.0.0.1:port" and the target; or with another name of this machine.
    std::string url(const std::string& target, const std::string& host = "127.0.0.1") const;

    /// Answers to GET of a target: one for each request, the last one for all further ones. A HEAD gets the status and
    /// headers of the first answer, without its fault, unless it has answers of its own.
    /// @{
    void get(const std::string& target, std::vector<ScriptedAnswer> answers);
    void get(const std::string& target, const ScriptedAnswer& answer);
    void head(const std::string& target, std::vector<ScriptedAnswer> answers);
    /// @}
    void sayBefore(const std::string& text); ///< Sends that text before each answer, for good.
    void clear(); ///< Forgets all answers and requests.

    std::vector<ScriptedRequest> requests() const;
    std::size_t count(const std::string& method, const std::string& target) const; ///< How often that was asked.
    /// Waits until a request has come as often as that; false when it does not within seconds.
    bool waitFor(const std::string& method, const std::string& target, std::size_t times = 1) const;
    std::size_t mostConnections() const; ///< The largest number of connections open at one time.

private:
    class Worker;
    struct Thread;
    std::unique_ptr<Thread> m_thread;
};

/// A URL on this machine that refuses connections.
std::string RefusingUrl(const std::string& target);

} // namespace vo::test
