#pragma once

// The documents that may stand beside a release's definition. A release need not have them, and who knows nothing of
// them installs it without. The manifest of a signed folder lists those that are there; others do not count.

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/ReleaseAttributes.h>
#include <Updater/ReleasePatches.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

struct VoDownloadPolicy;
class VoLocation;

namespace vo::updater {
class AbstractPackage;
class AdvertisedPackageListing;
} // namespace vo::updater

namespace vo::updater::detail {

class DocumentPlace;

/// Their names.
inline constexpr const char* OptionalDocuments[] = {ReleaseAttributes::FileName, ReleasePatches::FileName};

/// The path of a document that stands beside a definition.
VoFilePath Beside(const VoFilePath& definition, const char* document);

/// The bytes of an optional document that no manifest speaks of; none when it is not there. Throws as
/// DocumentPlace::find; servers that answer with a page for people where there is no such document count as having
/// none.
std::optional<VoString> FindOptional(const DocumentPlace& place, const VoFilePath& document, std::uint64_t most);

/// The attributes of a release, of the bytes of their document; empty ones when there is none. `name` is what errors
/// call it.
/// @throws VoValidationException "Invalid attributes: not those of the release: " + name; and what
/// ReleaseAttributes::Parse throws
std::shared_ptr<const ReleaseAttributes> AttributesOf(const AbstractPackage& release,
                                                      const std::optional<VoString>& bytes, const VoString& name);

/// The patches of a release, as `read` gives the bytes of their document; null when it gives none, and when they cannot
/// be used, which the log tells: whoever has no patches fetches chunks. `name` is what the log calls the document.
/// @throws VoUserCancelledException
std::shared_ptr<const ReleasePatches> TryPatches(const AbstractPackage& release, const VoString& name,
                                                 const VoStopFlag& stop,
                                                 const std::function<std::optional<VoString>()>& read);

/// Whether patches could be of use here: something is on record of the package.
bool IsRecorded(const VoUUID& packageID);

/// Reads the attributes of a release from beside its definition, unless they are known. Throws as FindOptional and
/// AttributesOf.
void FindAttributes(AdvertisedPackageListing& package, const VoLocation& definition, const VoStopFlag& stop,
                    const VoDownloadPolicy& downloads);
/// The same, and with them the patches where they could be of use. Where the attributes are known, somebody has looked
/// for both.
void FindDocuments(AdvertisedPackageListing& package, const VoLocation& definition, const VoStopFlag& stop,
                   const VoDownloadPolicy& downloads);

} // namespace vo::updater::detail
