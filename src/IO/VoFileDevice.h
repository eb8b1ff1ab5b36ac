#pragma once

#include <IO/VoIODevice.h>

/// A device over a file.
///
/// How the modes treat the file:
/// - Read: it must exist, else open() throws VoFileNotFoundException;
/// - Write: created or emptied;
/// - ReadWrite: an existing file keeps its content, is read from its beginning and written at its end (seek_write() has
///   no effect on it); a missing one is created empty;
/// - Append: created when missing, written at its end.
///
/// A directory is refused, and what cannot be opened gives false with "Failed to open file in given mode". An over-long
/// path throws VoPathSizeFileException. Reading and writing fail with VoIOException, "Error occurred on reading from
/// file" and "Error occurred on writing to file".
///
/// Writes are gathered; flush() and close() hand them to the system and report what could not be written. The
/// destructor closes too but must keep silent: who needs to know that the bytes have arrived calls close().
class VOCORE_EXPORT VoFileDevice : public VoIODevice
{
public:
    VoFileDevice();                                ///< Without a path: open() fails.
    explicit VoFileDevice(const VoFilePath& path); ///< On the file of a path; does not open it.
    explicit VoFileDevice(const VoString& path);   ///< On the file of a path; does not open it.
    explicit VoFileDevice(const char* path);       ///< On the file of a path; does not open it.

    /// The open file goes along; `other` is Closed afterwards, with an empty path. @{
    VoFileDevice(VoFileDevice&& other) noexcept;
    VoFileDevice& operator=(VoFileDevice&& other) noexcept;
    /// @}

    ~VoFileDevice() override;

    const VoFilePath& path() const; ///< The file's path, as given.
    /// The system's words for the last failure, such as "Permission denied"; empty when it gave none. lastError() does
    /// not tell.
    VoString reason() const;

    /// Hands gathered writes to the system. On failure lastError() is "Write failure" and VoIOException is thrown; the
    /// bytes that could not be written are dropped.
    void flush();

    std::size_t tell_read() const; ///< The place of the next read, in bytes from the beginning.

    void seek_read(std::size_t position) override;
    void seek_write(std::size_t position) override;
    bool atEnd() const override;

protected:
    VoString onReadAll() override;
    VoString onReadRemaining() override;
    VoString onReadLine(std::size_t maximumLength) override;
    void onClose() override;
    bool onOpen(Mode mode) override;
    VoString onRead(std::size_t count) override;
    std::size_t onWrite(const VoString& text) override;
    std::size_t onReadInto(char* data, std::size_t count) override;
    std::size_t onWriteFrom(const char* data, std::size_t count) override;

private:
    struct Private;

    [[noreturn]] void failWrite();

    std::unique_ptr<Private> m_private;
};

/// The name under which archives know the file device.
using VoFile = VoFileDevice;
