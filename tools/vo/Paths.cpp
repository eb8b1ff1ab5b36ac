#include "Paths.h"

#include "CommandError.h"

#include <Core/VoException.h>
#include <FileSystem/NativePath.h>

#include <filesystem>

namespace vo::tool {
namespace {

/// Turns failures into a message that tells where the text came from.
template <typename Make>
auto typedPath(const VoString& source, const VoString& text, Make make)
{
    const auto unusable = [&](const VoString& why) {
        return UsageError(source + ": \"" + text + "\" cannot be used as a path: " + why);
    };
    if (text.contains("://"))
        throw UsageError(source + ": \"" + text + "\" is a URL; only a local file can be read here");
    try {
        const std::filesystem::path typed = std::filesystem::u8path(text.toStdString());
        return make(vo::detail::FromNative(std::filesystem::absolute(typed).lexically_normal()));
    } catch (const VoException& exception) {
        throw unusable(exception.message());
    } catch (const std::filesystem::filesystem_error& error) {
        throw unusable(VoString(error.code().message()));
    }
}

} // namespace

VoFilePath TypedFile(const VoString& source, const VoString& text)
{
    return typedPath(source, text, [](VoFilePath path) { return path; });
}

VoDirectoryPath TypedDirectory(const VoString& source, const VoString& text)
{
    return typedPath(source, text, [](const VoFilePath& path) { return VoDirectoryPath::FromText(path.path()); });
}

VoString PathText(const VoFilePath& path)
{
    return VoString(vo::detail::ToNative(path).u8string());
}

VoString PathText(const VoDirectoryPath& path)
{
    std::string text = vo::detail::ToNative(path).u8string();
    if (text.size() > 1 && (text.back() == '/' || text.back() == '\\'))
        text.pop_back();
    return VoString(std::move(text));
}

VoString PathTextBelow(const VoDirectoryPath& directory, const VoFilePath& path)
{
    return PathText(directory.toFilePath().isAncestor(path) ? directory.relativeFile(path) : path);
}

} // namespace vo::tool
