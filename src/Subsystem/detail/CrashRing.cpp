#include <Subsystem/detail/CrashRing.h>

#include <algorithm>
#include <cstring>

namespace vo::logging {

void CrashRing::add(std::string_view line) noexcept
{
    const std::uint64_t place = m_count.fetch_add(1, std::memory_order_relaxed) + 1;
    Line& kept = m_lines[place % LineCount];
    std::uint64_t before = kept.number.load(std::memory_order_relaxed);
    // Overtaken by a whole round, or in the way of one that is still writing: the line is lost rather than waited for.
    if (before % 2 != 0 || before > 2 * place ||
        !kept.number.compare_exchange_strong(before, 2 * place + 1, std::memory_order_acquire))
        return;
    const std::size_t size = std::min(line.size(), LineLength);
    for (std::size_t i = 0; i * sizeof(std::uint64_t) < size; ++i) {
        std::uint64_t word = 0;
        std::memcpy(&word, line.data() + i * sizeof word, std::min(sizeof word, size - i * sizeof word));
        kept.words[i].store(word, std::memory_order_release); // seen with the odd number
    }
    kept.size.store(size, std::memory_order_release);
    kept.number.store(2 * place, std::memory_order_release);
}

bool CrashRing::Read(const Line& line, std::uint64_t number, char* text, std::size_t& size) noexcept
{
    if (line.number.load(std::memory_order_acquire) != number)
        return false;
    size = std::min<std::size_t>(line.size.load(std::memory_order_acquire), LineLength);
    for (std::size_t i = 0; i < line.words.size(); ++i) {
        const std::uint64_t word = line.words[i].load(std::memory_order_acquire);
        std::memcpy(text + i * sizeof word, &word, sizeof word);
    }
    return line.number.load(std::memory_order_relaxed) == number;
}

void CrashRing::readEach(Write write, void* context) const noexcept
{
    const std::uint64_t last = m_count.load(std::memory_order_acquire);
    for (std::uint64_t place = last < LineCount ? 1 : last - LineCount + 1; place <= last; ++place) {
        char text[LineLength + 1];
        std::size_t size = 0;
        if (!Read(m_lines[place % LineCount], 2 * place, text, size))
            continue;
        text[size] = '\n';
        write(context, text, size + 1);
    }
}

} // namespace vo::logging
