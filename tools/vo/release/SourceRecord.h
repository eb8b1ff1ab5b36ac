#pragma once

#include <Core/VoForward.h>

#include <vo/line/Location.h>

#include <optional>

namespace vo::tool {

/// Remembers where packages were installed from, so that "vo repair PACKAGE" finds the chunks by itself:
///
///     <update directory>\sources\<packageID>.txt     the path or URL of the definition
///
/// A convenience only: without it the place is given on the command line. A user name and a password in a URL are not
/// recorded.

/// Records where the definition of an installed package stands. Throws what writing files throws.
void RecordSource(const VoUUID& packageID, const VoLocation& definition);
/// The place recorded for a package, if any can be read.
std::optional<VoLocation> RecordedSource(const VoUUID& packageID);
/// Whether two definitions are of one published folder: of releases beside the same declarations, or in one folder.
bool IsSamePlace(const VoLocation& a, const VoLocation& b);
/// Forgets a package, and leaves no empty directory.
void ForgetSource(const VoUUID& packageID);

} // namespace vo::tool
