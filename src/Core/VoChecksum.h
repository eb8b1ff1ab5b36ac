#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <memory>

namespace vo::detail {
class Sha3;
}

/// A SHA3-256 digest (FIPS 202) of a file or of bytes; a value.
class VOCORE_EXPORT VoChecksum
{
public:
    /// The null checksum, which equals the digest of nothing at all.
    VoChecksum();
    /// The digest of the data.
    explicit VoChecksum(const QByteArray& data);
    /// The digest of the file's whole content, read in blocks. Only a regular file is read: a device or a pipe could
    /// have no end.
    /// @throws VoFileNotFoundException when nothing bears the path
    /// @throws VoInvalidPathFileException when it is a directory
    /// @throws VoCannotOpenFileException when it cannot be opened or is no regular file
    /// @throws VoPathSizeFileException when the path is too long
    /// @throws VoFileException "Cannot obtain file data" when reading fails
    explicit VoChecksum(const VoFilePath& file);
    /// A literal could be bytes or the name of a file: say which.
    VoChecksum(const char*) = delete;
    /// Copies and moves as a value; a moved-from one is null.
    /// @{
    VoChecksum(const VoChecksum& other);
    VoChecksum(VoChecksum&& other) noexcept;
    VoChecksum& operator=(const VoChecksum& other);
    VoChecksum& operator=(VoChecksum&& other) noexcept;
    /// @}
    virtual ~VoChecksum();

    /// True for a default-constructed or moved-from checksum only; not for one read from an empty text.
    bool isNull() const noexcept;
    /// Lower-case hexadecimal: 64 characters for a digest, none for a null checksum.
    VoString toString() const;

    /// Equality of the bytes.
    /// @{
    friend VOCORE_EXPORT bool operator==(const VoChecksum& left, const VoChecksum& right) noexcept;
    friend VOCORE_EXPORT bool operator!=(const VoChecksum& left, const VoChecksum& right) noexcept;
    /// @}

    /// The hexadecimal text.
    static VoString Serialize(const VoChecksum& checksum);
    /// The checksum of a hexadecimal text. Nothing is refused: characters that are no hexadecimal digits are skipped
    /// and any length is taken, so a damaged text gives a checksum that no file has.
    static VoChecksum Deserialize(const VoString& text);

    /// Writes the hexadecimal text.
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoChecksum& checksum);

private:
    friend class vo::detail::Sha3;
    friend struct std::hash<VoChecksum>;
    struct Private;

    explicit VoChecksum(const VoString& hexadecimal);
    static VoChecksum fromDigest(const QByteArray& digest);
    const QByteArray& bytes() const noexcept;

    std::unique_ptr<Private> m_private; // empty in a null checksum
};

/// Hash of the digest's bytes.
template <>
struct VOCORE_EXPORT std::hash<VoChecksum>
{
    /// The hash of the bytes.
    std::size_t operator()(const VoChecksum& checksum) const noexcept;
};
