#pragma once

// What is on record of installed packages: their listings, what interrupted operations left, and the registry.

#include <Core/VoDeque.h>
#include <Core/VoForward.h>
#include <Core/VoUniquePtr.h>
#include <Updater/InstalledPackageListing.h>
#include <Updater/detail/registry/InstallationJournal.h>

#include <initializer_list>
#include <string_view>

namespace vo::updater::detail {

/// The packages that have a document with one of the suffixes in the directory of the listings, in the order of the
/// documents' names.
VoDeque<VoUUID> PackagesWith(std::initializer_list<std::string_view> suffixes);

/// The display name that a document of a package gives it; empty when none tells.
VoString NameOf(const VoUUID& packageID);

InstallationJournal JournalOf(const VoUUID& packageID); ///< The journal of a package.

/// The listing of the installed release, whether an operation got to record it or not; empty when none is installed.
/// One that cannot be used counts as none, with a warning: it must not keep the package from being installed anew.
VoUniquePtr<InstalledPackageListing> FindInstalled(const VoUUID& packageID);

/// Whether an operation on the package was interrupted or could not be recorded wholly. `installed` is null for none.
bool IsUnfinished(const VoUUID& packageID, const InstalledPackageListing* installed);

/// Reads the listing of an installed package, with the attributes that are recorded beside it. Throws what reading the
/// documents throws.
VoUniquePtr<InstalledPackageListing> OpenInstalled(const VoFilePath& listing);
/// Writes both, or leaves both as they were and throws what writing files throws.
void WriteInstalled(const InstalledPackageListing& listing, const VoFilePath& path);
/// Forgets the attributes. Throws what removing a file throws.
void EraseAttributes(const VoFilePath& listing);

/// Records a release: the listing first, so that the next operation does both again should the process end before the
/// registry is written. False when the registry could not be written, which is logged.
bool RecordInstalled(const InstalledPackageListing& listing);

} // namespace vo::updater::detail
