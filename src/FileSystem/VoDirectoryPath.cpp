#include <FileSystem/VoDirectoryPath.h>

#include <FileSystem/VoDirectoryPathFragment.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoPathException.h>
#include <FileSystem/detail/PathText.h>

#include <utility>

using namespace vo::detail;

namespace {

VoString WithFinalSeparator(const VoString& text)
{
    VoString result = NormalisedPath(text);
    if (!result.isEmpty() && !EndsWithSeparator(Bytes(result)))
        result += PathSeparator;
    return result;
}

} // namespace

VoDirectoryPath::VoDirectoryPath() = default;
VoDirectoryPath::VoDirectoryPath(const VoString& text)
    : VoAbstractPath(text)
{
    VoDirectoryPath::assertValid();
}
VoDirectoryPath::VoDirectoryPath(VoString&& text)
    : VoAbstractPath(std::move(text))
{
    VoDirectoryPath::assertValid();
}
VoDirectoryPath::VoDirectoryPath(const char* text)
    : VoAbstractPath(text)
{
    VoDirectoryPath::assertValid();
}
VoDirectoryPath::VoDirectoryPath(const VoDirectoryPath& other) = default;
VoDirectoryPath::VoDirectoryPath(VoDirectoryPath&& other) noexcept = default;
VoDirectoryPath& VoDirectoryPath::operator=(const VoDirectoryPath& other) = default;
VoDirectoryPath& VoDirectoryPath::operator=(VoDirectoryPath&& other) noexcept = default;
VoDirectoryPath::~VoDirectoryPath() = default;

VoDirectoryPath VoDirectoryPath::FromText(const VoString& text)
{
    return VoDirectoryPath(WithFinalSeparator(text));
}

VoDirectoryPath& VoDirectoryPath::append(const VoDirectoryPath& other)
{
    VoAbstractPath::append(other);
    return *this;
}

VoDirectoryPath& VoDirectoryPath::append(const VoDirectoryPathFragment& other)
{
    VoAbstractPath::append(other);
    return *this;
}

VoDirectoryPath VoDirectoryPath::appended(const VoDirectoryPath& other) const
{
    VoDirectoryPath result(*this);
    result.append(other);
    return result;
}

VoDirectoryPath VoDirectoryPath::appended(const VoDirectoryPathFragment& other) const
{
    VoDirectoryPath result(*this);
    result.append(other);
    return result;
}

VoFilePath VoDirectoryPath::appended(const VoFilePath& other) const
{
    return VoFilePath::CreateUnchecked(AppendedPath(path(), other.path()));
}

VoDirectoryPath VoDirectoryPath::directory(const VoDirectoryPath& name) const
{
    return appended(name);
}

VoDirectoryPath VoDirectoryPath::directory(const VoString& name) const
{
    return appended(FromText(name));
}

VoDirectoryPath VoDirectoryPath::directory(const char* name) const
{
    return directory(VoString(name));
}

VoFilePath VoDirectoryPath::file(const char* name) const
{
    return appended(VoFilePath(name));
}

VoFilePath VoDirectoryPath::file(const VoString& name) const
{
    return appended(VoFilePath(name));
}

VoFilePath VoDirectoryPath::relativeFile(const VoFilePath& file) const
{
    return file.relative(toFilePath());
}

VoFilePath VoDirectoryPath::toFilePath() const
{
    return VoFilePath(*this);
}

VoString VoDirectoryPath::Serialize(const VoDirectoryPath& path)
{
    return path.path();
}

VoDirectoryPath VoDirectoryPath::Deserialize(const VoString& text)
{
    return VoDirectoryPath(text);
}

void VoDirectoryPath::assertValid() const
{
    if (isNull())
        return;
    VoAbstractPath::assertValid();
    if (isDirectory())
        return;
    VoInvalidPathException refused("Not a valid directory path", path());
    refused.complete(path(), "a directory's path ends with a separator; VoDirectoryPath::FromText() adds it");
    throw refused;
}

std::size_t std::hash<VoDirectoryPath>::operator()(const VoDirectoryPath& path) const noexcept
{
    return std::hash<VoString>()(path.path());
}
