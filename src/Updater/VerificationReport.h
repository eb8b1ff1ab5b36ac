#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>

#include <cstdint>

namespace vo::updater {

/// What a check of an installed package found. A plain value.
struct VOCORE_EXPORT VerificationReport
{
    VoUUID packageID{""};           ///< The package.
    VoUUID versionID{""};           ///< Its installed release.
    std::uint64_t filesChecked = 0; ///< Number of installed files looked at.
    /// Installed files that are not there, in the order of the listing; behind them links.
    VoDeque<VoFilePath> missing;
    /// Installed files with another content, or that are no regular files any more; behind them links that lead
    /// elsewhere, or are none.
    VoDeque<VoFilePath> changed;
    VoDeque<VoFilePath> notExecutable;       ///< Installed programs that their owner may not run.
    VoDeque<VoDirectoryPath> missingFolders; ///< Folders of the release that hold nothing, and are not there.
    /// Files that the package did not bring, below directories that installing it created; sorted. None of them is
    /// touched by repairing or uninstalling.
    VoDeque<VoFilePath> extra;

    /// Whether every installed file, link and folder is there and unchanged. Extra files do not matter.
    bool isIntact() const;
};

} // namespace vo::updater
