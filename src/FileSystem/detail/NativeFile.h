#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

/// The few things about files that the standard library cannot do: open without surprises, make a file that nobody else
/// has, and force content to disk. One source a platform. Errors are returned; who calls knows what they mean.
namespace vo::detail {

/// Files are read and written in blocks of this many bytes.
inline constexpr std::size_t FileBlockSize = std::size_t{256} * 1024;

/// What the last call of the system failed with.
std::error_code LastSystemError() noexcept;

/// Who may use a new file or directory.
enum class NewFileAccess
{
    Usual,       ///< as the user's settings say
    OwnerOnly,   ///< this user only
    OwnerAtFirst ///< this user only until its permissions are set, on systems on which these say all; else as usual
};

class NativeFolder;

/// An open file. A resource: it moves, and closes when it ends.
class VOCORE_PRIVATE_EXPORT NativeFile
{
public:
    NativeFile() noexcept = default; ///< Not open.
    NativeFile(NativeFile&& other) noexcept;
    NativeFile& operator=(NativeFile&& other) noexcept;
    ~NativeFile();

    /// Opens a regular file. Whatever else bears the name gives an error at once: opening a pipe would block, and a
    /// device may have no end.
    static NativeFile OpenForReading(const std::filesystem::path& path, std::error_code& error) noexcept;
    /// Makes a file and opens it for writing. A name that is taken, also by a link, gives std::errc::file_exists.
    static NativeFile CreateNew(const std::filesystem::path& path, NewFileAccess access,
                                std::error_code& error) noexcept;

    bool isOpen() const noexcept { return m_handle != NoHandle; }

    /// Reads up to `size` bytes; 0 at the end of the file and after an error.
    std::size_t read(char* data, std::size_t size, std::error_code& error) noexcept;
    /// Writes all bytes or gives an error.
    void write(const char* data, std::size_t size, std::error_code& error) noexcept;
    /// Forces what was written to the disk.
    void sync(std::error_code& error) noexcept;
    /// Closes; the file counts as closed also after an error.
    void close(std::error_code& error) noexcept;

private:
    friend class NativeFolder; // makes files, too

    using Handle = std::intptr_t; // a descriptor, or the system's handle
    static constexpr Handle NoHandle = -1;

    explicit NativeFile(Handle handle) noexcept
        : m_handle(handle)
    {
    }

    Handle m_handle = NoHandle;
};

/// Makes a directory that only this user may enter. A name that is taken gives std::errc::file_exists.
VOCORE_PRIVATE_EXPORT void CreatePrivateDirectory(const std::filesystem::path& path, std::error_code& error) noexcept;

/// Where files have lists of who may use them: gives a new file that of the one which it is going to replace, when that
/// is not all the directory's. Elsewhere permissions say all, and nothing is done. What cannot be had stays as it is.
VOCORE_PRIVATE_EXPORT void CopyAccessList(const std::filesystem::path& from, const std::filesystem::path& to) noexcept;

/// Removes a file or a link, also one that is marked as not to be written; such a mark is kept when that fails.
VOCORE_PRIVATE_EXPORT void RemoveFile(const std::filesystem::path& path, std::error_code& error) noexcept;

/// Makes the names in a directory survive a loss of power. Does nothing where the system has no such operation.
VOCORE_PRIVATE_EXPORT void SyncDirectory(const std::filesystem::path& directory, std::error_code& error) noexcept;

} // namespace vo::detail
