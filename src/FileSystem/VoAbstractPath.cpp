#include <FileSystem/VoAbstractPath.h>

#include <Core/VoDeque.h>
#include <Core/VoMathsException.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/VoPathException.h>
#include <FileSystem/detail/NativePath.h>
#include <FileSystem/detail/PathText.h>

#include <ostream>

using namespace vo::detail;

VoAbstractPath::VoAbstractPath() = default;
VoAbstractPath::VoAbstractPath(const VoString& text)
    : m_path(NormalisedPath(text))
{
}
VoAbstractPath::VoAbstractPath(VoString&& text)
    : m_path(NormalisedPath(std::move(text)))
{
}
VoAbstractPath::VoAbstractPath(const char* text)
    : m_path(NormalisedPath(VoString(text)))
{
}
VoAbstractPath::VoAbstractPath(const VoAbstractPath& other) = default;
VoAbstractPath::VoAbstractPath(VoAbstractPath&& other) noexcept = default;
VoAbstractPath& VoAbstractPath::operator=(const VoAbstractPath& other) = default;
VoAbstractPath& VoAbstractPath::operator=(VoAbstractPath&& other) noexcept = default;
VoAbstractPath::~VoAbstractPath() = default;

std::wstring VoAbstractPath::toWString() const
{
    return m_path.toWString();
}

VoString VoAbstractPath::nativeText() const
{
    return VoString(ToNative(*this).u8string());
}

bool VoAbstractPath::isNull() const noexcept
{
    return Bytes(m_path).empty();
}

bool VoAbstractPath::isAbsolute() const noexcept
{
    return RootNameLength(Bytes(m_path)) != 0;
}

bool VoAbstractPath::isRelative() const noexcept
{
    return !isAbsolute();
}

bool VoAbstractPath::isRooted() const noexcept
{
    return isAbsolute() || Bytes(m_path).substr(0, 1) == "\\";
}

bool VoAbstractPath::isDirectory() const noexcept
{
    return EndsWithSeparator(Bytes(m_path));
}

bool VoAbstractPath::isFile() const noexcept
{
    return !isNull() && !isDirectory();
}

bool VoAbstractPath::isFragment() const noexcept
{
    return isRelative() && isDirectory();
}

bool VoAbstractPath::exists() const
{
    return VoFileSystem::Exists(*this);
}

VoStringView VoAbstractPath::rootName() const&
{
    return VoStringView(m_path, 0, RootNameLength(Bytes(m_path)));
}

VoStringView VoAbstractPath::top() const&
{
    const PathChunk chunk = NextChunk(Bytes(m_path), RootNameLength(Bytes(m_path)));
    return VoStringView(m_path, chunk.position, chunk.length);
}

VoStringView VoAbstractPath::chunk(std::size_t index) const&
{
    PathChunk chunk = NextChunk(Bytes(m_path), 0);
    for (std::size_t i = 0; i < index && chunk.length != 0; ++i)
        chunk = NextChunk(Bytes(m_path), chunk.position + chunk.length);
    if (chunk.length == 0)
        throw VoIndexOutOfBoundsException(index, numberChunks());
    return VoStringView(m_path, chunk.position, chunk.length);
}

VoDeque<VoStringView> VoAbstractPath::chunks() const&
{
    VoDeque<VoStringView> views;
    for (PathChunk chunk = NextChunk(Bytes(m_path), 0); chunk.length != 0;
         chunk = NextChunk(Bytes(m_path), chunk.position + chunk.length))
        views.pushBack(VoStringView(m_path, chunk.position, chunk.length));
    return views;
}

VoDeque<VoString> VoAbstractPath::chunks() const&&
{
    const VoDeque<VoStringView> views = chunks();
    return VoDeque<VoString>(views.begin(), views.end());
}

std::size_t VoAbstractPath::numberChunks() const noexcept
{
    std::size_t number = 0;
    for (PathChunk chunk = NextChunk(Bytes(m_path), 0); chunk.length != 0;
         chunk = NextChunk(Bytes(m_path), chunk.position + chunk.length))
        ++number;
    return number;
}

VoDirectoryPath VoAbstractPath::parent() const
{
    return VoDirectoryPath(VoString(m_path.c_str(), ParentLength(Bytes(m_path))));
}

void VoAbstractPath::resolve()
{
    m_path = ResolvedPath(m_path);
}

void VoAbstractPath::assertValid() const
{
    if (Bytes(m_path).find(':', RootNameLength(Bytes(m_path))) != std::string_view::npos)
        throw VoInvalidPathException("Invalid : in path name", m_path);
}

void VoAbstractPath::append(const VoAbstractPath& other)
{
    m_path = AppendedPath(m_path, other.m_path);
}

VoString VoAbstractPath::Serialize(const VoAbstractPath& path)
{
    return path.m_path;
}

std::ostream& operator<<(std::ostream& stream, const VoAbstractPath& path)
{
    return stream << path.m_path;
}
