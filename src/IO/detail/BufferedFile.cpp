#include <IO/detail/BufferedFile.h>

#include <Core/VoFileException.h>
#include <Core/detail/Completed.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoIOException.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <locale>
#include <system_error>
#include <utility>

namespace vo::detail {

namespace {

constexpr std::size_t BlockSize = 65536;

constexpr std::uint64_t LargestOffset = static_cast<std::uint64_t>(std::numeric_limits<std::streamoff>::max());

std::unique_ptr<char[]> NewBlock()
{
    return std::unique_ptr<char[]>(new char[BlockSize]);
}

std::streampos Offset(std::uint64_t position)
{
    return std::streampos(static_cast<std::streamoff>(std::min(position, LargestOffset)));
}

bool Failed(std::streampos position)
{
    return position == std::streampos(std::streamoff(-1));
}

} // namespace

BufferedFile::BufferedFile() = default;

BufferedFile::~BufferedFile()
{
    close();
}

bool BufferedFile::open(const std::filesystem::path& path, std::ios_base::openmode mode)
{
    m_path = path;
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) { // some systems open one, and fail later
        m_error = std::make_error_code(std::errc::is_a_directory);
        return false;
    }
    m_file.pubimbue(std::locale::classic()); // bytes, whatever the global locale converts
    if (mode & std::ios_base::in) {
        m_readBuffer = NewBlock();
        m_file.pubsetbuf(m_readBuffer.get(), static_cast<std::streamsize>(BlockSize));
    }
    errno = 0;
    if (!m_file.open(path, mode))
        return failed();
    m_readPosition = 0; // places that were sought while the file was closed count for nothing
    m_writePosition = 0;
    m_appending = (mode & std::ios_base::app) != 0;
    m_reads = (mode & std::ios_base::in) != 0;
    m_direction = m_reads ? Direction::Read : Direction::Write;
    return true;
}

bool BufferedFile::isOpen() const noexcept
{
    return m_file.is_open();
}

VoString BufferedFile::reason() const
{
    return m_error ? VoString(m_error.message()) : VoString();
}

void BufferedFile::failOpening() const
{
    throw Because(m_error, VoCannotOpenFileException(FromNative(m_path)));
}

void BufferedFile::failReading()
{
    if (isOpen())
        failed();
    throw Completed(VoIOException("Error occurred on reading from file"), FromNative(m_path).path(), reason());
}

void BufferedFile::failWriting()
{
    throw Completed(VoIOException("Error occurred on writing to file"), FromNative(m_path).path(), reason());
}

bool BufferedFile::flush()
{
    if (!isOpen())
        return true;
    const std::size_t count = std::exchange(m_gatheredCount, 0);
    if (count != 0 && !pass(m_gathered.get(), count))
        return false;
    return m_direction != Direction::Write || sync();
}

bool BufferedFile::sync()
{
    errno = 0;
    try {
        return m_file.pubsync() == 0 || failed();
    } catch (...) {
        return failed();
    }
}

// To be called right after the failure. The standard library's buffer does not tell why, but it comes from the system,
// which leaves its number.
bool BufferedFile::failed()
{
    m_error = std::error_code(errno, std::generic_category());
    return false;
}

bool BufferedFile::close()
{
    if (!isOpen())
        return true;
    bool complete = flush() && !m_lost;
    errno = 0;
    try {
        complete = (m_file.close() || failed()) && complete;
    } catch (...) {
        complete = failed();
    }
    m_direction = Direction::None;
    m_lost = false;
    m_readPosition = 0;
    m_writePosition = 0;
    return complete;
}

bool BufferedFile::atEnd()
{
    return !isOpen() || !m_reads || !turnToReading() || (m_file.readyCount() == 0 && !m_file.fill());
}

std::size_t BufferedFile::read(char* data, std::size_t count)
{
    errno = 0;
    if (!turnToReading())
        return 0;
    constexpr auto largest = static_cast<std::size_t>(std::numeric_limits<std::streamsize>::max());
    m_direction = Direction::None; // until the read has succeeded
    const std::streamsize taken = m_file.sgetn(data, static_cast<std::streamsize>(std::min(count, largest)));
    m_direction = Direction::Read;
    m_readPosition += static_cast<std::uint64_t>(taken);
    return static_cast<std::size_t>(taken);
}

std::string BufferedFile::read(std::size_t count)
{
    std::string text;
    std::size_t step = std::min(count, expectedRest());
    while (step != 0) {
        const std::size_t before = text.size();
        text.resize(before + step);
        const std::size_t taken = read(&text[before], step);
        if (taken < step) {
            text.resize(before + taken);
            break;
        }
        step = std::min(count - text.size(), text.size());
    }
    return text;
}

std::string BufferedFile::readLine(std::size_t maximumLength)
{
    std::string line;
    errno = 0;
    if (!turnToReading())
        return line;
    while (m_file.readyCount() != 0 || m_file.fill()) {
        std::size_t count = m_file.readyCount();
        if (maximumLength != 0)
            count = std::min(count, maximumLength - line.size());
        const void* const newline = std::memchr(m_file.ready(), '\n', count);
        if (newline)
            count = static_cast<std::size_t>(static_cast<const char*>(newline) - m_file.ready()) + 1;
        line.append(m_file.ready(), count);
        m_file.skip(count);
        m_readPosition += count;
        if (newline || line.size() == maximumLength)
            break;
    }
    return line;
}

std::uint64_t BufferedFile::readPosition() const noexcept
{
    return m_readPosition;
}

void BufferedFile::seekRead(std::uint64_t position) noexcept
{
    if (position == m_readPosition)
        return;
    m_readPosition = position;
    if (m_direction == Direction::Read)
        m_direction = Direction::None;
}

bool BufferedFile::write(const char* data, std::size_t count)
{
    if (count == 0)
        return true;
    if (count > BlockSize - m_gatheredCount) {
        const std::size_t gathered = std::exchange(m_gatheredCount, 0);
        if (gathered != 0 && !pass(m_gathered.get(), gathered))
            return false;
    }
    if (count >= BlockSize)
        return pass(data, count);
    if (!m_gathered)
        m_gathered = NewBlock();
    std::memcpy(m_gathered.get() + m_gatheredCount, data, count);
    m_gatheredCount += count;
    return true;
}

bool BufferedFile::seekWrite(std::uint64_t position)
{
    if (m_appending)
        return true;
    const bool flushed = flush();
    m_writePosition = position;
    if (m_direction == Direction::Write)
        m_direction = Direction::None;
    return flushed;
}

// The standard buffer has one place for both directions and wants a seek between them. False when the place to read is
// so far behind the end that the system refuses it.
bool BufferedFile::turnToReading()
{
    if (m_gatheredCount != 0 && !flush())
        m_lost = true;
    if (m_direction == Direction::Read)
        return true;
    if (!flush())
        m_lost = true;
    if (Failed(m_file.pubseekpos(Offset(m_readPosition)))) {
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(m_path, error);
        if (!error && m_readPosition > size)
            return false;
        throw std::ios_base::failure("Cannot seek in file");
    }
    m_direction = Direction::Read;
    return true;
}

bool BufferedFile::turnToWriting()
{
    if (m_direction == Direction::Write)
        return true;
    const std::streampos reached =
        m_appending ? m_file.pubseekoff(0, std::ios_base::end) : m_file.pubseekpos(Offset(m_writePosition));
    if (Failed(reached))
        return false;
    m_direction = Direction::Write;
    return true;
}

bool BufferedFile::pass(const char* data, std::size_t count)
{
    errno = 0;
    try {
        if (!turnToWriting() ||
            m_file.sputn(data, static_cast<std::streamsize>(count)) != static_cast<std::streamsize>(count))
            return failed();
    } catch (...) {
        return failed();
    }
    m_writePosition += count;
    return true;
}

// How much to take memory for at once: what the file seems to hold and one byte more, with which the end is found.
std::size_t BufferedFile::expectedRest() const
{
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(m_path, error);
    if (error || size < m_readPosition)
        return BlockSize;
    const std::uintmax_t rest =
        std::min<std::uintmax_t>(size - m_readPosition, std::numeric_limits<std::size_t>::max() / 4);
    return std::max(static_cast<std::size_t>(rest) + 1, BlockSize);
}

} // namespace vo::detail
