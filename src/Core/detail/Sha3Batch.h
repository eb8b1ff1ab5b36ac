#pragma once

#include <Core/VoChecksum.h>
#include <Core/VoExport.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace vo::detail {

/// SHA3-256 digests of many messages, several at a time in the wide words of the processor: with four or eight lanes
/// each lane is about as fast as one message alone. One message gains nothing; use Sha3 for that.
class VOCORE_PRIVATE_EXPORT Sha3Batch
{
public:
    /// Puts the next bytes of a message into the room; how many they are, 0 at the message's end. Calls for different
    /// messages alternate, and those for one message follow the order of its bytes. What it throws ends the whole
    /// batch.
    using Read = std::function<std::size_t(std::size_t message, char* room, std::size_t size)>;
    /// Receives each message's digest once, in the order in which they end; no more is read of that message.
    using Done = std::function<void(std::size_t message, const VoChecksum& digest)>;
    /// The message to begin next, when a lane is free for it; nothing when there is none, and it is not asked again.
    using Next = std::function<std::optional<std::size_t>()>;

    /// With so many lanes, which must be among Available().
    explicit Sha3Batch(std::size_t lanes = Available().back());

    /// Hashes the messages 0 to `count` - 1, begun in that order.
    void hash(std::size_t count, const Read& read, const Done& done) const;
    /// Hashes the messages that it is given, so that several threads can share a number of them.
    void hash(const Next& next, const Read& read, const Done& done) const;

    /// The numbers of lanes that this processor has, rising; 1 is always among them.
    static std::vector<std::size_t> Available();

private:
    std::size_t m_lanes;
};

} // namespace vo::detail
