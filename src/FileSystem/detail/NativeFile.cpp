#include <FileSystem/detail/NativeFile.h>

namespace vo::detail {

NativeFile::NativeFile(NativeFile&& other) noexcept
    : m_handle(std::exchange(other.m_handle, NoHandle))
{
}

NativeFile& NativeFile::operator=(NativeFile&& other) noexcept
{
    std::swap(m_handle, other.m_handle);
    return *this;
}

NativeFile::~NativeFile()
{
    std::error_code ignored;
    close(ignored);
}

} // namespace vo::detail
