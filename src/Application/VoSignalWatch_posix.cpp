#include <Application/VoSignalWatch.h>

#if !defined(_WIN32)

#include <Threading/detail/ThreadFactory.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <iterator>
#include <unistd.h>
#include <utility>

namespace {

constexpr int Signals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr char Finish = 0; // no signal has this number

// The pipe's end that the handler writes to. A handler may do little more than that.
std::atomic<int> writingEnd{-1};

void OnSignal(int number)
{
    const int savedError = errno;
    const char message = static_cast<char>(number);
    [[maybe_unused]] const auto written = write(writingEnd.load(), &message, 1);
    errno = savedError;
}

void CallOnMessage(int readingEnd, int outerEnd, const std::function<void(int)>& function)
{
    for (char message = 0;;) {
        const auto count = read(readingEnd, &message, 1);
        if (count < 0 && errno == EINTR)
            continue;
        if (count != 1 || message == Finish)
            return;
        if (message != SIGINT && outerEnd >= 0) {
            [[maybe_unused]] const auto written = write(outerEnd, &message, 1);
        }
        function(message);
    }
}

} // namespace

struct VoSignalWatch::Private
{
    int readingEnd = -1;
    int outerEnd = -1; // of the object around this one
    struct sigaction previous[std::size(Signals)] = {};
    VoThread watcher;
};

VoSignalWatch::VoSignalWatch(std::function<void(int)> function)
    : m_private(std::make_unique<Private>())
{
    int ends[2];
    if (pipe(ends) != 0)
        return;
    for (const int end : ends)
        fcntl(end, F_SETFD, FD_CLOEXEC);
    m_private->readingEnd = ends[0];
    m_private->outerEnd = writingEnd.exchange(ends[1]);
    m_private->watcher =
        vo::detail::CreateThread([end = ends[0], outer = m_private->outerEnd,
                                  function = std::move(function)] { CallOnMessage(end, outer, function); },
                                 "vo signals");

    struct sigaction action = {};
    action.sa_handler = OnSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < std::size(Signals); ++i) {
        sigaction(Signals[i], nullptr, &m_private->previous[i]);
        // Started with "nohup" or in the background of a script: the signal is to stay without effect.
        if (m_private->previous[i].sa_handler != SIG_IGN)
            sigaction(Signals[i], &action, nullptr);
    }
}

VoSignalWatch::~VoSignalWatch()
{
    if (!m_private->watcher.joinable())
        return;
    for (std::size_t i = 0; i < std::size(Signals); ++i)
        sigaction(Signals[i], &m_private->previous[i], nullptr);
    const int end = writingEnd.exchange(m_private->outerEnd);
    [[maybe_unused]] const auto written = write(end, &Finish, 1);
    m_private->watcher.join();
    close(end);
    close(m_private->readingEnd);
}

#endif
