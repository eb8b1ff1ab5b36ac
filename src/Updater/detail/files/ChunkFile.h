#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstdint>

namespace vo::updater::detail {

/// Reads and uncompresses the file of a chunk.
/// @throws VoFileNotFoundException for one that is not there
/// @throws VoInvalidConversionException when it promises more than `limit` bytes, which is found before anything is
/// uncompressed, or does not hold what it promises
VOCORE_PRIVATE_EXPORT VoByteArray ReadChunk(const VoFilePath& path, std::uint64_t limit);

} // namespace vo::updater::detail
