#include <FileSystem/detail/NativeFolder.h>

#include <FileSystem/detail/NativeNames.h>
#include <FileSystem/detail/WindowsCalls.h>

namespace vo::detail {

namespace fs = std::filesystem;

NativeFolder::NativeFolder(NativeFolder&& other) noexcept
    : m_handle(std::exchange(other.m_handle, NoHandle))
{
}

NativeFolder& NativeFolder::operator=(NativeFolder&& other) noexcept
{
    std::swap(m_handle, other.m_handle);
    return *this;
}

NativeFolder::~NativeFolder() = default;

bool NativeFolder::CanHold() noexcept
{
    return false;
}

NativeFolder NativeFolder::Open(const fs::path&, std::error_code& error) noexcept
{
    error = std::make_error_code(std::errc::function_not_supported);
    return NativeFolder();
}

NativeFolder NativeFolder::openBelow(const fs::path&, std::error_code& error) const noexcept
{
    error = std::make_error_code(std::errc::function_not_supported);
    return NativeFolder();
}

NativeFolder NativeFolder::openInside(const fs::path&, std::error_code& error) const noexcept
{
    error = std::make_error_code(std::errc::function_not_supported);
    return NativeFolder();
}

NativeFile NativeFolder::createNew(const fs::path& name, std::error_code& error) const noexcept
{
    return NativeFile::CreateNew(name, NewFileAccess::Usual, error);
}

void NativeFolder::makeLink(const fs::path& to, const fs::path& name, std::error_code& error) const noexcept
{
    fs::create_symlink(to, name, error);
}

void NativeFolder::setExecutable(const fs::path&, bool, std::error_code& error) const noexcept
{
    error.clear();
}

void NativeFolder::makeDirectory(const fs::path& name, std::error_code& error) const noexcept
{
    error.clear();
    if (!::CreateDirectoryW(SystemName(name).c_str(), nullptr))
        error = LastSystemError();
}

void NativeFolder::rename(const fs::path& from, const fs::path& to, std::error_code& error) const noexcept
{
    RenameNative(from, to, error);
}

void NativeFolder::removeFile(const fs::path& name, std::error_code& error) const noexcept
{
    RemoveFile(name, error);
}

// The system itself refuses a folder that holds something.
void NativeFolder::removeDirectory(const fs::path& name, std::error_code& error) const noexcept
{
    if (!RemoveNative(name, error) && !error)
        error = std::make_error_code(std::errc::no_such_file_or_directory);
}

void NativeFolder::copyPermissions(const fs::path& model, const fs::path& file, std::error_code& error) const noexcept
{
    error.clear();
    constexpr auto mark = static_cast<DWORD>(FILE_ATTRIBUTE_READONLY);
    const DWORD modelled = ::GetFileAttributesW(SystemName(model).c_str());
    const std::wstring target = SystemName(file);
    const DWORD attributes = ::GetFileAttributesW(target.c_str());
    if (modelled == INVALID_FILE_ATTRIBUTES || attributes == INVALID_FILE_ATTRIBUTES ||
        !::SetFileAttributesW(target.c_str(), (attributes & ~mark) | (modelled & mark)))
        error = LastSystemError();
}

} // namespace vo::detail
