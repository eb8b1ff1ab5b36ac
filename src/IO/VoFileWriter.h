#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <QtCore/QIODevice>

#include <memory>

/// Opens a file for writing through Qt: device() is handed to a Qt class that writes. The file is created or emptied.
class VOCORE_EXPORT VoFileWriter
{
public:
    /// A temporary file must outlive the writer.
    /// @throws VoIOException "Unable to open file for writing" when the file cannot be opened
    /// @{
    explicit VoFileWriter(const VoFilePath& path);
    explicit VoFileWriter(const VoTemporaryFile& file);
    /// @}

    VoFileWriter(VoFileWriter&& other) noexcept;            ///< `other` has no device afterwards.
    VoFileWriter& operator=(VoFileWriter&& other) noexcept; ///< `other` has no device afterwards.
    ~VoFileWriter();                                        ///< Closes and keeps silent about failures.

    /// The open device; it stays the writer's.
    /// @throws VoNullPointerException "VoFileWriter has no device" on a writer that was moved from
    QIODevice& device();

    /// Writes what is buffered and closes. Throws what failed since the file was opened, usually VoIOException("Error
    /// occurred on writing to file"). Closing twice does nothing.
    void close();

private:
    struct Private;

    std::unique_ptr<Private> m_private;
};
