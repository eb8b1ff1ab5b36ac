#include <Updater/detail/files/FileDifference.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

namespace vo::updater::detail {

namespace {

constexpr std::size_t SectionsHead = 12;

void AppendNumber(std::string& to, std::uint64_t number)
{
    for (; number >= 0x80; number >>= 7)
        to += static_cast<char>(number | 0x80);
    to += static_cast<char>(number);
}

void AppendMove(std::string& to, std::int64_t move)
{
    const auto amount = static_cast<std::uint64_t>(move < 0 ? -move : move);
    AppendNumber(to, move < 0 ? 2 * amount - 1 : 2 * amount);
}

void AppendLength(std::string& to, std::size_t length)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        to += static_cast<char>(length >> shift);
}

std::size_t CommonLength(std::string_view a, std::string_view b)
{
    const std::size_t most = std::min(a.size(), b.size());
    std::size_t length = 0;
    while (length + 8 <= most && std::memcmp(a.data() + length, b.data() + length, 8) == 0)
        length += 8;
    while (length < most && a[length] == b[length])
        ++length;
    return length;
}

// Finds the places where the old content begins as given bytes do, by the first eight of them. Every second place is
// known, which halves the table: what a match found one byte later misses in front is added to it afterwards.
class OldContent
{
public:
    explicit OldContent(std::string_view bytes)
        : m_bytes(bytes.substr(0, MostKnown * Step))
        , m_hashBits(hashBitsFor(m_bytes.size() / Step))
        , m_newest(std::size_t{1} << m_hashBits)
        , m_before(m_bytes.size() / Step + 1)
    {
        for (std::size_t number = 0; number * Step + Seed <= m_bytes.size(); ++number) {
            const std::uint64_t hash = hashOf(m_bytes.data() + number * Step);
            std::uint32_t& newest = m_newest[slot(hash)];
            m_before[number] = newest;
            newest = static_cast<std::uint32_t>(number + 1) << TagBits | tag(hash);
        }
    }

    struct Match
    {
        std::size_t at = 0;
        std::size_t length = 0;
    };

    // A long one of the last few. What goes on beyond the longest is found by the next search: so the time is bounded
    // for content that repeats itself.
    Match find(std::string_view wanted) const
    {
        constexpr int mostTried = 8;
        constexpr std::size_t longest = 1024;
        Match best;
        if (wanted.size() < Seed)
            return best;
        wanted = wanted.substr(0, longest);
        const std::uint64_t hash = hashOf(wanted.data());
        std::uint32_t next = m_newest[slot(hash)];
        for (int tried = 0; next != 0 && tried < mostTried && best.length < wanted.size(); ++tried) {
            const std::size_t number = (next >> TagBits) - 1;
            const std::size_t length = (next & TagMask) == tag(hash)
                                           ? CommonLength(m_bytes.substr(number * Step), wanted)
                                           : 0; // told without a look at the content, which lies anywhere
            if (length > best.length)
                best = {number * Step, length};
            next = m_before[number];
        }
        return best;
    }

private:
    static constexpr std::size_t Seed = 8;
    static constexpr std::size_t Step = 2;
    static constexpr unsigned TagBits = 8;
    static constexpr std::uint32_t TagMask = (1U << TagBits) - 1;
    static constexpr std::size_t MostKnown = (std::size_t{1} << (32 - TagBits)) - 1;

    // Few for small contents, which are many: a table costs its size to begin with.
    static int hashBitsFor(std::size_t places)
    {
        constexpr int most = 22;
        int bits = 8;
        while (bits < most && places >> bits > 0)
            ++bits;
        return bits;
    }

    static std::uint64_t hashOf(const char* bytes)
    {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes, Seed);
        return word * 0x9E3779B97F4A7C15u;
    }

    std::size_t slot(std::uint64_t hash) const { return static_cast<std::size_t>(hash >> (64 - m_hashBits)); }
    static std::uint32_t tag(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 32) & TagMask; }

    const std::string_view m_bytes;
    const int m_hashBits;
    // Both have a number of a place, from 1, and some bits more of its hash; 0 for none.
    std::vector<std::uint32_t> m_newest; // by hash
    std::vector<std::uint32_t> m_before; // by place: the one before with the same hash
};

// Instructions while they are being found. Places are signed: an alignment may lead in front of the old content.
class Writer
{
public:
    Writer(std::string_view before, std::string_view after)
        : m_old(before)
        , m_new(after)
    {
    }

    // The part of the new content up to `end`, where another alignment begins, or none follows.
    void addUpTo(std::int64_t end, std::optional<std::int64_t> place)
    {
        std::int64_t forward = forwardLength(end);
        std::int64_t backward = place ? backwardLength(end, *place) : 0;
        const std::int64_t overlap = m_newAt + forward - (end - backward);
        if (overlap > 0) {
            const std::int64_t kept = bestSplit(overlap, forward, end - backward, *place - backward);
            forward += kept - overlap;
            backward -= kept;
        }
        const std::int64_t extra = end - backward - (m_newAt + forward);
        addDifferences(forward);
        m_extra.append(m_new.substr(static_cast<std::size_t>(m_newAt + forward), static_cast<std::size_t>(extra)));
        AppendNumber(m_steps, static_cast<std::uint64_t>(forward));
        AppendNumber(m_steps, static_cast<std::uint64_t>(extra));
        AppendMove(m_steps, place ? *place - backward - (m_oldAt + forward) : 0);
        m_newAt = end - backward;
        m_oldAt = place ? *place - backward : m_oldAt + forward;
    }

    std::string instructions()
    {
        endRun();
        std::string all;
        all.reserve(SectionsHead + m_steps.size() + m_runs.size() + m_literals.size() + m_extra.size());
        AppendLength(all, m_steps.size());
        AppendLength(all, m_runs.size());
        AppendLength(all, m_literals.size());
        return all + m_steps + m_runs + m_literals + m_extra;
    }

private:
    bool isSame(std::int64_t oldAt, std::int64_t newAt) const
    {
        return m_old[static_cast<std::size_t>(oldAt)] == m_new[static_cast<std::size_t>(newAt)];
    }

    // As far as more than half of the bytes are the same.
    std::int64_t forwardLength(std::int64_t end) const
    {
        std::int64_t same = 0;
        std::int64_t best = 0;
        std::int64_t length = 0;
        const std::int64_t most = std::min(end - m_newAt, static_cast<std::int64_t>(m_old.size()) - m_oldAt);
        for (std::int64_t i = 0; i < most; ++i) {
            same += isSame(m_oldAt + i, m_newAt + i) ? 1 : 0;
            if (2 * same - (i + 1) > 2 * best - length) {
                best = same;
                length = i + 1;
            }
        }
        return length;
    }

    std::int64_t backwardLength(std::int64_t end, std::int64_t place) const
    {
        std::int64_t same = 0;
        std::int64_t best = 0;
        std::int64_t length = 0;
        const std::int64_t most = std::min(end - m_newAt, place);
        for (std::int64_t i = 1; i <= most; ++i) {
            same += isSame(place - i, end - i) ? 1 : 0;
            if (2 * same - i > 2 * best - length) {
                best = same;
                length = i;
            }
        }
        return length;
    }

    // How much of what both could have is better with the one before.
    std::int64_t bestSplit(std::int64_t overlap, std::int64_t forward, std::int64_t newStart,
                           std::int64_t oldStart) const
    {
        std::int64_t score = 0;
        std::int64_t best = 0;
        std::int64_t length = 0;
        for (std::int64_t i = 0; i < overlap; ++i) {
            score += isSame(m_oldAt + forward - overlap + i, m_newAt + forward - overlap + i) ? 1 : 0;
            score -= isSame(oldStart + i, newStart + i) ? 1 : 0;
            if (score > best) {
                best = score;
                length = i + 1;
            }
        }
        return length;
    }

    // One or two equal bytes are cheaper as differences of zero than as a run.
    void addDifferences(std::int64_t length)
    {
        constexpr std::uint64_t shortest = 3;
        for (std::int64_t i = 0; i < length; ++i) {
            const auto place = static_cast<std::size_t>(m_newAt + i);
            const char difference = static_cast<char>(m_new[place] - m_old[static_cast<std::size_t>(m_oldAt + i)]);
            if (difference == 0) {
                ++m_zeros;
                continue;
            }
            if (m_zeros >= shortest || m_changed == 0)
                endRun();
            else
                bridge();
            m_literals += difference;
            ++m_changed;
        }
    }

    void endRun()
    {
        if (m_hasRun)
            AppendNumber(m_runs, m_changed);
        AppendNumber(m_runs, m_zeros);
        m_hasRun = true;
        m_changed = 0;
        m_zeros = 0;
    }

    void bridge()
    {
        m_literals.append(static_cast<std::size_t>(m_zeros), '\0');
        m_changed += m_zeros;
        m_zeros = 0;
    }

    const std::string_view m_old;
    const std::string_view m_new;
    std::int64_t m_newAt = 0; // what was not added yet begins here,
    std::int64_t m_oldAt = 0; // and here in the old content
    std::string m_steps;
    std::string m_runs;
    std::string m_literals;
    std::string m_extra;
    std::uint64_t m_zeros = 0;   // equal bytes since the last that differs
    std::uint64_t m_changed = 0; // bytes of the run that differ
    bool m_hasRun = false;       // whether the number of equal bytes in front of them is written
};

// Reads a section of instructions.
class Reader
{
public:
    explicit Reader(std::string_view bytes)
        : m_left(bytes)
    {
    }

    bool atEnd() const { return m_left.empty(); }

    bool number(std::uint64_t& value)
    {
        value = 0;
        for (unsigned shift = 0; shift < 63 && !m_left.empty(); shift += 7) {
            const auto byte = static_cast<unsigned char>(m_left.front());
            m_left.remove_prefix(1);
            value |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
            if (byte < 0x80)
                return true;
        }
        return false;
    }

    bool bytes(std::uint64_t count, std::string_view& result)
    {
        if (count > m_left.size())
            return false;
        result = m_left.substr(0, static_cast<std::size_t>(count));
        m_left.remove_prefix(static_cast<std::size_t>(count));
        return true;
    }

private:
    std::string_view m_left;
};

// Carries instructions out. Each function is false when they do not fit.
class Builder
{
public:
    Builder(std::string_view before, std::string& after)
        : m_old(before)
        , m_new(after)
    {
    }

    bool run(std::string_view instructions)
    {
        if (!open(instructions))
            return false;
        while (m_at < m_new.size()) {
            std::uint64_t differing = 0;
            std::uint64_t extra = 0;
            std::uint64_t move = 0;
            if (!m_steps.number(differing) || !m_steps.number(extra) || !m_steps.number(move) ||
                !addDiffering(differing) || !addExtra(extra) || !moveBy(move))
                return false;
        }
        return m_steps.atEnd();
    }

private:
    bool open(std::string_view instructions)
    {
        if (instructions.size() < SectionsHead)
            return false;
        std::uint32_t lengths[3] = {};
        for (std::size_t i = 0; i < SectionsHead; ++i)
            lengths[i / 4] = lengths[i / 4] << 8 | static_cast<unsigned char>(instructions[i]);
        Reader sections(instructions.substr(SectionsHead));
        std::string_view parts[4];
        for (int i = 0; i < 3; ++i) {
            if (!sections.bytes(lengths[i], parts[i]))
                return false;
        }
        const std::uint64_t sum = std::uint64_t{lengths[0]} + lengths[1] + lengths[2];
        sections.bytes(instructions.size() - SectionsHead - sum, parts[3]);
        m_steps = Reader(parts[0]);
        m_runs = Reader(parts[1]);
        m_literals = Reader(parts[2]);
        m_extra = Reader(parts[3]);
        return true;
    }

    bool addDiffering(std::uint64_t length)
    {
        if (length > m_new.size() - m_at || length > m_old.size() - m_oldAt)
            return false;
        while (length > 0) {
            if (m_same + m_changed == 0 && !nextRun())
                return false;
            const auto same = static_cast<std::size_t>(std::min(m_same, length));
            std::copy_n(m_old.data() + m_oldAt, same, &m_new[m_at]);
            advance(same);
            m_same -= same;
            length -= same;
            const auto changed = static_cast<std::size_t>(m_same > 0 ? 0 : std::min(m_changed, length));
            std::string_view differences;
            if (!m_literals.bytes(changed, differences))
                return false;
            std::transform(differences.begin(), differences.end(), m_old.begin() + static_cast<std::ptrdiff_t>(m_oldAt),
                           m_new.begin() + static_cast<std::ptrdiff_t>(m_at),
                           [](char difference, char old) { return static_cast<char>(old + difference); });
            advance(changed);
            m_changed -= changed;
            length -= changed;
        }
        return true;
    }

    // The last run has no second number.
    bool nextRun()
    {
        if (!m_runs.number(m_same))
            return false;
        if (!m_runs.atEnd() && !m_runs.number(m_changed))
            return false;
        return m_same <= m_new.size() && m_changed <= m_new.size() && m_same + m_changed > 0;
    }

    bool addExtra(std::uint64_t length)
    {
        std::string_view bytes;
        if (length > m_new.size() - m_at || !m_extra.bytes(length, bytes))
            return false;
        std::copy(bytes.begin(), bytes.end(), m_new.begin() + static_cast<std::ptrdiff_t>(m_at));
        m_at += bytes.size();
        return true;
    }

    bool moveBy(std::uint64_t move)
    {
        const std::uint64_t amount = move / 2 + move % 2;
        const bool isBack = move % 2 != 0;
        if (amount > (isBack ? m_oldAt : m_old.size() - m_oldAt))
            return false;
        m_oldAt = static_cast<std::size_t>(isBack ? m_oldAt - amount : m_oldAt + amount);
        return true;
    }

    void advance(std::size_t count)
    {
        m_at += count;
        m_oldAt += count;
    }

    const std::string_view m_old;
    std::string& m_new;
    Reader m_steps{{}};
    Reader m_runs{{}};
    Reader m_literals{{}};
    Reader m_extra{{}};
    std::size_t m_at = 0;
    std::size_t m_oldAt = 0;
    std::uint64_t m_same = 0;
    std::uint64_t m_changed = 0;
};

} // namespace

// Goes through the new content with one alignment to the old one, until another one is better by enough bytes to pay
// for the step that it takes.
std::string FindDifference(std::string_view before, std::string_view after)
{
    constexpr std::int64_t pays = 8;
    const OldContent old(before);
    Writer writer(before, after);
    const auto size = static_cast<std::int64_t>(after.size());
    std::int64_t alignment = 0;
    const auto isSame = [&](std::int64_t at) {
        const std::int64_t place = at + alignment;
        return place >= 0 && place < static_cast<std::int64_t>(before.size()) &&
               before[static_cast<std::size_t>(place)] == after[static_cast<std::size_t>(at)];
    };
    OldContent::Match match;
    std::int64_t at = 0;
    while (at < size) {
        at += static_cast<std::int64_t>(match.length);
        std::int64_t same = 0; // bytes of the match that the present alignment has as well
        std::int64_t length = 0;
        for (std::int64_t counted = at; at < size; ++at) {
            match = old.find(after.substr(static_cast<std::size_t>(at)));
            length = static_cast<std::int64_t>(match.length);
            for (; counted < at + length; ++counted)
                same += isSame(counted) ? 1 : 0;
            if ((length == same && length > 0) || length > same + pays)
                break;
            if (counted > at)
                same -= isSame(at) ? 1 : 0;
            else
                counted = at + 1;
        }
        if (at >= size) {
            writer.addUpTo(size, std::nullopt);
        } else if (length != same) {
            writer.addUpTo(at, static_cast<std::int64_t>(match.at));
            alignment = static_cast<std::int64_t>(match.at) - at;
        }
    }
    return writer.instructions();
}

bool ApplyDifference(std::string_view before, std::string_view instructions, std::string& after)
{
    return Builder(before, after).run(instructions);
}

} // namespace vo::updater::detail
