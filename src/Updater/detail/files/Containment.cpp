#include <Updater/detail/files/Containment.h>

#include <Core/VoFileException.h>
#include <Core/detail/Completed.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativeNames.h>
#include <FileSystem/detail/NativePath.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace vo::updater::detail {

namespace {

bool IsBelow(std::string_view root, std::string_view path)
{
    return !root.empty() && path.size() > root.size() && path.compare(0, root.size(), root) == 0;
}

bool Climbs(std::string_view path)
{
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find('\\', start), path.size());
        if (path.substr(start, end - start) == "..")
            return true;
        start = end + 1;
    }
    return false;
}

} // namespace

std::string_view Bytes(const VoString& text)
{
    return std::string_view(text.c_str(), text.size());
}

std::string_view Bytes(const VoFilePath& path)
{
    return Bytes(path.path());
}

std::string_view Bytes(const VoAbstractPath& path)
{
    return Bytes(path.path());
}

std::string RealDirectory(const VoDirectoryPath& directory)
{
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path native = vo::detail::ToNative(directory);
    const fs::path absolute = native.empty() ? fs::current_path(error) : native;
    const fs::path real = vo::detail::RealPath(absolute, error);
    if (error && !vo::detail::MeansMissing(error))
        throw vo::detail::Because(error, VoFileException("canonical: " + VoString(error.message()), directory));
    return (error ? native : real).u8string(); // compared only, so any encoding of all names does
}

VoDirectoryPath AbsoluteDirectory(const VoDirectoryPath& directory)
{
    if (directory.isNull())
        throw VoInvalidParameterException("No installation directory given");
    std::error_code error;
    const std::filesystem::path native = vo::detail::ToNative(directory);
    if (directory.isRooted() && (native.is_absolute() || std::filesystem::path::preferred_separator == '/'))
        return directory;
    if (native.has_root_path()) { // "\x\" and "C:x\" on Windows: on the current volume, in its current directory
        const std::filesystem::path complete = std::filesystem::absolute(native, error);
        if (!error)
            return VoDirectoryPath::FromText(vo::detail::FromNative(complete).path());
    }
    const std::filesystem::path current = std::filesystem::current_path(error);
    if (error)
        throw vo::detail::Because(error,
                                  VoFileException("current_path: " + VoString(error.message()), directory.path()));
    return VoDirectoryPath::FromText(vo::detail::FromNative(current).path()).appended(directory);
}

void SortInnermostFirst(std::vector<VoDirectoryPath>& directories)
{
    std::stable_sort(directories.begin(), directories.end(), [](const VoDirectoryPath& a, const VoDirectoryPath& b) {
        return Bytes(a).size() > Bytes(b).size();
    });
}

Containment::Containment(const VoDirectoryPath& root)
    : m_root(root)
{
}

bool Containment::holds(const VoFilePath& file)
{
    return IsBelow(Bytes(m_root), Bytes(file)) && !Climbs(Bytes(file)) && !file.isDirectory() &&
           leadsInside(file.parent());
}

bool Containment::mayRemove(const VoDirectoryPath& directory)
{
    if (directory.isNull() || Climbs(Bytes(directory)))
        return false;
    if (Bytes(directory) == Bytes(m_root) || IsBelow(Bytes(directory), Bytes(m_root)))
        return true;
    return IsBelow(Bytes(m_root), Bytes(directory)) && leadsInside(directory);
}

// A root that does not exist has nothing in it that could lead elsewhere.
bool Containment::leadsInside(const VoDirectoryPath& directory)
{
    const std::string key(Bytes(directory));
    if (const auto known = m_known.find(key); known != m_known.end())
        return known->second;
    const bool isInside =
        !VoFileSystem::IsDirectory(m_root) || vo::detail::IsInsideCanonical(m_root, directory.toFilePath());
    m_known.emplace(key, isInside);
    return isInside;
}

} // namespace vo::updater::detail
