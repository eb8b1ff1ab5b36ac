#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Updater/InstalledFileListing.h>
#include <Updater/detail/files/PathIndex.h>

#include <initializer_list>

namespace vo::updater {
class InstalledPackageListing;
}

namespace vo::updater::detail {

/// The files of other packages in folders that a package shares with them.
class VOCORE_PRIVATE_EXPORT FileOwners
{
public:
    /// A file and the package that it belongs to.
    struct Owned
    {
        VoUUID packageID;
        VoString name;             ///< The package's display name.
        InstalledFileListing file; ///< Of a link only the path.
        VoString link{};           ///< Where it leads; empty for a file.
    };

    FileOwners() = default; ///< No other packages.
    /// Reads the listings of all packages but one whose folders overlap one of `directories`, and what interrupted
    /// installations of them were going to write. A listing that is damaged counts as none, with a warning: nobody can
    /// tell what it lists.
    /// @throws VoFileException for one that cannot be read, and when folders cannot be looked at
    static FileOwners Others(const VoUUID& packageID, std::initializer_list<VoDirectoryPath> directories);

    /// The other package's record of a file; null when there is none.
    const Owned* find(const VoFilePath& path);

private:
    void add(const InstalledPackageListing& listing);

    VoDeque<Owned> m_owned;
    PathIndex m_index; // of m_owned
};

} // namespace vo::updater::detail
