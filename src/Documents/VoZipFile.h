#pragma once

#include <IO/VoIODevice.h>

class VoFilePath;

/// The entry of a VoZipArchive that is being read or written, as a device. The archive makes it, opens it and keeps it.
///
/// It cannot be rewound: seek_read(0) is accepted and does nothing, all other seeks throw VoInvalidCallException
/// "VoZipFile cannot be restarted".
///
/// Once it is not the archive's active entry any more it is detached: reads throw VoInvalidCallException "VoZipFile
/// cannot be read from as it is not the active file", writes the same with "written to". Other failures of reads and
/// writes are VoInvalidCallException "VoZipFile read failed: " or "VoZipFile write failed: " and the reason. Reading
/// fails with "Unzip bad zip file" when the entry holds less than it claims, and with "Unzip CRC error" when its last
/// byte arrives and the checksum is wrong; no byte beyond the claimed size is ever given.
///
/// Written bytes are gathered, so a failure may show at a later write, when the next entry is opened, or when the
/// archive is closed.
class VOCORE_EXPORT VoZipFile : public VoIODevice
{
public:
    ~VoZipFile() override;

    void seek_read(std::size_t position) override;  ///< See the class.
    void seek_write(std::size_t position) override; ///< See the class.
    /// Whether everything was read, or nothing more will be because reading failed. True when writing, and when
    /// detached.
    bool atEnd() const override;

    /// The entry's name as stored in the archive, when reading; else empty.
    /// @throws VoNullPointerException "VoZipFile parent archive not set" when detached
    VoFilePath path() const;

    /// The archive.
    /// @throws VoNullPointerException "VoZipFile parent archive not set" when detached
    /// @{
    VoZipArchive& archive();
    const VoZipArchive& archive() const;
    /// @}

protected:
    VoString onReadRemaining() override; ///< In large blocks.
    void onClose() override;             ///< Does nothing: the entry ends when the next one is opened.
    bool onOpen(Mode mode) override;     ///< Always true.
    VoString onRead(std::size_t count) override;
    std::size_t onWrite(const VoString& text) override;
    std::size_t onReadInto(char* data, std::size_t count) override;
    std::size_t onWriteFrom(const char* data, std::size_t count) override;

private:
    friend class VoZipArchive;

    explicit VoZipFile(VoZipArchive& archive);
    void destroy() noexcept;
    std::size_t expectedSize(std::size_t count) const;

    VoZipArchive* m_archive;
};
