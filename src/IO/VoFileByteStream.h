#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <memory>

/// Reads the raw bytes of a file in order. Small reads are served from a buffer, large ones pass straight through.
/// A file that cannot be opened gives a stream that is not open; nothing is thrown until it is read.
class VOCORE_EXPORT VoFileInputByteStream
{
public:
    explicit VoFileInputByteStream(
        const VoFilePath& path); ///< Opens the file; VoPathSizeFileException when the path is too long.
    VoFileInputByteStream(VoFileInputByteStream&& other) noexcept;            ///< `other` is not open afterwards.
    VoFileInputByteStream& operator=(VoFileInputByteStream&& other) noexcept; ///< `other` is not open afterwards.
    ~VoFileInputByteStream();

    bool isOpen() const noexcept; ///< Whether the file could be opened.
    /// @throws VoCannotOpenFileException which knows the system's reason, unless the stream is open
    void requireOpen() const;

    /// Reads up to `count` bytes into `data` and returns how many; fewer only at the end of the file.
    /// @throws VoIOException "Error occurred on reading from file" when the file is not open or cannot be read
    std::size_t read(char* data, std::size_t count);

    bool atEnd() const;        ///< Whether no byte is left; true when not open, false when that cannot be read.
    bool eof() const noexcept; ///< Whether a read met the end of the file.

private:
    struct Private;

    std::unique_ptr<Private> m_private;
};

/// Writes raw bytes to a file, which is created or emptied. Bytes are gathered; flush() and close() report what could
/// not be written, the destructor must keep silent.
class VOCORE_EXPORT VoFileOutputByteStream
{
public:
    explicit VoFileOutputByteStream(
        const VoFilePath& path); ///< Opens the file; VoPathSizeFileException when the path is too long.
    VoFileOutputByteStream(VoFileOutputByteStream&& other) noexcept;            ///< `other` is not open afterwards.
    VoFileOutputByteStream& operator=(VoFileOutputByteStream&& other) noexcept; ///< `other` is not open afterwards.
    ~VoFileOutputByteStream();

    bool isOpen() const noexcept; ///< Whether the file could be opened and has not been closed.

    /// @name Writing
    /// All throw VoIOException("Error occurred on writing to file") on failure, also when the stream is not open.
    /// @{
    void write(const char* data, std::size_t count); ///< Writes all `count` bytes.
    void write(const VoByteArray& bytes);            ///< Writes all bytes of the array.
    void flush();                                    ///< Hands gathered bytes to the system.
    /// @}

    /// Flushes and closes; throws like flush(), and is closed even then. A stream that is not open is left alone.
    void close();

private:
    struct Private;

    std::unique_ptr<Private> m_private;
};
