#include <FileSystem/VoNativeName.h>

#include <Core/VoString.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativePath.h>

#include <filesystem>
#include <utility>

namespace vo {

VoString NativeName(const VoFilePath& path)
{
    return VoString(ToStdPath(path).u8string());
}

VoString NativeName(const VoDirectoryPath& path)
{
    return VoString(ToStdPath(path).u8string());
}

VoFilePath FromNativeName(const VoString& name)
{
    return detail::FromNative(std::filesystem::u8path(name.toStdString()));
}

std::filesystem::path ToStdPath(const VoFilePath& path)
{
    return detail::ToNative(path);
}

std::filesystem::path ToStdPath(const VoDirectoryPath& path)
{
    return detail::ToNative(path);
}

VoFilePath FromStdPath(const std::filesystem::path& path)
{
    return detail::FromNative(path);
}

VoDirectoryPath FromStdDirectory(const std::filesystem::path& path)
{
    VoString text = detail::FromNative(path).path();
    if (text.isEmpty())
        return VoDirectoryPath();
    // Directories trim their texts; blanks within are names' own.
    if (VoString::IsWhiteSpace(text[0]))
        text = ".\\" + text;
    if (text[text.size() - 1] != '\\')
        text += '\\';
    return VoDirectoryPath(std::move(text));
}

} // namespace vo
