#include <vo/line/Paths.h>

#include <vo/line/CommandError.h>

#include <Core/VoException.h>
#include <FileSystem/VoNativeName.h>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <utility>

namespace vo::tool {
namespace {

/// Turns failures into a message that tells where the text came from.
template <typename Make>
auto TypedPath(const VoString& source, const VoString& text, Make make)
{
    const auto unusable = [&](const VoString& why) {
        return UsageError(source + ": \"" + text + "\" cannot be used as a path: " + why);
    };
    if (text.contains("://"))
        throw UsageError(source + ": \"" + text + "\" is a URL; only a local file can be read here");
    try {
        const std::filesystem::path typed = std::filesystem::u8path(text.toStdString());
        return make(FromNativeName(VoString(std::filesystem::absolute(typed).lexically_normal().u8string())));
    } catch (const VoException& exception) {
        throw unusable(exception.message());
    } catch (const std::filesystem::filesystem_error& error) {
        throw unusable(VoString(error.code().message()));
    }
}

std::string WithoutEnd(std::string text)
{
    if (text.size() > 1 && (text.back() == '/' || text.back() == '\\'))
        text.pop_back();
    return text;
}

} // namespace

VoFilePath TypedFile(const VoString& source, const VoString& text)
{
    return TypedPath(source, text, [](VoFilePath path) { return path; });
}

VoDirectoryPath TypedDirectory(const VoString& source, const VoString& text)
{
    return TypedPath(source, text, [](const VoFilePath& path) { return VoDirectoryPath::FromText(path.path()); });
}

std::string NativeText(const std::string& path)
{
    std::string text = path;
    if constexpr (std::filesystem::path::preferred_separator == '/')
        std::replace(text.begin(), text.end(), '\\', '/');
    return WithoutEnd(std::move(text));
}

std::string AbsoluteText(const std::string& typed)
{
    try {
        return WithoutEnd(std::filesystem::absolute(std::filesystem::u8path(typed)).lexically_normal().u8string());
    } catch (const std::exception&) {
        return typed;
    }
}

VoString PathText(const VoFilePath& path)
{
    return NativeName(path);
}

VoString PathText(const VoDirectoryPath& path)
{
    return VoString(WithoutEnd(NativeName(path).toStdString()));
}

VoString WayText(const VoString& to)
{
    return VoString(NativeText(to.toStdString()));
}

VoString PathTextBelow(const VoDirectoryPath& directory, const VoFilePath& path)
{
    return PathText(directory.toFilePath().isAncestor(path) ? directory.relativeFile(path) : path);
}

} // namespace vo::tool
