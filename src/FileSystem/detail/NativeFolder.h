#pragma once

#include <Core/VoExport.h>
#include <FileSystem/detail/NativeFile.h>

#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

namespace vo::detail {

/// A folder that is held open. A name is looked up in that very folder, whatever its path leads to meanwhile; whoever
/// replaces the folder by a link leads nobody elsewhere. One that is not open takes whole paths instead of names. One
/// source a platform; where the system has no such calls none is ever open.
///
/// A resource: it moves, and closes when it ends. Errors are returned; who calls knows what they mean.
class VOCORE_PRIVATE_EXPORT NativeFolder
{
public:
    NativeFolder() noexcept = default; ///< Not open.
    NativeFolder(NativeFolder&& other) noexcept;
    NativeFolder& operator=(NativeFolder&& other) noexcept;
    ~NativeFolder();

    static bool CanHold() noexcept; ///< Whether the system has such calls.

    /// Opens what a path leads to, links followed. It need not be readable. REQUIRES CanHold().
    static NativeFolder Open(const std::filesystem::path& path, std::error_code& error) noexcept;
    /// Opens a folder inside of this one, without following any link. An empty path stands for this one. REQUIRES
    /// isOpen().
    NativeFolder openBelow(const std::filesystem::path& relative, std::error_code& error) const noexcept;
    /// As openBelow(), but follows relative links that stay inside of this one, in one call. Gives an error also where
    /// the system has no such call, and for an absolute link, wherever it leads. REQUIRES isOpen().
    NativeFolder openInside(const std::filesystem::path& relative, std::error_code& error) const noexcept;

    bool isOpen() const noexcept { return m_handle != NoHandle; }

    /// @{ As the system's calls do it: the last piece of a name is never followed where it is a link.
    NativeFile createNew(const std::filesystem::path& name, std::error_code& error) const noexcept;
    void makeLink(const std::filesystem::path& to, const std::filesystem::path& name,
                  std::error_code& error) const noexcept;
    void makeDirectory(const std::filesystem::path& name, std::error_code& error) const noexcept;
    void rename(const std::filesystem::path& from, const std::filesystem::path& to,
                std::error_code& error) const noexcept;
    void removeFile(const std::filesystem::path& name, std::error_code& error) const noexcept;
    void removeDirectory(const std::filesystem::path& name, std::error_code& error) const noexcept;
    /// @}
    /// Gives a file the permissions of another one, without the bits that lend another's rights.
    void copyPermissions(const std::filesystem::path& model, const std::filesystem::path& file,
                         std::error_code& error) const noexcept;

    /// Lets all run a regular file who may read it, or nobody. Nothing where files have no such permission.
    void setExecutable(const std::filesystem::path& name, bool isExecutable, std::error_code& error) const noexcept;

private:
    using Handle = std::intptr_t; // a descriptor
    static constexpr Handle NoHandle = -1;

    explicit NativeFolder(Handle handle) noexcept
        : m_handle(handle)
    {
    }

    Handle m_handle = NoHandle;
};

} // namespace vo::detail
