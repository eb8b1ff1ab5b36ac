#pragma once

#include <Core/VoDeque.h>
#include <Core/VoForward.h>
#include <Core/VoUUID.h>

namespace vo::updater::detail {

/// The files of a package that were not as published when its installation ended: listing and disk differ in a way that
/// sizes need not show. The next installation of the package writes them anew.
///
///     <update directory>\installed\<packageID>.damaged    one file ID a line

/// Whether anything is recorded of a package.
bool HasDamageRecord(const VoUUID& packageID);
/// What is recorded of a package. Throws what reading a file throws.
VoDeque<VoUUID> DamagedFiles(const VoUUID& packageID);
/// Records the files, in place of earlier ones. Throws what writing a file throws.
void RecordDamage(const VoUUID& packageID, const VoDeque<VoUUID>& files);
/// Forgets what is recorded of a package. Throws what removing a file throws.
void ForgetDamage(const VoUUID& packageID);

} // namespace vo::updater::detail
