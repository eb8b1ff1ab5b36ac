#pragma once

#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <Updater/PackageSources.h>

#include <optional>

namespace vo::updater {

/// What asking for the update of one installed package has found; see InstalledPackages::UpdatesAvailable(). A plain
/// value.
struct VOCORE_EXPORT PackageUpdate
{
    VoUUID packageID;                      ///< The package.
    VoString name;                         ///< Its display name; empty where nothing tells it.
    VoVersion installed;                   ///< The release that is installed.
    std::optional<VoVersion> available{};  ///< The newest that is offered; none when that is installed, or on failure.
    std::optional<PackageSource> source{}; ///< Where it came from; of an available release its own definition.
    VoString failure{};                    ///< Why it could not be found out; empty when it could.

    bool isAvailable() const noexcept { return available.has_value(); } ///< Whether there is something to install.
    bool isUpToDate() const { return !available && failure.isEmpty(); } ///< Whether the newest is installed.
};

} // namespace vo::updater
