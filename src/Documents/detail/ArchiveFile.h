#pragma once

#include <Core/VoExport.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <system_error>

namespace vo::detail {

/// The file of an archive, in the form that the zip library asks for: many tiny reads and writes with jumps between
/// them, which must not each become a call of the system. Nothing here throws; failures are kept.
class VOCORE_PRIVATE_EXPORT ArchiveFile
{
public:
    /// Null when the file cannot be opened. For writing it is created or emptied.
    static std::unique_ptr<ArchiveFile> Open(const std::filesystem::path& file, bool writes) noexcept;

    /// Fewer only at the end and after a failure.
    std::size_t read(char* data, std::size_t size) noexcept
    {
        // Nearly all are of one byte.
        const Window& recent = m_windows[0];
        if (!recent.holds(m_position) || size > recent.size - static_cast<std::size_t>(m_position - recent.start))
            return readAcross(data, size);
        std::memcpy(data, recent.bytes.get() + (m_position - recent.start), size);
        m_position += size;
        return size;
    }

    std::size_t write(const char* data, std::size_t size) noexcept; ///< Fewer only after a failure.
    std::uint64_t tell() const noexcept { return m_position; }
    bool seek(std::uint64_t offset, std::ios_base::seekdir origin) noexcept;
    std::uint64_t size() noexcept; ///< Of the file, in bytes.
    /// Makes room in a file that is written: what stands from a position on moves up by some bytes.
    bool insert(std::uint64_t position, std::size_t count) noexcept;
    bool close() noexcept; ///< False when anything failed since the opening.
    bool hasFailed() const noexcept { return m_failed; }
    std::error_code error() const noexcept; ///< What the system said of the first write that failed.

private:
    // The directory and the entries are read by turns: each has its window, so that they do not drive each other out.
    struct Window
    {
        std::unique_ptr<char[]> bytes;
        std::uint64_t start = 0;
        std::size_t size = 0;

        bool holds(std::uint64_t position) const { return position >= start && position - start < size; }
    };

    ArchiveFile() = default;

    std::size_t readAcross(char* data, std::size_t size) noexcept;
    Window* window(std::uint64_t position);
    std::size_t readAt(std::uint64_t position, char* data, std::size_t size);
    bool writeAt(std::uint64_t position, const char* data, std::size_t size);
    bool flush();
    std::uint64_t end();

    std::filebuf m_file;
    std::uint64_t m_position = 0;
    bool m_writes = false;
    bool m_failed = false;
    std::atomic<int> m_error{0};     // read while a thread writes
    std::array<Window, 2> m_windows; // the first one was used last; when writing it is what is gathered
};

} // namespace vo::detail
