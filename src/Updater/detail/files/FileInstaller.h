#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/detail/Sha3Hasher.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/detail/NativeFile.h>

#include <cstddef>
#include <cstdint>
#include <optional>

namespace vo::updater::detail {

/// Where the file for a place is built: place + ".vonew".
VOCORE_PRIVATE_EXPORT VoFilePath BuiltPath(const VoFilePath& place);

/// When a built file is forced to disk.
enum class Durability
{
    AtOnce, ///< By finish().
    Later,  ///< By whoever puts it in place, together with others (VolumeSync.h).
};

/// When a built file is compared with its digest.
enum class Digest
{
    Passing, ///< By finish(), taken while the bytes pass.
    Later,   ///< By whoever reads it together with others (BuiltFiles).
};

/// Builds one file beside its place and checks it; putting it in place is a separate step (PutInPlace).
///
///     FileInstaller file(place);
///     file.write(bytes, size);
///     if (file.finish(checksum, length)) ...
///
/// Unless finish() succeeded, the destructor removes what was built. The file at the place is never opened: a link
/// there is replaced and not written through, and a file that may not be written is no obstacle.
class VOCORE_PRIVATE_EXPORT FileInstaller
{
public:
    /// Makes the new file; one that was left there by an interrupted run is removed first.
    /// @throws VoPathSizeFileException
    /// @throws VoFileException ("Cannot write file: ...") for all other trouble
    FileInstaller(const VoFilePath& place, Durability durability, Digest digest = Digest::Passing);
    FileInstaller(const FileInstaller&) = delete;
    FileInstaller& operator=(const FileInstaller&) = delete;
    ~FileInstaller();

    /// Appends bytes.
    void write(const char* data, std::size_t size);

    /// Completes the file. The result is whether it has the size and, unless that is found out later, the checksum. A
    /// file that has them is kept, with the permissions of the one that it is to replace: those it gets from whoever
    /// compares it later, as they may forbid reading.
    bool finish(const VoChecksum& checksum, std::uint64_t size);

private:
    void require(const std::error_code& error) const;

    const VoFilePath m_place;
    const VoFilePath m_built;
    const Durability m_durability;
    vo::detail::NativeFile m_file;
    std::optional<vo::detail::Sha3> m_digest;
    std::uint64_t m_size = 0;
    bool m_isKept = false;
};

} // namespace vo::updater::detail
