#include <FileSystem/VoFilePath.h>

#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoNativeName.h>
#include <FileSystem/detail/PathText.h>

#include <ostream>
#include <string_view>
#include <utility>

using namespace vo::detail;

struct VoFilePath::Private
{
    VoString text;
};

namespace {

const VoString& NullText() noexcept
{
    static const VoString& text = *new VoString; // outlives all static objects
    return text;
}

std::size_t FilenamePosition(std::string_view text)
{
    return text.rfind(PathSeparator) + 1; // npos + 1 is 0
}

// Where the dot stands that parts stem and extension; the end of the text when there is none.
std::size_t ExtensionDot(std::string_view text)
{
    const std::string_view name = text.substr(FilenamePosition(text));
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || name == "..")
        return text.size();
    return text.size() - name.size() + dot;
}

VoStringView ViewFrom(const VoString& text, std::size_t position)
{
    return VoStringView(text, position, VoStringView::npos);
}

} // namespace

// On Windows no object of the library would have it otherwise, for those who refer to it.
constexpr std::size_t VoFilePath::MaximumLength; // NOLINT(readability-redundant-declaration)

VoFilePath::VoFilePath() = default;
VoFilePath::VoFilePath(const VoString& text)
    : VoFilePath(CreateUnchecked(NormalisedPath(text)))
{
}
VoFilePath::VoFilePath(VoString&& text)
    : VoFilePath(CreateUnchecked(NormalisedPath(std::move(text))))
{
}
VoFilePath::VoFilePath(const char* text)
    : VoFilePath(VoString(text))
{
}
VoFilePath::VoFilePath(const VoAbstractPath& path)
    : VoFilePath(CreateUnchecked(VoString(path.path())))
{
}
VoFilePath::VoFilePath(std::unique_ptr<Private> state) noexcept
    : m_private(std::move(state))
{
}
VoFilePath::VoFilePath(const VoFilePath& other)
    : m_private(other.m_private ? std::make_unique<Private>(*other.m_private) : nullptr)
{
}
VoFilePath::VoFilePath(VoFilePath&& other) noexcept = default;
VoFilePath& VoFilePath::operator=(const VoFilePath& other)
{
    return *this = VoFilePath(other);
}
VoFilePath& VoFilePath::operator=(VoFilePath&& other) noexcept = default;
VoFilePath::~VoFilePath() = default;

VoFilePath VoFilePath::CreateUnchecked(VoString&& text)
{
    if (text.isEmpty())
        return VoFilePath();
    return VoFilePath(std::make_unique<Private>(Private{std::move(text)}));
}

VoFilePath VoFilePath::Resolve(VoString text, const VoFilePath& base)
{
    return VoFilePath(std::move(text)).absolute(base);
}

const VoString& VoFilePath::path() const& noexcept
{
    return m_private ? m_private->text : NullText();
}

VoString VoFilePath::path() && noexcept
{
    const std::unique_ptr<Private> state = std::move(m_private); // a path without a text is null
    return state ? std::move(state->text) : VoString(NullText());
}

std::wstring VoFilePath::toWString() const
{
    return path().toWString();
}

VoString VoFilePath::nativeText() const
{
    return vo::NativeName(*this);
}

bool VoFilePath::isNull() const noexcept
{
    return !m_private;
}

bool VoFilePath::isAbsolute() const noexcept
{
    return RootNameLength(Bytes(path())) != 0;
}

bool VoFilePath::isRelative() const noexcept
{
    return !isAbsolute();
}

bool VoFilePath::isRooted() const noexcept
{
    return isAbsolute() || Bytes(path()).substr(0, 1) == "\\";
}

bool VoFilePath::isDirectory() const noexcept
{
    return EndsWithSeparator(Bytes(path()));
}

bool VoFilePath::isFile() const noexcept
{
    return !isNull() && !isDirectory();
}

bool VoFilePath::validLength() const noexcept
{
    return path().size() <= MaximumLength;
}

bool VoFilePath::isAncestor(const VoFilePath& other) const
{
    return isDirectory() && other.path().size() > path().size() && other.path().startsWith(path()) &&
           AnchorLength(Bytes(path())) == AnchorLength(Bytes(other.path()));
}

VoStringView VoFilePath::rootName() const&
{
    return VoStringView(path(), 0, RootNameLength(Bytes(path())));
}

VoDirectoryPath VoFilePath::parent() const
{
    return VoDirectoryPath(VoString(path().c_str(), ParentLength(Bytes(path()))));
}

VoStringView VoFilePath::parentPath() const&
{
    return VoStringView(path(), 0, ParentLength(Bytes(path())));
}

VoStringView VoFilePath::filename() const&
{
    return ViewFrom(path(), FilenamePosition(Bytes(path())));
}

VoStringView VoFilePath::stem() const&
{
    const std::size_t begin = FilenamePosition(Bytes(path()));
    return VoStringView(path(), begin, ExtensionDot(Bytes(path())) - begin);
}

VoStringView VoFilePath::extension() const&
{
    return ViewFrom(path(), std::min(ExtensionDot(Bytes(path())) + 1, path().size()));
}

VoFilePath VoFilePath::absolute(const VoFilePath& base) const
{
    if (isRooted())
        return *this;
    const std::size_t length = base.isDirectory() ? base.path().size() : ParentLength(Bytes(base.path()));
    return CreateUnchecked(AppendedPath(VoString(base.path().c_str(), length), path()));
}

VoFilePath VoFilePath::relative(const VoFilePath& base) const
{
    return CreateUnchecked(RelativePath(path(), base.path()));
}

VoFilePath VoFilePath::appended(const VoFilePath& other) const
{
    return CreateUnchecked(AppendedPath(path(), other.path()));
}

VoString VoFilePath::Serialize(const VoFilePath& path)
{
    return path.path();
}

VoFilePath VoFilePath::Deserialize(const VoString& text)
{
    return VoFilePath(text);
}

std::ostream& operator<<(std::ostream& stream, const VoFilePath& path)
{
    return stream << path.path();
}

std::size_t std::hash<VoFilePath>::operator()(const VoFilePath& path) const noexcept
{
    return std::hash<VoString>()(path.path());
}
