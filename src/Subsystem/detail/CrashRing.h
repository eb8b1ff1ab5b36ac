#pragma once

#include <Core/VoExport.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vo::logging {

/// The last lines that were logged, in memory that is there from the beginning.
///
/// Any thread adds lines without waiting for another. What reads them after a crash takes no lock and no memory; a line
/// that is just being replaced is left out.
class VOCORE_PRIVATE_EXPORT CrashRing
{
public:
    static constexpr std::size_t LineCount = 256;  ///< The number of lines kept.
    static constexpr std::size_t LineLength = 480; ///< Bytes kept of each.

    /// Takes a part of the text of the ring: `context` is what readEach() was given.
    using Write = void (*)(void* context, const char* text, std::size_t size);

    void add(std::string_view line) noexcept; ///< Adds a line without its end.

    /// Hands over the lines, oldest first, each with "\n" behind it. Async-signal-safe if `write` is.
    void readEach(Write write, void* context) const noexcept;

private:
    using Word = std::atomic<std::uint64_t>;

    // The number is odd while the line is being written, and twice the line's place in the order of all behind that.
    struct Line
    {
        Word number{0};
        Word size{0};
        std::array<Word, LineLength / sizeof(std::uint64_t)> words{};
    };

    static bool Read(const Line& line, std::uint64_t number, char* text, std::size_t& size) noexcept;

    Word m_count{0};
    std::array<Line, LineCount> m_lines{};
};

} // namespace vo::logging
