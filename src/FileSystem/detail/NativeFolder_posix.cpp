#include <FileSystem/detail/NativeFolder.h>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#if defined(__linux__) && __has_include(<linux/openat2.h>)
#include <linux/openat2.h>
#include <sys/syscall.h>
#endif

namespace vo::detail {

namespace {

// A folder that may be entered need not be readable.
#if defined(O_PATH)
constexpr int Entering = O_PATH | O_DIRECTORY | O_CLOEXEC;
#else
constexpr int Entering = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
#endif

int OpenFolder(int folder, const char* name, int flags) noexcept
{
    int descriptor = ::openat(folder, name, Entering | flags);
    while (descriptor == -1 && errno == EINTR)
        descriptor = ::openat(folder, name, Entering | flags);
    return descriptor;
}

void Tell(bool isDone, std::error_code& error) noexcept
{
    error = isDone ? std::error_code() : std::error_code(errno, std::system_category());
}

} // namespace

NativeFolder::NativeFolder(NativeFolder&& other) noexcept
    : m_handle(std::exchange(other.m_handle, NoHandle))
{
}

NativeFolder& NativeFolder::operator=(NativeFolder&& other) noexcept
{
    std::swap(m_handle, other.m_handle);
    return *this;
}

NativeFolder::~NativeFolder()
{
    if (isOpen())
        ::close(static_cast<int>(m_handle));
}

bool NativeFolder::CanHold() noexcept
{
    return true;
}

NativeFolder NativeFolder::Open(const std::filesystem::path& path, std::error_code& error) noexcept
{
    NativeFolder folder(OpenFolder(AT_FDCWD, path.empty() ? "." : path.c_str(), 0));
    Tell(folder.isOpen(), error);
    return folder;
}

NativeFolder NativeFolder::openBelow(const std::filesystem::path& relative, std::error_code& error) const noexcept
{
    NativeFolder folder(OpenFolder(static_cast<int>(m_handle), ".", 0));
    Tell(folder.isOpen(), error);
    for (auto piece = relative.begin(); piece != relative.end() && !error; ++piece) {
        if (piece->empty())
            continue; // behind a last separator
        folder = NativeFolder(OpenFolder(static_cast<int>(folder.m_handle), piece->c_str(), O_NOFOLLOW));
        Tell(folder.isOpen(), error);
    }
    return error ? NativeFolder() : std::move(folder);
}

NativeFolder NativeFolder::openInside(const std::filesystem::path& relative, std::error_code& error) const noexcept
{
#if defined(RESOLVE_BENEATH) && defined(SYS_openat2)
    open_how how = {};
    how.flags = Entering;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
    NativeFolder folder(::syscall(SYS_openat2, static_cast<int>(m_handle), relative.empty() ? "." : relative.c_str(),
                                  &how, sizeof how));
    Tell(folder.isOpen(), error);
    return folder;
#else
    static_cast<void>(relative);
    error = std::make_error_code(std::errc::function_not_supported);
    return NativeFolder();
#endif
}

NativeFile NativeFolder::createNew(const std::filesystem::path& name, std::error_code& error) const noexcept
{
    const int folder = isOpen() ? static_cast<int>(m_handle) : AT_FDCWD;
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
    int descriptor = ::openat(folder, name.c_str(), flags, 0666);
    while (descriptor == -1 && errno == EINTR)
        descriptor = ::openat(folder, name.c_str(), flags, 0666);
    Tell(descriptor != -1, error);
    return error ? NativeFile() : NativeFile(descriptor);
}

void NativeFolder::makeLink(const std::filesystem::path& to, const std::filesystem::path& name,
                            std::error_code& error) const noexcept
{
    Tell(::symlinkat(to.c_str(), isOpen() ? static_cast<int>(m_handle) : AT_FDCWD, name.c_str()) == 0, error);
}

void NativeFolder::makeDirectory(const std::filesystem::path& name, std::error_code& error) const noexcept
{
    Tell(::mkdirat(isOpen() ? static_cast<int>(m_handle) : AT_FDCWD, name.c_str(), 0777) == 0, error);
}

void NativeFolder::rename(const std::filesystem::path& from, const std::filesystem::path& to,
                          std::error_code& error) const noexcept
{
    const int folder = isOpen() ? static_cast<int>(m_handle) : AT_FDCWD;
    Tell(::renameat(folder, from.c_str(), folder, to.c_str()) == 0, error);
}

void NativeFolder::removeFile(const std::filesystem::path& name, std::error_code& error) const noexcept
{
    Tell(::unlinkat(isOpen() ? static_cast<int>(m_handle) : AT_FDCWD, name.c_str(), 0) == 0, error);
}

void NativeFolder::removeDirectory(const std::filesystem::path& name, std::error_code& error) const noexcept
{
    Tell(::unlinkat(isOpen() ? static_cast<int>(m_handle) : AT_FDCWD, name.c_str(), AT_REMOVEDIR) == 0, error);
}

void NativeFolder::copyPermissions(const std::filesystem::path& model, const std::filesystem::path& file,
                                   std::error_code& error) const noexcept
{
    const int folder = isOpen() ? static_cast<int>(m_handle) : AT_FDCWD;
    struct stat information = {};
    Tell(::fstatat(folder, model.c_str(), &information, AT_SYMLINK_NOFOLLOW) == 0, error);
    if (error)
        return;
    const int descriptor = ::openat(folder, file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    Tell(descriptor != -1 && ::fchmod(descriptor, information.st_mode & 0777) == 0, error);
    if (descriptor != -1)
        ::close(descriptor);
}

void NativeFolder::setExecutable(const std::filesystem::path& name, bool isExecutable,
                                 std::error_code& error) const noexcept
{
    constexpr mode_t allMayRun = S_IXUSR | S_IXGRP | S_IXOTH;
    constexpr mode_t allMayRead = S_IRUSR | S_IRGRP | S_IROTH;
    const int folder = isOpen() ? static_cast<int>(m_handle) : AT_FDCWD;
    const int descriptor = ::openat(folder, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    struct stat found = {};
    Tell(descriptor != -1 && ::fstat(descriptor, &found) == 0, error);
    if (!error && !S_ISREG(found.st_mode))
        error = std::make_error_code(std::errc::invalid_argument);
    const mode_t before = found.st_mode & 0777;
    // The three bits to read stand two places above those to run.
    const mode_t after = isExecutable ? before | ((before & allMayRead) >> 2) : before & ~allMayRun;
    if (!error && after != before)
        Tell(::fchmod(descriptor, after) == 0, error);
    if (descriptor != -1)
        ::close(descriptor);
}

} // namespace vo::detail
