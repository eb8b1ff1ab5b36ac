#pragma once

#include <Core/VoString.h>
#include <Core/VoUUID.h>

namespace vo::tool {

/// The installed package that a text means: its ID, or else its name in any letter case; also one whose installation or
/// uninstallation was interrupted. A text that names nothing
/// installed is taken for an ID. Throws UsageError when several packages have the name.
VoUUID ChooseInstalled(const VoString& text);

/// Whether the registry has an entry of the package.
bool IsInstalled(const VoUUID& packageID);

} // namespace vo::tool
