#pragma once

#include <Core/VoByteArray.h>
#include <Core/VoExport.h>
#include <Core/VoUUID.h>
#include <Updater/detail/install/StagingDirectory.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vo::updater::detail {

/// Reads and uncompresses staged chunks ahead of their use, on all processors. A bounded number of them is held.
class VOCORE_PRIVATE_EXPORT ChunkReader
{
public:
    /// Reads from `staging`; a chunk may promise at most `limit` bytes. `order` has each chunk once, in the order in
    /// which they will be taken. `workers` is the number of threads; 0: one for each processor.
    ChunkReader(const StagingDirectory& staging, std::uint64_t limit, std::vector<VoUUID> order,
                std::size_t workers = 0);
    ~ChunkReader();

    /// The uncompressed bytes of a chunk. One that is not the next of the order, or was taken before, is read now;
    /// those before it in the order are then no longer held. Throws as StagingDirectory::read.
    VoByteArray take(const VoUUID& id);

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace vo::updater::detail
