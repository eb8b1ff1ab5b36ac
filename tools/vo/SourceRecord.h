#pragma once

#include <Core/VoForward.h>

#include <optional>

namespace vo::tool {

/// Remembers where packages were installed from, so that "vo repair PACKAGE" finds the chunks by itself:
///
///     <update directory>\sources\<packageID>.txt     the path of the definition file
///
/// A convenience only: without it the path is given on the command line.

/// Records the definition file of an installed package. Throws what writing files throws.
void RecordSource(const VoUUID& packageID, const VoFilePath& definition);
/// The definition file recorded for a package, if any can be read.
std::optional<VoFilePath> RecordedSource(const VoUUID& packageID);
/// Forgets a package, and leaves no empty directory.
void ForgetSource(const VoUUID& packageID);

} // namespace vo::tool
