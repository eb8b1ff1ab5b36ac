#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <system_error>

namespace vo::detail {

/// The standard file buffer with its read buffer in view, so that a line is found by looking instead of by taking bytes
/// one by one.
class ReadableFilebuf final : public std::filebuf
{
public:
    std::size_t readyCount() const { return static_cast<std::size_t>(egptr() - gptr()); } ///< Bytes in the buffer.
    const char* ready() const { return gptr(); }                                          ///< The bytes in the buffer.
    void skip(std::size_t count) { gbump(static_cast<int>(count)); }               ///< Passes over bytes of the buffer.
    bool fill() { return !traits_type::eq_int_type(sgetc(), traits_type::eof()); } ///< False at the end.
};

/// An open file with one place for reading and one for writing, read and written in large blocks.
///
/// Small reads and writes pass through buffers of 64 KiB, larger ones go straight to the system. Failures are told by
/// exceptions of the standard library (reading) and by results of false (all else); failReading() and failWriting()
/// make exceptions of ours of both.
class VOCORE_PRIVATE_EXPORT BufferedFile
{
public:
    BufferedFile();
    BufferedFile(const BufferedFile&) = delete;
    BufferedFile& operator=(const BufferedFile&) = delete;
    ~BufferedFile(); ///< Writes what is gathered, as far as that goes, and closes.

    /// Opens `path` in a standard `mode`. A directory is refused.
    bool open(const std::filesystem::path& path, std::ios_base::openmode mode);
    bool isOpen() const noexcept;

    /// The system's words for the last failure; empty when it gave none.
    VoString reason() const;
    /// @throws VoCannotOpenFileException which knows the system's words
    [[noreturn]] void failOpening() const;
    /// @{ Throw VoIOException, which knows the file and the system's words, after a failure; also when none is open.
    [[noreturn]] void failReading(); ///< "Error occurred on reading from file"
    [[noreturn]] void failWriting(); ///< "Error occurred on writing to file"
    /// @}

    bool flush(); ///< Hands gathered bytes to the system; they are dropped when that fails.
    bool close(); ///< Flushes and closes; false when bytes were lost.

    bool atEnd();                                    ///< Whether no byte is left to read.
    std::size_t read(char* data, std::size_t count); ///< Fewer than `count` only at the end.
    std::string read(std::size_t count);             ///< As the other; takes memory as bytes come.
    std::string readLine(std::size_t maximumLength); ///< With its "\n"; `maximumLength` 0 is no limit.
    std::uint64_t readPosition() const noexcept;     ///< Bytes from the beginning.
    void seekRead(std::uint64_t position) noexcept;  ///< Takes effect with the next read.

    bool write(const char* data, std::size_t count);
    bool seekWrite(std::uint64_t position); ///< Flushes first. No effect on a file opened for appending.

private:
    enum class Direction
    {
        None, // the place in the file is not known
        Read,
        Write
    };

    bool turnToReading();
    bool turnToWriting();
    bool pass(const char* data, std::size_t count);
    std::size_t expectedRest() const;
    bool sync();
    bool failed();

    std::filesystem::path m_path;
    std::unique_ptr<char[]> m_readBuffer; // of the standard buffer, which must outlive its use there
    ReadableFilebuf m_file;
    std::unique_ptr<char[]> m_gathered; // bytes to be written; allocated with the first write
    std::size_t m_gatheredCount = 0;
    Direction m_direction = Direction::None;
    bool m_reads = false;
    bool m_appending = false;
    bool m_lost = false; // bytes could not be written and nobody was told
    std::uint64_t m_readPosition = 0;
    std::uint64_t m_writePosition = 0;
    std::error_code m_error;
};

} // namespace vo::detail
