#include <FileSystem/VoNativeName.h>

#include <Core/VoString.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativePath.h>

#include <filesystem>

namespace vo {

VoString NativeName(const VoFilePath& path)
{
    return VoString(detail::ToNative(path).u8string());
}

VoString NativeName(const VoDirectoryPath& path)
{
    return VoString(detail::ToNative(path).u8string());
}

VoFilePath FromNativeName(const VoString& name)
{
    return detail::FromNative(std::filesystem::u8path(name.toStdString()));
}

} // namespace vo
