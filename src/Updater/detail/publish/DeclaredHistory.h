#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Updater/detail/publish/KeptChunks.h>
#include <Updater/detail/publish/SourceTree.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace vo::updater {
class AdvertisedPackages;
}

namespace vo::updater::detail {

/// The definitions of a package's releases, the newest first; of equal versions the first declared, which is the one
/// that further releases are based on.
std::vector<VoFilePath> DefinitionsOf(const AdvertisedPackages& declared, const VoUUID& packageID,
                                      const VoFilePath& declarationsFile);

/// What earlier releases tell of the files of the next one.
struct AgedSources
{
    /// Those of each age apart: first those that are new or changed, of which none may have been read.
    std::vector<std::vector<SourceFiles::Number>> ages;
    KeptChunks kept; ///< The chunks of the newest earlier release that hold most of them.
};

/// The files of a package's next release in the order of PackingOrder, after the releases of it that `declarationsFile`
/// declares; as they are when there are none. They come sorted by the bytes of their targets. `base` is a release that
/// has been read already, or null: the newest one declared, if it is that, is not read again. Reads the files that may
/// be unchanged, but for those that surely are by what was kept when the newest release was published (SeenFiles), on
/// all processors, calling `reading` with the target on this thread before each. A release whose definition cannot be
/// read is left out, with a warning: the order decides about the bytes of updates, not about what they do. `capacity`
/// is that of the chunks that will be packed; 0 keeps none of those there are.
VOCORE_PRIVATE_EXPORT AgedSources SortedByAge(const SourceFiles& files, const VoUUID& packageID,
                                              const VoFilePath& declarationsFile,
                                              const std::shared_ptr<const IndexedRelease>& base, std::uint64_t capacity,
                                              const std::function<void(const VoFilePath&)>& reading,
                                              const std::function<void(const VoString&)>& warn);

} // namespace vo::updater::detail
