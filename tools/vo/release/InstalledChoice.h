#pragma once

#include <Core/VoString.h>
#include <Core/VoUUID.h>

namespace vo::tool {

/// The installed package that a text means: its ID, or else its name in any letter case; also one whose installation or
/// uninstallation was interrupted. A text that names nothing installed is taken for an ID.
/// @throws UsageError when several packages have the name
VoUUID ChooseInstalled(const VoString& text);

/// As ChooseInstalled().
/// @throws Failure for a text that names nothing installed
VoUUID RequireInstalled(const VoString& text);

/// Whether the registry has an entry of the package.
bool IsInstalled(const VoUUID& packageID);
/// Whether there is a listing of the package, as an installation that was not recorded to its end leaves one, too.
bool HasListing(const VoUUID& packageID);

} // namespace vo::tool
