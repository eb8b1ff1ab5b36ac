#include <vo/Interrupt.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace vo::tool {
namespace {

constexpr int Signals[] = {SIGINT, SIGTERM, SIGHUP};
constexpr char Stop = 's';
constexpr char End = 'e'; // Stop, and not of this object's work alone
constexpr char Finish = 'f';

/// The pipe's end that the signal handler writes to. A handler may do little more than that; raising the flag calls
/// functions of others.
std::atomic<int> writingEnd{-1};

void OnSignal(int signal)
{
    const int savedError = errno;
    [[maybe_unused]] const auto written = write(writingEnd.load(), signal == SIGINT ? &Stop : &End, 1);
    errno = savedError;
}

void RaiseOnMessage(int readingEnd, int outerEnd, VoStopFlag flag)
{
    for (char message = 0;;) {
        const auto count = read(readingEnd, &message, 1);
        if (count < 0 && errno == EINTR)
            continue;
        if (count != 1 || message == Finish)
            return;
        if (message == End && outerEnd >= 0) [[maybe_unused]]
            const auto written = write(outerEnd, &End, 1);
        flag.stop();
    }
}

} // namespace

struct Interrupt::Private
{
    int readingEnd = -1;
    int outerEnd = -1; // of the object around this one
    struct sigaction previous[std::size(Signals)] = {};
    std::thread watcher;
};

Interrupt::Interrupt(const VoStopFlag& flag)
    : d(std::make_unique<Private>())
{
    int ends[2];
    if (pipe(ends) != 0)
        return;
    for (const int end : ends)
        fcntl(end, F_SETFD, FD_CLOEXEC);
    d->readingEnd = ends[0];
    d->outerEnd = writingEnd.exchange(ends[1]);
    d->watcher = std::thread(RaiseOnMessage, d->readingEnd, d->outerEnd, flag);

    struct sigaction action = {};
    action.sa_handler = OnSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < std::size(Signals); ++i) {
        sigaction(Signals[i], nullptr, &d->previous[i]);
        // Started with "nohup" or in the background of a script: the signal is to stay without effect.
        if (d->previous[i].sa_handler != SIG_IGN)
            sigaction(Signals[i], &action, nullptr);
    }
}

Interrupt::~Interrupt()
{
    if (!d->watcher.joinable())
        return;
    for (std::size_t i = 0; i < std::size(Signals); ++i)
        sigaction(Signals[i], &d->previous[i], nullptr);
    const int end = writingEnd.exchange(d->outerEnd);
    [[maybe_unused]] const auto written = write(end, &Finish, 1);
    d->watcher.join();
    close(end);
    close(d->readingEnd);
}

} // namespace vo::tool
