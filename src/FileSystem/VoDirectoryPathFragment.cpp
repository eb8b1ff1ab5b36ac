#include <FileSystem/VoDirectoryPathFragment.h>

#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoPathException.h>
#include <FileSystem/detail/PathText.h>

VoDirectoryPathFragment::VoDirectoryPathFragment() = default;
VoDirectoryPathFragment::VoDirectoryPathFragment(const VoString& text)
    : VoAbstractPath(text)
{
    VoDirectoryPathFragment::assertValid();
}
VoDirectoryPathFragment::VoDirectoryPathFragment(const VoDirectoryPathFragment& other) = default;
VoDirectoryPathFragment::VoDirectoryPathFragment(VoDirectoryPathFragment&& other) noexcept = default;
VoDirectoryPathFragment& VoDirectoryPathFragment::operator=(const VoDirectoryPathFragment& other) = default;
VoDirectoryPathFragment& VoDirectoryPathFragment::operator=(VoDirectoryPathFragment&& other) noexcept = default;
VoDirectoryPathFragment::~VoDirectoryPathFragment() = default;

VoFilePath VoDirectoryPathFragment::file(const char* name) const
{
    return file(VoFilePath(name));
}

VoFilePath VoDirectoryPathFragment::file(const VoFilePath& file) const
{
    return VoFilePath::CreateUnchecked(vo::detail::AppendedPath(path(), file.path()));
}

void VoDirectoryPathFragment::assertValid() const
{
    if (!isNull() && !isFragment())
        throw VoDirectoryPathException(path());
}
