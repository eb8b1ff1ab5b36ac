#include "SystemCalls_linux.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
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

// A call of the system that works unless its turn has come.
#define INTERPOSE(result, failure, effects, name, parameters, arguments, exceptions)                                   \
    result name parameters exceptions                                                                                  \
    {                                                                                                                  \
        REAL(name);                                                                                                    \
        return Faulty<result>(effects, failure, [&] { return real arguments; });                                       \
    }

#define INTERPOSE_OPENING(name, parameters, arguments)                                                                 \
    int name parameters                                                                                                \
    {                                                                                                                  \
        REAL(name);                                                                                                    \
        va_list more;                                                                                                  \
        va_start(more, flags);                                                                                         \
        const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;                                         \
        va_end(more);                                                                                                  \
        return Faulty(EffectsOfOpening(flags), -1, [&] { return real arguments; });                                    \
    }

extern "C" {

INTERPOSE_OPENING(open, (const char* path, int flags, ...), (path, flags, mode))
INTERPOSE_OPENING(open64, (const char* path, int flags, ...), (path, flags, mode))
INTERPOSE_OPENING(openat, (int directory, const char* path, int flags, ...), (directory, path, flags, mode))
INTERPOSE(DIR*, nullptr, Looks | TakesDescriptor, opendir, (const char* path), (path), noexcept(false))
INTERPOSE(ssize_t, -1, Looks, read, (int file, void* data, size_t size), (file, data, size), noexcept(false))
INTERPOSE(int, -1, Changes | TakesSpace, fsync, (int file), (file), noexcept(false))
INTERPOSE(int, -1, Changes | TakesSpace, syncfs, (int file), (file), noexcept)
INTERPOSE(int, -1, Changes | TakesSpace, rename, (const char* from, const char* to), (from, to), noexcept)
INTERPOSE(int, -1, Changes | TakesSpace, renameat2,
          (int from, const char* old, int to, const char* path, unsigned flags), (from, old, to, path, flags), noexcept)
INTERPOSE(int, -1, Changes | TakesSpace, renameat, (int from, const char* old, int to, const char* path),
          (from, old, to, path), noexcept)
INTERPOSE(int, -1, Changes, unlink, (const char* path), (path), noexcept)
INTERPOSE(int, -1, Changes, unlinkat, (int directory, const char* path, int flags), (directory, path, flags), noexcept)
INTERPOSE(int, -1, Changes, remove, (const char* path), (path), noexcept)
INTERPOSE(int, -1, Changes, rmdir, (const char* path), (path), noexcept)
INTERPOSE(int, -1, Changes | TakesSpace, mkdir, (const char* path, mode_t mode), (path, mode), noexcept)
INTERPOSE(int, -1, Changes | TakesSpace, mkdirat, (int directory, const char* path, mode_t mode),
          (directory, path, mode), noexcept)
INTERPOSE(int, -1, Changes | TakesSpace, symlinkat, (const char* to, int directory, const char* path),
          (to, directory, path), noexcept)
INTERPOSE(int, -1, Changes, fchmod, (int file, mode_t mode), (file, mode), noexcept)
INTERPOSE(ssize_t, -1, Looks, readlink, (const char* path, char* to, size_t size), (path, to, size), noexcept)
INTERPOSE(int, -1, Looks, stat, (const char* path, struct stat* information), (path, information), noexcept)
INTERPOSE(int, -1, Looks, lstat, (const char* path, struct stat* information), (path, information), noexcept)
INTERPOSE(char*, nullptr, Looks, realpath, (const char* path, char* resolved), (path, resolved), noexcept)

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

} // extern "C"
