#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoFilePath.h>

#include <cstdint>

namespace vo::updater {

/// What a check of an installed package found. A plain value.
struct VOCORE_EXPORT VerificationReport
{
    VoUUID packageID{""};           ///< The package.
    VoUUID versionID{""};           ///< Its installed release.
    std::uint64_t filesChecked = 0; ///< Number of installed files looked at.
    VoDeque<VoFilePath> missing;    ///< Installed files that are not there, in the order of the listing.
    VoDeque<VoFilePath> changed;    ///< Installed files with another content, or that are no regular files any more.
    /// Files that the package did not bring, below directories that installing it created; sorted. None of them is
    /// touched by repairing or uninstalling.
    VoDeque<VoFilePath> extra;

    /// Whether every installed file is there and unchanged. Extra files do not matter.
    bool isIntact() const;
};

} // namespace vo::updater
