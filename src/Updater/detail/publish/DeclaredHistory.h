#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Updater/detail/publish/SourceTree.h>

#include <functional>
#include <vector>

namespace vo::updater::detail {

/// The files of a package's next release in the order of PackingOrder, those of each age apart, after the releases of
/// it that `declarationsFile` declares; as they are when there are none. Reads the files that may be unchanged, on all
/// processors, calling `reading` with the target on this thread before each. A release whose definition cannot be read
/// is left out, with a warning: the order decides about the bytes of updates, not about what they do.
VOCORE_PRIVATE_EXPORT std::vector<std::vector<SourceFile>>
SortedByAge(std::vector<SourceFile> files, const VoUUID& packageID, const VoFilePath& declarationsFile,
            const std::function<void(const VoFilePath&)>& reading, const std::function<void(const VoString&)>& warn);

} // namespace vo::updater::detail
