#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <FileSystem/VoDirectoryPath.h>

#include <cstdint>

namespace vo::updater {
class ChunkListing;
}

namespace vo::updater::detail {

/// The directory in which the chunk files of one package are gathered:
///
///     <update directory>\download\<packageID>\<chunkID>.vochk
class VOCORE_PRIVATE_EXPORT StagingDirectory
{
public:
    explicit StagingDirectory(const VoDirectoryPath& directory);
    static StagingDirectory OfPackage(const VoUUID& packageID); ///< That of a package.

    const VoDirectoryPath& path() const; ///< The directory.
    /// The file of a chunk, there or not.
    VoFilePath chunkPath(const VoUUID& chunkID) const;

    /// Makes the directory, and those above it where needed.
    void create() const;
    /// Whether the chunk's file is there with the advertised size and checksum.
    bool holds(const ChunkListing& chunk) const;
    /// Copies a chunk's file from a local release, in place of one that may be there.
    /// @throws VoFileNotFoundException for a missing source
    /// @throws VoFileException for one that is no regular file or cannot be copied
    void copy(const VoFilePath& source, const VoUUID& chunkID) const;
    /// @{
    /// Reads and uncompresses a chunk: read() is to announce the step and load(), which may be done on another thread.
    /// @throws VoFileNotFoundException for one that is not staged
    /// @throws VoInvalidConversionException when it promises more than `limit` bytes, which is found before anything is
    /// uncompressed, or does not hold what it promises
    VoByteArray read(const VoUUID& chunkID, std::uint64_t limit) const;
    void announceReading(const VoUUID& chunkID) const;
    VoByteArray load(const VoUUID& chunkID, std::uint64_t limit) const;
    /// @}
    /// Removes the directory with all that is in it; nothing when it is not there.
    void remove() const;

private:
    VoDirectoryPath m_directory;
};

} // namespace vo::updater::detail
