#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <optional>
#include <string>

namespace vo::detail {

/// The content of a regular file; none when it has more than `most` bytes.
/// @throws VoFileNotFoundException, VoCannotOpenFileException with the path
/// @throws VoIOException "Error occurred on reading from file", about the path
VOCORE_PRIVATE_EXPORT std::optional<std::string> ReadWholeFile(const VoFilePath& path, std::size_t most);

} // namespace vo::detail
