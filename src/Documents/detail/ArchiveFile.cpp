#include <Documents/detail/ArchiveFile.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace vo::detail {

namespace {

constexpr std::size_t ReadWindow = std::size_t{64} * 1024;
constexpr std::size_t WriteWindow = std::size_t{256} * 1024;
constexpr std::size_t MoveBlock = std::size_t{1} << 20;

} // namespace

std::unique_ptr<ArchiveFile> ArchiveFile::Open(const std::filesystem::path& file, bool writes) noexcept
{
    try {
        std::unique_ptr<ArchiveFile> opened(new ArchiveFile);
        opened->m_writes = writes;
        opened->m_file.pubsetbuf(nullptr, 0); // the windows are the buffers
        const auto mode = std::ios_base::in | (writes ? std::ios_base::out | std::ios_base::trunc : std::ios_base::in);
        if (!opened->m_file.open(file, mode | std::ios_base::binary))
            return nullptr;
        if (writes)
            opened->m_windows[0].bytes.reset(new char[WriteWindow]);
        else
            for (Window& window : opened->m_windows)
                window.bytes.reset(new char[ReadWindow]);
        return opened;
    } catch (...) {
        return nullptr;
    }
}

std::size_t ArchiveFile::readAcross(char* data, std::size_t size) noexcept
{
    std::size_t done = 0;
    try {
        while (done < size) {
            const Window* source = window(m_position);
            if (!source)
                break;
            const auto offset = static_cast<std::size_t>(m_position - source->start);
            const std::size_t count = std::min(size - done, source->size - offset);
            std::memcpy(data + done, source->bytes.get() + offset, count);
            done += count;
            m_position += count;
        }
    } catch (...) {
        m_failed = true; // a directory, for one
    }
    return done;
}

std::size_t ArchiveFile::write(const char* data, std::size_t size) noexcept
{
    try {
        std::size_t done = 0;
        while (done < size && !m_failed) {
            Window& gathered = m_windows[0];
            const bool inWindow = m_position >= gathered.start && m_position - gathered.start <= gathered.size;
            if (!inWindow && m_position < gathered.start) {
                // The sizes of a large entry go into its header, which has left the window long ago.
                const auto count =
                    static_cast<std::size_t>(std::min<std::uint64_t>(size - done, gathered.start - m_position));
                m_failed = !writeAt(m_position, data + done, count);
                done += count;
                m_position += count;
                continue;
            }
            const auto offset = static_cast<std::size_t>(m_position - gathered.start);
            if (!inWindow || offset == WriteWindow) {
                flush();
                gathered.start = m_position;
                continue;
            }
            const std::size_t count = std::min(size - done, WriteWindow - offset);
            std::memcpy(gathered.bytes.get() + offset, data + done, count);
            gathered.size = std::max(gathered.size, offset + count);
            done += count;
            m_position += count;
        }
        return m_failed ? 0 : done;
    } catch (...) {
        m_failed = true;
        return 0;
    }
}

bool ArchiveFile::seek(std::uint64_t offset, std::ios_base::seekdir origin) noexcept
{
    try {
        if (origin == std::ios_base::end)
            offset += end();
        else if (origin == std::ios_base::cur)
            offset += m_position;
        m_position = offset; // taken up by the next transfer
        return true;
    } catch (...) {
        m_failed = true;
        return false;
    }
}

std::uint64_t ArchiveFile::size() noexcept
{
    try {
        return end();
    } catch (...) {
        m_failed = true;
        return 0;
    }
}

bool ArchiveFile::insert(std::uint64_t position, std::size_t count) noexcept
{
    try {
        const std::unique_ptr<char[]> block(new char[MoveBlock]);
        // From the end, so that nothing is overwritten that was not moved.
        for (std::uint64_t left = end(); left > position && !m_failed;) {
            const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(left - position, MoveBlock));
            left -= size;
            m_failed = readAt(left, block.get(), size) != size || !writeAt(left + count, block.get(), size);
        }
    } catch (...) {
        m_failed = true;
    }
    return !m_failed;
}

bool ArchiveFile::close() noexcept
{
    try {
        if (m_writes && !m_failed)
            flush();
        if (!m_file.close())
            m_failed = true;
    } catch (...) {
        m_failed = true;
    }
    return !m_failed;
}

std::error_code ArchiveFile::error() const noexcept
{
    return std::error_code(m_error, std::generic_category());
}

// The window that holds a position; null at the end of the file.
ArchiveFile::Window* ArchiveFile::window(std::uint64_t position)
{
    if (m_windows[0].holds(position))
        return &m_windows[0];
    std::swap(m_windows[0], m_windows[1]);
    Window& window = m_windows[0];
    if (window.holds(position))
        return &window;
    window.start = position;
    window.size = 0;
    window.size = readAt(position, window.bytes.get(), ReadWindow);
    return window.size == 0 ? nullptr : &window;
}

std::size_t ArchiveFile::readAt(std::uint64_t position, char* data, std::size_t size)
{
    const auto offset = static_cast<std::streamoff>(position);
    if (offset < 0 || m_file.pubseekpos(offset, std::ios_base::in) != std::streampos(offset))
        return 0;
    return static_cast<std::size_t>(m_file.sgetn(data, static_cast<std::streamsize>(size)));
}

bool ArchiveFile::writeAt(std::uint64_t position, const char* data, std::size_t size)
{
    const auto offset = static_cast<std::streamoff>(position);
    errno = 0;
    if (m_file.pubseekpos(offset, std::ios_base::out) == std::streampos(offset) &&
        m_file.sputn(data, static_cast<std::streamsize>(size)) == static_cast<std::streamsize>(size))
        return true;
    int none = 0;
    m_error.compare_exchange_strong(none, errno);
    return false;
}

bool ArchiveFile::flush()
{
    Window& gathered = m_windows[0];
    if (gathered.size != 0 && !writeAt(gathered.start, gathered.bytes.get(), gathered.size))
        m_failed = true;
    gathered.start += gathered.size;
    gathered.size = 0;
    return !m_failed;
}

std::uint64_t ArchiveFile::end()
{
    if (m_writes)
        flush();
    const std::streampos last = m_file.pubseekoff(0, std::ios_base::end);
    if (last == std::streampos(-1)) {
        m_failed = true;
        return 0;
    }
    return static_cast<std::uint64_t>(std::streamoff(last));
}

} // namespace vo::detail
