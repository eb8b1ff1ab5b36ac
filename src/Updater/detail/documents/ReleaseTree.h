#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/ReleaseAttributes.h>

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vo::updater {
class AdvertisedPackageListing;
}

namespace vo::updater::detail {

/// The names of a release: its files, links and folders, and where its links lead. Pure: no file is touched. What it
/// was made of must outlive it.
class VOCORE_PRIVATE_EXPORT ReleaseTree
{
public:
    ReleaseTree(const std::vector<const VoFilePath*>& files, const ReleaseAttributes& attributes);

    /// @throws VoValidationException "Invalid link: " + target + " -> " + where it leads + ": " + the rule that it
    /// breaks, for a link that leads out of the release, to nothing in it, or in a circle; "Invalid attributes: " +
    /// what is wrong, for places that clash, and programs that are no files
    void validate() const;

    /// A file in place of a link, or of what a link to a folder would show.
    struct Copy
    {
        VoFilePath place;
        const VoFilePath* source; ///< Target of the file whose content it has.
    };
    /// What stands in place of the links where there can be none.
    std::vector<Copy> copies() const;

private:
    enum class Kind
    {
        File,
        Link,
        Folder,
    };
    struct Node
    {
        Kind kind;
        const VoFilePath* path = nullptr; // of a file or link
        const VoString* to = nullptr;     // of a link
    };
    struct End
    {
        const char* problem = nullptr;    // null: it leads to `path`
        std::string path{};               // empty: the whole release
        const VoFilePath* file = nullptr; // null: a folder
    };

    void add(const VoFilePath& path, const Node& node);
    End follow(const ReleaseAttributes::Link& link) const;
    void copyFolder(const VoFilePath& place, const std::string& folder, std::vector<Copy>& copies) const;

    std::vector<const VoFilePath*> m_files;
    const ReleaseAttributes& m_attributes;
    std::unordered_map<std::string, Node> m_nodes; // by the bytes of their paths
};

/// Checks what a release holds besides its files against the files, or their targets.
/// @throws VoValidationException as ReleaseTree::validate()
/// @{
VOCORE_PRIVATE_EXPORT void ValidateAttributes(const ReleaseAttributes& attributes,
                                              const AdvertisedPackageListing& package);
void ValidateAttributes(const ReleaseAttributes& attributes, const std::vector<VoFilePath>& targets);
/// @}

} // namespace vo::updater::detail
