#include <Core/detail/Sha3Batch.h>

#include <Core/detail/KeccakAbsorb.h>
#include <Core/detail/Sha3Hasher.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace vo::detail {

namespace {

constexpr std::size_t BlockSize = 136;
constexpr std::size_t StateWords = 25;
constexpr std::size_t DigestSize = 32;
constexpr std::size_t BlocksInRoom = 121; // 16 KiB, which stay in the processor's caches; the last one for the padding

KeccakAbsorb AbsorbOf([[maybe_unused]] std::size_t lanes)
{
#ifdef VOCORE_WIDE_WORDS
    return lanes == 8 ? &KeccakAbsorbAvx512 : &KeccakAbsorbAvx2;
#else
    return nullptr;
#endif
}

// The bytes of one message that were read and not yet absorbed.
class Lane
{
public:
    bool isIdle() const { return m_idle; }
    bool isEnded() const { return m_ended && blocks() == 0; }
    std::size_t message() const { return m_message; }
    std::size_t blocks() const { return (m_end - m_begin) / BlockSize; }
    const char* bytes() const { return m_room.data() + m_begin; }
    void skip(std::size_t blocks) { m_begin += blocks * BlockSize; }
    void rest() { m_idle = true; }

    void begin(std::size_t message)
    {
        m_message = message;
        m_begin = m_end = 0;
        m_idle = m_ended = false;
    }

    // Reads on until whole blocks stand there. A message ends with the padding of SHA-3, which makes a block of its own
    // when no byte of the last one is left for it.
    void fill(const Sha3Batch::Read& read)
    {
        std::memmove(m_room.data(), bytes(), m_end - m_begin);
        m_end -= std::exchange(m_begin, 0);
        constexpr std::size_t readable = (BlocksInRoom - 1) * BlockSize;
        while (m_end < readable) {
            const std::size_t count = read(m_message, m_room.data() + m_end, readable - m_end);
            if (count == 0)
                return pad();
            m_end += count;
        }
    }

private:
    void pad()
    {
        const std::size_t size = (m_end / BlockSize + 1) * BlockSize;
        std::fill(m_room.begin() + static_cast<std::ptrdiff_t>(m_end),
                  m_room.begin() + static_cast<std::ptrdiff_t>(size), '\0');
        m_room[m_end] = '\x06';
        m_room[size - 1] = static_cast<char>(m_room[size - 1] | '\x80');
        m_end = size;
        m_ended = true;
    }

    std::vector<char> m_room = std::vector<char>(BlocksInRoom * BlockSize);
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
    std::size_t m_message = 0;
    bool m_idle = true;
    bool m_ended = false;
};

class Lanes
{
public:
    Lanes(std::size_t lanes, const Sha3Batch::Next& next, const Sha3Batch::Read& read, const Sha3Batch::Done& done)
        : m_absorb(AbsorbOf(lanes))
        , m_lanes(lanes)
        , m_states(lanes * StateWords)
        , m_bytes(lanes)
        , m_next(next)
        , m_read(read)
        , m_done(done)
    {
    }

    void run()
    {
        while (const std::size_t blocks = prepare()) {
            m_absorb(m_states.data(), m_bytes.data(), blocks);
            for (Lane& lane : m_lanes)
                lane.skip(lane.isIdle() ? 0 : blocks);
        }
    }

private:
    // Sees to it that each lane has a block to absorb, as long as there are messages; how many all of them have.
    std::size_t prepare()
    {
        std::size_t blocks = 0;
        const char* someBytes = nullptr;
        for (std::size_t i = 0; i < m_lanes.size(); ++i) {
            Lane& lane = m_lanes[i];
            while (!supply(i))
                ;
            if (lane.isIdle())
                continue;
            someBytes = lane.bytes();
            blocks = blocks == 0 ? lane.blocks() : std::min(blocks, lane.blocks());
        }
        // Whoever has nothing to do goes along on the bytes of another; nobody looks at what comes out.
        for (std::size_t i = 0; i < m_bytes.size(); ++i)
            m_bytes[i] = m_lanes[i].isIdle() ? someBytes : m_lanes[i].bytes();
        return blocks;
    }

    // True when the lane has a block, or nothing to do any more.
    bool supply(std::size_t index)
    {
        Lane& lane = m_lanes[index];
        if (!lane.isIdle() && lane.isEnded())
            finish(index);
        if (lane.isIdle() && !begin(lane))
            return true;
        if (lane.blocks() == 0)
            lane.fill(m_read);
        return lane.blocks() != 0;
    }

    bool begin(Lane& lane)
    {
        const auto message = m_hasMore ? m_next() : std::nullopt;
        m_hasMore = message.has_value();
        if (message)
            lane.begin(*message);
        return m_hasMore;
    }

    void finish(std::size_t index)
    {
        std::uint64_t* const state = m_states.data() + index * StateWords;
        std::array<char, DigestSize> digest;
        std::memcpy(digest.data(), state, digest.size());
        std::fill_n(state, StateWords, 0);
        m_lanes[index].rest();
        m_done(m_lanes[index].message(), Sha3::Digest(digest.data()));
    }

    KeccakAbsorb m_absorb;
    std::vector<Lane> m_lanes;
    std::vector<std::uint64_t> m_states;
    std::vector<const char*> m_bytes;
    bool m_hasMore = true;
    const Sha3Batch::Next& m_next;
    const Sha3Batch::Read& m_read;
    const Sha3Batch::Done& m_done;
};

void HashOneByOne(const Sha3Batch::Next& next, const Sha3Batch::Read& read, const Sha3Batch::Done& done)
{
    std::vector<char> room(BlocksInRoom * BlockSize);
    Sha3 hasher;
    while (const auto message = next()) {
        while (const std::size_t size = read(*message, room.data(), room.size()))
            hasher.add(room.data(), size);
        done(*message, hasher.finish());
    }
}

} // namespace

Sha3Batch::Sha3Batch(std::size_t lanes)
    : m_lanes(lanes)
{
}

void Sha3Batch::hash(std::size_t count, const Read& read, const Done& done) const
{
    std::size_t begun = 0;
    const Next next = [&] { return begun < count ? std::make_optional(begun++) : std::nullopt; };
    if (count < 2)
        return HashOneByOne(next, read, done);
    hash(next, read, done);
}

void Sha3Batch::hash(const Next& next, const Read& read, const Done& done) const
{
    if (m_lanes == 1)
        return HashOneByOne(next, read, done);
    Lanes(m_lanes, next, read, done).run();
}

std::vector<std::size_t> Sha3Batch::Available()
{
    std::vector<std::size_t> lanes = {1};
#ifdef VOCORE_WIDE_WORDS
    if (__builtin_cpu_supports("avx2"))
        lanes.push_back(4);
    if (__builtin_cpu_supports("avx512f"))
        lanes.push_back(8);
#endif
    return lanes;
}

} // namespace vo::detail
