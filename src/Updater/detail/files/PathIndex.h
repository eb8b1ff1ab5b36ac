#pragma once

#include <Core/VoExport.h>
#include <FileSystem/VoFilePath.h>

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>

namespace vo::updater::detail {

/// Finds files under each of their names: through links to their directories, and in any letter case where the volume
/// does not tell cases apart. All members throw VoFileException when the system does not let one look.
class VOCORE_PRIVATE_EXPORT PathIndex
{
public:
    void add(const VoFilePath& path, std::size_t number);
    /// The number that the file was added with; the first one of several.
    std::optional<std::size_t> find(const VoFilePath& path);

private:
    struct Entry
    {
        std::string real; // with the links of the directory followed
        VoFilePath path;
        std::size_t number;
    };

    std::string realPath(const VoFilePath& path);

    std::unordered_multimap<std::string, Entry> m_entries;          // by the real path without regard to case
    std::unordered_map<std::string, std::string> m_realDirectories; // by directory
};

} // namespace vo::updater::detail
