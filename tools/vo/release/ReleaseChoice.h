#pragma once

#include <Core/VoUniquePtr.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/TrustedReleases.h>

#include <vo/line/Command.h>
#include <vo/line/Location.h>
#include <vo/line/Values.h>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace vo::tool {

class Session;

/// The release that a command works on.
struct ChosenRelease
{
    VoLocation definition; ///< Where its definition stands.
    VoUniquePtr<updater::AdvertisedPackageListing> package;
    std::shared_ptr<const updater::ReleaseProof> proof{};  ///< Null: nobody has verified it.
    std::vector<std::pair<VoVersion, VoString>> refused{}; ///< Newer releases, and why they are not offered.
    VoLocation declarations{};                             ///< What declares it; null when its definition was named.
};

/// The package that is meant when `wanted` is its ID, or else its name in any letter case, or without it the only one
/// that is declared. Pure.
/// @throws UsageError naming the packages there are when that leaves a choice
/// @throws Failure when there is none
VoUUID ChoosePackage(const updater::AdvertisedPackages& declared, const std::optional<VoString>& wanted);

/// The declared release with that number, or the newest one. Of several that differ in their build type only, the one
/// without build type unless the number names another. Pure.
/// @throws Failure when there is none
/// @throws UsageError when several are left
const updater::AdvertisedPackages::Declaration& ChooseRelease(const updater::AdvertisedPackages& declared,
                                                              const VoUUID& packageID,
                                                              const std::optional<ReleaseNumber>& wanted);

/// Opens the release that the first argument (a declarations or definition document) and the options --package and
/// --release name. Throws what reading throws, VoValidationException for a declarations file that leads to a definition
/// outside its directory, and CommandError with ExitCode::Unsafe when it leads to that of another release.
ChosenRelease OpenChosenRelease(const Session& session);

/// @{ Whom the command line believes, and the options that say so.
std::vector<Option> TrustOptions();
updater::TrustPolicy TrustOf(const Session& session);
/// @}

/// Opens a document as an installation sees it.
/// @throws CommandError
updater::TrustedReleases OpenTrusted(const Session& session, const VoLocation& location);

/// As OpenChosenRelease(), of what is offered to this installation and verified as far as the command line, or the
/// installed package, asks for it. What is refused throws CommandError with ExitCode::Unsafe.
ChosenRelease OpenOfferedRelease(const Session& session);

/// Opens declarations.
/// @throws Failure when it is a document of another kind
VoUniquePtr<updater::AdvertisedPackages> OpenDeclarations(const Session& session, const VoLocation& location);

/// @{ Read a document where it stands; what is on a server is fetched as the command line says. Throw
/// CommandError; the first returns an empty pointer for a document of another kind.
VoUniquePtr<updater::AdvertisedPackages> ReadDeclarations(const Session& session, const VoLocation& location);
VoUniquePtr<updater::AdvertisedPackageListing> ReadDefinition(const Session& session, const VoLocation& location);
/// @}

} // namespace vo::tool
