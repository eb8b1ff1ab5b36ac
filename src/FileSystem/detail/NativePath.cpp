#include <FileSystem/detail/NativePath.h>

#include <Core/VoFileException.h>
#include <Core/detail/UTF8.h>
#include <FileSystem/VoAbstractPath.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/detail/NativeNames.h>
#include <FileSystem/detail/PathText.h>

#include <algorithm>
#include <string>
#include <system_error>

namespace vo::detail {

namespace {

constexpr bool BackslashSeparates = std::filesystem::path::preferred_separator == PathSeparator;

std::filesystem::path NativeText(const VoString& text)
{
    if (Bytes(text).find('\0') != std::string_view::npos)
        throw VoInvalidPathFileException(VoFilePath::CreateUnchecked(VoString(text)));
    if constexpr (BackslashSeparates) {
        if (ValidUTF8Prefix(Bytes(text)) != text.size()) // two such texts would be one name
            throw VoInvalidPathFileException(VoFilePath::CreateUnchecked(VoString(text)));
        return std::filesystem::path(text.toWString());
    } else {
        std::string bytes = text.toStdString();
        std::replace(bytes.begin(), bytes.end(), PathSeparator, '/');
        return std::filesystem::path(std::move(bytes));
    }
}

// The bytes of a system's name, with our separator.
std::string PathBytes(const std::filesystem::path& path)
{
    if constexpr (BackslashSeparates) {
        const VoString text = VoString::FromWString(path.wstring());
        std::string bytes = text.toStdString();
        if (text.toWString() != path.wstring()) // half a character, which the system lets stand by itself
            throw VoInvalidPathFileException("Name is no Unicode text",
                                             VoFilePath::CreateUnchecked(VoString(std::move(bytes))));
        std::replace(bytes.begin(), bytes.end(), '/', PathSeparator); // means the same there
        return bytes;
    } else {
        std::string bytes = path.string();
        if (bytes.find(PathSeparator) != std::string::npos)
            throw VoInvalidPathFileException("Name contains a backslash",
                                             VoFilePath::CreateUnchecked(VoString(std::move(bytes))));
        std::replace(bytes.begin(), bytes.end(), '/', PathSeparator);
        return bytes;
    }
}

bool IsRepeatedSeparator(const std::string& bytes, std::size_t index)
{
    return index > 1 && bytes[index] == PathSeparator && bytes[index - 1] == PathSeparator;
}

} // namespace

std::filesystem::path ToNative(const VoFilePath& path)
{
    return NativeText(path.path());
}

std::filesystem::path ToNative(const VoAbstractPath& path)
{
    return NativeText(path.path());
}

VoFilePath FromNative(const std::filesystem::path& path)
{
    const std::string bytes = PathBytes(path);
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size(); ++i)
        if (!IsRepeatedSeparator(bytes, i))
            text += bytes[i];
    return VoFilePath::CreateUnchecked(VoString(std::move(text)));
}

VoFilePath ChildFromNative(const VoFilePath& directory, const std::filesystem::path& name)
{
    return VoFilePath::CreateUnchecked(directory.path() + VoString(PathBytes(name)));
}

void RequireValidLength(const VoFilePath& path)
{
    if (!path.validLength())
        throw VoPathSizeFileException(path);
}

void RequireValidLength(const VoAbstractPath& path)
{
    if (path.path().size() > VoFilePath::MaximumLength)
        throw VoPathSizeFileException(VoFilePath(path));
}

bool MeansMissing(const std::error_code& error)
{
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory ||
           error == std::errc::too_many_symbolic_link_levels || error == std::errc::filename_too_long;
}

bool IsInsideCanonical(const VoDirectoryPath& directory, const VoFilePath& path)
{
    std::error_code error;
    const std::filesystem::path native = ToNative(directory);
    const bool isThere = std::filesystem::exists(TargetStatus(native, error));
    std::filesystem::path outer;
    std::filesystem::path inner;
    if (!error)
        outer = RealPath(native, error);
    if (!error)
        inner = RealPath(ToNative(path), error);
    if (error && !MeansMissing(error))
        throw VoFileException("canonical: " + VoString(error.message()), path);
    return !error && isThere &&
           std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
}

} // namespace vo::detail
