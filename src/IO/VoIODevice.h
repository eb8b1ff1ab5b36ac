#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <cstdint>
#include <memory>

/// A thing that bytes are read from and written to: the base of every input and output of the library.
///
/// A device is opened in one mode, used and closed. The public verbs check that the mode permits them and then call the
/// protected hooks, which concrete devices implement. The check is on the whole value of the mode: reading needs
/// exactly Read or ReadWrite, writing exactly Write, ReadWrite or Append. A device opened with a further flag (Write |
/// Truncate, Read | Text) opens, yet refuses to be read or written, so callers open with the plain values.
///
/// Failures that callers may expect on opening are reported by a result of false and lastError(); failures of a
/// transfer are thrown. A device is used by one thread at a time.
///
/// A concrete device closes itself in its own destructor: the base cannot, its hooks are gone by then.
class VOCORE_EXPORT VoIODevice
{
public:
    /// What a device is open for; a set of flags.
    enum Mode : std::uint32_t
    {
        Closed = 0,               ///< Not open.
        Read = 1,                 ///< Reading.
        Write = 2,                ///< Writing; files are emptied when they are opened with this alone.
        ReadWrite = Read | Write, ///< Both; an existing file keeps its content and is written at its end.
        Append = 4,               ///< Writing at the end.
        Truncate = 8,             ///< Empties the target on opening.
        Text = 16                 ///< Text mode of the system; otherwise bytes pass unchanged.
    };

    VoIODevice(const VoIODevice&) = delete;
    VoIODevice& operator=(const VoIODevice&) = delete;

    /// Closes nothing by itself: see the class.
    virtual ~VoIODevice();

    /// Moves the place of the next read to `position`, in bytes from the beginning. A place beyond the end is at the
    /// end.
    virtual void seek_read(std::size_t position) = 0;

    /// Moves the place of the next write to `position`, in bytes from the beginning. Devices that write at their end
    /// ignore it.
    virtual void seek_write(std::size_t position) = 0;

protected:
    /// Reads everything from the beginning. The default seeks to 0 and calls onReadRemaining().
    virtual VoString onReadAll();

    /// Reads from the current place to the end. The default reads blocks until atEnd() or an empty block.
    virtual VoString onReadRemaining();

    /// Reads up to and including the next "\n", at most `maximumLength` bytes unless that is 0. The default reads byte
    /// by byte; devices that can look ahead override it.
    virtual VoString onReadLine(std::size_t maximumLength);

public:
    /// Whether there is nothing left to read; right also before the first read. A device that cannot tell without
    /// failing says false, so that the failure is met by the read.
    virtual bool atEnd() const = 0;

protected:
    /// Ends the use of the target. The mode is Closed already; may throw what became of buffered bytes.
    virtual void onClose() = 0;

    /// Opens the target in `mode`. On false the hook has set the error.
    virtual bool onOpen(Mode mode) = 0;

    /// Reads up to `count` bytes; fewer only at the end or when no more are to be had now.
    virtual VoString onRead(std::size_t count) = 0;

    /// Writes `text` and returns how many of its bytes were taken.
    virtual std::size_t onWrite(const VoString& text) = 0;

    /// As onRead(), into memory of the caller. The default goes through onRead() and copies.
    virtual std::size_t onReadInto(char* data, std::size_t count);

    /// As onWrite(), from memory of the caller. The default goes through onWrite() and copies.
    virtual std::size_t onWriteFrom(const char* data, std::size_t count);

public:
    /// Opens the device. Returns false and sets lastError() when it is open already ("Device already open") or when the
    /// target cannot be opened; a file device throws VoFileNotFoundException when a file to be read does not exist.
    /// Success clears the last error.
    bool open(Mode mode);

    /// Closes the device; a closed one is left alone. The device is Closed afterwards even when this throws: a file
    /// device reports bytes that could not be written with VoIOException.
    void close();

    Mode mode() const noexcept;   ///< What the device is open for; Closed when it is not.
    bool isOpen() const noexcept; ///< Whether the mode is any but Closed.

    /// @name Reading
    /// All throw VoIOInvalidReadException("Cannot read from IO device") unless the mode is exactly Read or ReadWrite.
    /// @{
    VoString read(std::size_t count);                    ///< Up to `count` bytes; empty at the end.
    VoString readAll();                                  ///< Everything, from the beginning.
    VoString readLine(std::size_t maximumLength = 0);    ///< Up to and with "\n"; at most so many bytes unless 0.
    VoString readRemaining();                            ///< Everything from the current place.
    std::size_t readInto(char* data, std::size_t count); ///< As read(), into `data`; returns the bytes taken.
    void restart();                                      ///< Goes back to the beginning for reading.
    /// @}

    /// @name Writing
    /// Both throw VoIOInvalidWriteException("Cannot write to IO device") unless the mode is exactly Write, ReadWrite or
    /// Append. They return the bytes taken; when these are fewer than given, lastError() becomes their missing number
    /// followed by " bytes were not written".
    /// @{
    std::size_t write(const VoString& text);                    ///< Writes the bytes of `text`.
    std::size_t writeFrom(const char* data, std::size_t count); ///< Writes `count` bytes at `data`.
    /// @}

    bool hasError() const;             ///< Whether lastError() holds a text.
    const VoString& lastError() const; ///< What failed last; empty when nothing did since the device was opened.

protected:
    VoIODevice();

    /// Takes over mode and error; `other` is Closed and without error afterwards. @{
    VoIODevice(VoIODevice&& other) noexcept;
    VoIODevice& operator=(VoIODevice&& other) noexcept;
    /// @}

    void setError(const VoString& error); ///< Sets lastError().

private:
    struct Private;

    Private& state();
    void requireReadable() const;
    void requireWritable() const;
    std::size_t noteWritten(std::size_t written, std::size_t wanted);

    std::unique_ptr<Private> m_private;
};

/// @relates VoIODevice
/// Joins and picks flags of a mode. @{
constexpr VoIODevice::Mode operator|(VoIODevice::Mode a, VoIODevice::Mode b) noexcept
{
    return static_cast<VoIODevice::Mode>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}

constexpr VoIODevice::Mode operator&(VoIODevice::Mode a, VoIODevice::Mode b) noexcept
{
    return static_cast<VoIODevice::Mode>(static_cast<std::uint32_t>(a) & static_cast<std::uint32_t>(b));
}

constexpr VoIODevice::Mode& operator|=(VoIODevice::Mode& a, VoIODevice::Mode b) noexcept
{
    return a = a | b;
}

constexpr VoIODevice::Mode& operator&=(VoIODevice::Mode& a, VoIODevice::Mode b) noexcept
{
    return a = a & b;
}
/// @}
