#include <FileSystem/detail/NativeFolder.h>

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

void NativeFolder::makeDirectory(const fs::path& name, std::error_code& error) const noexcept
{
    if (!fs::create_directory(name, error) && !error)
        error = std::make_error_code(std::errc::file_exists);
}

void NativeFolder::rename(const fs::path& from, const fs::path& to, std::error_code& error) const noexcept
{
    fs::rename(from, to, error);
}

void NativeFolder::removeFile(const fs::path& name, std::error_code& error) const noexcept
{
    RemoveFile(name, error);
}

// The system itself refuses a folder that holds something.
void NativeFolder::removeDirectory(const fs::path& name, std::error_code& error) const noexcept
{
    if (!fs::remove(name, error) && !error)
        error = std::make_error_code(std::errc::no_such_file_or_directory);
}

void NativeFolder::copyPermissions(const fs::path& model, const fs::path& file, std::error_code& error) const noexcept
{
    const fs::perms permissions = fs::status(model, error).permissions();
    if (!error)
        fs::permissions(file, permissions & fs::perms::all, error);
}

} // namespace vo::detail
