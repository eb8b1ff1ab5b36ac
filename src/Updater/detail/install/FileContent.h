#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

namespace vo::updater::detail {

/// Whether a regular file has a checksum. False for one that cannot be read.
VOCORE_PRIVATE_EXPORT bool HasChecksum(const VoFilePath& path, const VoChecksum& checksum);
/// The same, throwing VoUserCancelledException soon after the flag is raised.
VOCORE_PRIVATE_EXPORT bool HasChecksum(const VoFilePath& path, const VoChecksum& checksum, const VoStopFlag& stop);

/// Whether two files hold the same bytes; VoFileSystem::Same asks another question, whether they are one file.
/// @throws VoFileNotFoundException for a missing one
/// @throws VoIOException for one that cannot be read
VOCORE_PRIVATE_EXPORT bool HaveSameContent(const VoFilePath& a, const VoFilePath& b);

} // namespace vo::updater::detail
