#include "SystemCalls_linux.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace vo::test {

namespace {

using Kind = CallFault::Kind;

// What a call does, as bits.
enum Effect : unsigned
{
    Looks = 1,
    Changes = 2,
    TakesSpace = 4,
    TakesDescriptor = 8,
};

CallFault current;
std::atomic<bool> isArmed{false};
std::atomic<std::size_t> counted{0};

bool Counts(unsigned effects)
{
    switch (current.kind) {
    case Kind::Kill:
    case Kind::KillHalfway:
        return (effects & Changes) != 0;
    default:
        break;
    }
    switch (current.code) {
    case ENOSPC:
        return (effects & TakesSpace) != 0;
    case EMFILE:
        return (effects & TakesDescriptor) != 0;
    default:
        return true;
    }
}

enum class Fate
{
    Works,
    Fails,
    Dies,
};

Fate Next(unsigned effects)
{
    if (!isArmed || !Counts(effects))
        return Fate::Works;
    const std::size_t number = ++counted;
    switch (current.kind) {
    case Kind::None:
        return Fate::Works;
    case Kind::FailOne:
        return number == current.number ? Fate::Fails : Fate::Works;
    case Kind::FailAll:
        return number >= current.number ? Fate::Fails : Fate::Works;
    default:
        return number == current.number ? Fate::Dies : Fate::Works;
    }
}

template <typename Function>
Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

// Does the call unless its turn has come.
template <typename Result, typename Call>
Result Faulty(unsigned effects, Result failure, Call call)
{
    switch (Next(effects)) {
    case Fate::Dies:
        ::kill(::getpid(), SIGKILL);
        break;
    case Fate::Fails:
        errno = current.code;
        return failure;
    case Fate::Works:
        break;
    }
    return call();
}

unsigned EffectsOfOpening(int flags)
{
    return TakesDescriptor | ((flags & O_CREAT) != 0 ? Changes | TakesSpace : Looks);
}

} // namespace

void Arm(const CallFault& fault)
{
    current = fault;
    counted = 0;
    isArmed = true;
}

std::size_t Disarm()
{
    isArmed = false;
    return counted;
}

} // namespace vo::test

using namespace vo::test;

#define REAL(name) static auto* const real = Real<decltype(name)>(#name)

extern "C" {

int open(const char* path, int flags, ...)
{
    REAL(open);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return Faulty(EffectsOfOpening(flags), -1, [&] { return real(path, flags, mode); });
}

int open64(const char* path, int flags, ...)
{
    REAL(open64);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return Faulty(EffectsOfOpening(flags), -1, [&] { return real(path, flags, mode); });
}

int openat(int directory, const char* path, int flags, ...)
{
    REAL(openat);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return Faulty(EffectsOfOpening(flags), -1, [&] { return real(directory, path, flags, mode); });
}

DIR* opendir(const char* path)
{
    REAL(opendir);
    return Faulty(Looks | TakesDescriptor, static_cast<DIR*>(nullptr), [&] { return real(path); });
}

ssize_t read(int file, void* data, size_t size)
{
    REAL(read);
    return Faulty(Looks, ssize_t{-1}, [&] { return real(file, data, size); });
}

ssize_t write(int file, const void* data, size_t size)
{
    REAL(write);
    const Fate fate = Next(Changes | TakesSpace);
    if (fate == Fate::Works)
        return real(file, data, size);
    // A disk that fills up takes some first.
    if (current.kind == CallFault::Kind::KillHalfway || current.code == ENOSPC)
        real(file, data, size / 2);
    if (fate == Fate::Dies)
        ::kill(::getpid(), SIGKILL);
    errno = current.code;
    return -1;
}

int fsync(int file)
{
    REAL(fsync);
    return Faulty(Changes | TakesSpace, -1, [&] { return real(file); });
}

int syncfs(int file) noexcept
{
    REAL(syncfs);
    return Faulty(Changes | TakesSpace, -1, [&] { return real(file); });
}

int rename(const char* from, const char* to) noexcept
{
    REAL(rename);
    return Faulty(Changes | TakesSpace, -1, [&] { return real(from, to); });
}

int renameat2(int fromDirectory, const char* from, int toDirectory, const char* to, unsigned flags) noexcept
{
    REAL(renameat2);
    return Faulty(Changes | TakesSpace, -1, [&] { return real(fromDirectory, from, toDirectory, to, flags); });
}

int unlink(const char* path) noexcept
{
    REAL(unlink);
    return Faulty(Changes, -1, [&] { return real(path); });
}

int unlinkat(int directory, const char* path, int flags) noexcept
{
    REAL(unlinkat);
    return Faulty(Changes, -1, [&] { return real(directory, path, flags); });
}

int remove(const char* path) noexcept
{
    REAL(remove);
    return Faulty(Changes, -1, [&] { return real(path); });
}

int rmdir(const char* path) noexcept
{
    REAL(rmdir);
    return Faulty(Changes, -1, [&] { return real(path); });
}

int mkdir(const char* path, mode_t mode) noexcept
{
    REAL(mkdir);
    return Faulty(Changes | TakesSpace, -1, [&] { return real(path, mode); });
}

int stat(const char* path, struct stat* information) noexcept
{
    REAL(stat);
    return Faulty(Looks, -1, [&] { return real(path, information); });
}

int lstat(const char* path, struct stat* information) noexcept
{
    REAL(lstat);
    return Faulty(Looks, -1, [&] { return real(path, information); });
}

char* realpath(const char* path, char* resolved) noexcept
{
    REAL(realpath);
    return Faulty(Looks, static_cast<char*>(nullptr), [&] { return real(path, resolved); });
}

} // extern "C"
