#pragma once

#include <Core/VoExport.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/detail/files/FileStamp.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vo::updater {
class ReleaseAttributes;
}

namespace vo::updater::detail {

class IgnoreRules;

/// A file to publish and its path relative to the installation directory.
struct SourceFile
{
    VoFilePath source;
    VoFilePath target;
    std::optional<FileStamp> stamp{}; ///< Taken before the file is read. None of a link, and where it cannot be had.
};

/// Files to publish from one folder, in one piece: there may be hundreds of thousands, and a source is as a rule the
/// folder and the target.
class VOCORE_PRIVATE_EXPORT SourceFiles
{
public:
    using Number = std::uint32_t; ///< Of a file, from 0.

    explicit SourceFiles(const VoDirectoryPath& folder);

    /// @throws VoOverflowException "More files in a folder than can be counted"
    void add(const SourceFile& file);
    void sort(); ///< By the bytes of the targets.

    std::size_t size() const { return m_rows.size(); }
    SourceFile file(Number number) const { return {source(number), target(number), stamp(number)}; }
    VoFilePath source(Number number) const;
    VoFilePath target(Number number) const;
    std::string_view targetText(Number number) const; ///< Valid until a file is added.
    const std::optional<FileStamp>& stamp(Number number) const { return m_rows[number].stamp; }

private:
    struct Row
    {
        std::uint64_t begin; // of the target among the texts; a source of its own stands behind it
        std::uint32_t targetLength;
        std::uint32_t sourceLength; // 0: the folder and the target
        std::optional<FileStamp> stamp;
    };

    std::string m_folder;
    std::string m_texts;
    std::vector<Row> m_rows;
};

/// Whether a path leads to a regular file on disk, also through links.
VOCORE_PRIVATE_EXPORT bool IsRegularFile(const VoFilePath& path);

/// The regular files below a directory that the rules do not leave out, sorted by the bytes of their targets. Links to
/// directories are not entered, nor are directories that are left out; what is neither a directory nor a regular file
/// is left out with a warning. So is, once, the output of publishing to `declarationsFile` (null: none) when it lies
/// below the directory: that file, what killed publications left of it, and the packages directory beside it.
///
/// With `attributes`, links are not followed but added there, and so are folders in which nothing lies at all.
VOCORE_PRIVATE_EXPORT SourceFiles ListSources(const VoDirectoryPath& directory, const VoFilePath& declarationsFile,
                                              const IgnoreRules& ignored,
                                              const std::function<void(const VoString&)>& warn,
                                              ReleaseAttributes* attributes = nullptr);

} // namespace vo::updater::detail
