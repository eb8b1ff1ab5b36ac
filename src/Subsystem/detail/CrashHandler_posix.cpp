#include <Subsystem/detail/CrashHandler.h>

#if !defined(_WIN32)

#include <Core/VoFileException.h>
#include <FileSystem/detail/NativePath.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace vo::logging {

namespace {

struct CrashSignal
{
    int number;
    const char* name;
};

constexpr CrashSignal Signals[] = {
    {SIGSEGV, "SIGSEGV"}, {SIGABRT, "SIGABRT"}, {SIGBUS, "SIGBUS"}, {SIGFPE, "SIGFPE"}, {SIGILL, "SIGILL"}};
constexpr std::size_t StackSize = 64 * 1024;

// What the handler needs is there before it runs: a handler may neither allocate nor wait.
const CrashRing* crashRing = nullptr;
char crashFile[4096] = {};
struct sigaction previousActions[std::size(Signals)] = {};
std::atomic<bool> isCrashing{false};
bool isInstalled = false;
alignas(16) char handlerStack[StackSize];

void WriteAll(void* context, const char* text, std::size_t size)
{
    const int file = *static_cast<const int*>(context);
    while (size > 0) {
        const ssize_t count = write(file, text, size);
        if (count <= 0)
            return;
        text += count;
        size -= static_cast<std::size_t>(count);
    }
}

void WriteText(int file, const char* text)
{
    WriteAll(&file, text, std::strlen(text));
}

void WriteNumber(int file, long number)
{
    char digits[24];
    char* first = std::end(digits);
    *--first = '\0';
    for (; number > 0; number /= 10)
        *--first = static_cast<char>('0' + number % 10);
    WriteText(file, first);
}

void WriteCrash(const char* signalName)
{
    struct stat before = {};
    const bool isLarge = lstat(crashFile, &before) == 0 && before.st_size >= static_cast<off_t>(LargestCrashFile);
    int file = open(crashFile, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW | (isLarge ? O_TRUNC : 0), 0600);
    if (file < 0)
        return;
    WriteText(file, "Process ");
    WriteNumber(file, getpid());
    WriteText(file, " ended by ");
    WriteText(file, signalName);
    WriteText(file, "; last records:\n");
    crashRing->readEach(WriteAll, &file);
    close(file);
}

void OnCrash(int number)
{
    // The first thread that crashes writes; others wait, mostly for the end that it brings.
    while (isCrashing.exchange(true)) {
        const timespec moment{0, 10000000};
        nanosleep(&moment, nullptr);
    }
    for (std::size_t i = 0; i < std::size(Signals); ++i) {
        if (Signals[i].number != number)
            continue;
        WriteCrash(Signals[i].name);
        sigaction(number, &previousActions[i], nullptr);
    }
    isCrashing = false; // who had the signal before may let the process live
    raise(number);      // blocked until this returns
}

// Without a stack of its own the handler could not run when the stack has overflown.
void PrepareStack()
{
    stack_t current = {};
    if (sigaltstack(nullptr, &current) != 0 || (current.ss_flags & SS_DISABLE) == 0)
        return;
    stack_t own = {};
    own.ss_sp = handlerStack;
    own.ss_size = StackSize;
    sigaltstack(&own, nullptr);
}

} // namespace

void InstallCrashHandler(const CrashRing& ring, const std::filesystem::path& file)
{
    const std::string name = std::filesystem::absolute(file).string();
    if (name.size() >= sizeof crashFile)
        throw VoPathSizeFileException(vo::detail::FromNative(file));
    RemoveCrashHandler();
    crashRing = &ring;
    std::memcpy(crashFile, name.c_str(), name.size() + 1);
    PrepareStack();
    struct sigaction action = {};
    action.sa_handler = OnCrash;
    action.sa_flags = SA_ONSTACK;
    sigfillset(&action.sa_mask);
    for (std::size_t i = 0; i < std::size(Signals); ++i)
        sigaction(Signals[i].number, &action, &previousActions[i]);
    isInstalled = true;
}

void RemoveCrashHandler() noexcept
{
    if (!isInstalled)
        return;
    for (std::size_t i = 0; i < std::size(Signals); ++i) {
        struct sigaction current = {};
        // Who has taken the signal over meanwhile keeps it.
        if (sigaction(Signals[i].number, nullptr, &current) == 0 && current.sa_handler == OnCrash)
            sigaction(Signals[i].number, &previousActions[i], nullptr);
    }
    isInstalled = false;
}

} // namespace vo::logging

#endif
