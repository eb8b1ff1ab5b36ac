#include <Updater/detail/files/PathIndex.h>

#include <Core/VoString.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileSystem.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/files/Containment.h>

#include <string_view>
#include <utility>

namespace vo::updater::detail {

namespace {

std::string Folded(const std::string& path)
{
    return FoldedName(VoString(path)).toStdString();
}

} // namespace

void PathIndex::add(const VoFilePath& path, std::size_t number)
{
    std::string real = realPath(path);
    std::string key = Folded(real);
    m_entries.emplace(std::move(key), Entry{std::move(real), path, number});
}

std::optional<std::size_t> PathIndex::find(const VoFilePath& path)
{
    if (m_entries.empty())
        return std::nullopt;
    const std::string real = realPath(path);
    const auto [first, last] = m_entries.equal_range(Folded(real));
    for (auto entry = first; entry != last; ++entry) {
        if (entry->second.real == real || VoFileSystem::Same(path, entry->second.path))
            return entry->second.number;
    }
    return std::nullopt;
}

std::string PathIndex::realPath(const VoFilePath& path)
{
    const VoDirectoryPath directory = path.parent();
    const std::string key(Bytes(directory));
    auto real = m_realDirectories.find(key);
    if (real == m_realDirectories.end())
        real = m_realDirectories.emplace(key, RealDirectory(directory)).first;
    return real->second + '\\' + std::string(Bytes(path).substr(key.size()));
}

} // namespace vo::updater::detail
