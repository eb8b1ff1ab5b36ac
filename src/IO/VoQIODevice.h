#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <QtCore/QIODevice>

#include <cstddef>
#include <exception>
#include <memory>

class VoIODevice;

/// Presents a VoIODevice to Qt, so that Qt's XML and hashing classes read and write through it.
///
/// The wrapped device must outlive the adapter. One that is closed is opened by open() and closed by close(); one that
/// is open already in a fitting mode is used as it stands and left open.
///
/// Written bytes are gathered and reach the device in blocks; flush(), close() and the destructor pass on the rest.
///
/// Qt is not written for exceptions: one that the device throws is kept, the failing call and all later transfers give
/// Qt's own failure result, and rethrow() brings the exception back. The destructor drops it.
class VOCORE_EXPORT VoQIODevice : public QIODevice
{
public:
    explicit VoQIODevice(VoIODevice& device); ///< Presents `device`; opens nothing.
    ~VoQIODevice() override;

    /// Opens the adapter and, unless it is open, the device: ReadOnly as Read, WriteOnly (with or without Truncate) as
    /// Write, ReadWrite as ReadWrite, Append as Append. Returns false with errorString() set when that fails, when the
    /// device is open in a mode that does not fit ("Device already open"), and for a mode without any of these.
    bool open(OpenMode mode) override;

    /// Passes on gathered bytes, closes the device if open() opened it, and the adapter. What fails is kept for
    /// rethrow().
    void close() override;

    bool flush();                        ///< Passes gathered bytes to the device; false when that fails.
    bool seek(qint64 position) override; ///< Moves reading and writing of the device to `position`.
    bool atEnd() const override;         ///< Whether there is nothing to read; true when not open for reading.

    bool hasFailed() const; ///< Whether an exception is kept.

    /// Throws the first exception since open(), if there is one; it stays kept.
    void rethrow() const;

protected:
    qint64 readData(char* data, qint64 maximumSize) override; ///< Reads from the device.
    qint64 writeData(const char* data, qint64 size) override; ///< Gathers bytes for the device.

private:
    struct Private;

    bool attach(OpenMode mode);
    void detach();
    bool prepareRead();
    bool prepareWrite();
    bool passOn(const char* data, std::size_t count);
    void keepException() noexcept;

    std::unique_ptr<Private> m_private;
};
