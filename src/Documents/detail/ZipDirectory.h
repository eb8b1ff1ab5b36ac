#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class VoFilePath;

namespace vo::detail {

class ArchiveFile;

/// Where the directory of an archive lies, as its end record says.
struct ZipEnd
{
    std::uint64_t count = 0;         ///< Of entries, as claimed.
    bool countIsKnown = true;        ///< Else the directory has at least `count`.
    std::uint64_t directory = 0;     ///< Its position in the file; inside of the file together with its size.
    std::uint64_t directorySize = 0; ///< In bytes.
    std::uint64_t prefix = 0;        ///< Bytes before the archive begins, in which its own positions do not count.
};

/// Finds the end record, which closes the file but for its comment.
/// @throws VoInvalidPathFileException "Not a zip archive: ", "Zip archive is not complete: ", "Data behind the end
///         of zip archive: ", "Zip archive of several volumes: ", "Zip archive is damaged: " or "Zip archive cannot be
///         read: ", and the path
ZipEnd FindZipEnd(ArchiveFile& file, const VoFilePath& path);

/// What the directory of an archive says of an entry. All of it may be lies.
struct ZipEntry
{
    enum class Problem : std::uint8_t
    {
        None,
        Encrypted,
        Method, ///< Neither stored nor deflated.
        Damaged,
        Overlapping ///< Another entry has some of its bytes.
    };

    std::uint64_t record = 0;         ///< Where its record stands, counted from behind the prefix.
    std::uint64_t header = 0;         ///< Where its local header stands in the file.
    std::uint64_t compressedSize = 0; ///< In bytes.
    std::uint64_t size = 0;           ///< Uncompressed, in bytes.
    std::uint64_t nameEnd = 0;        ///< In the names of the directory; it begins where the one before ends.
    std::uint32_t checksum = 0;
    std::uint16_t method = 0;
    Problem problem = Problem::None; ///< Why it cannot be opened.
    bool isFolder = false;           ///< By its attributes; its name says it on its own.
    bool isLarge = false;            ///< Some of this is from the 64-bit field.
};

/// The directory of an archive.
struct ZipDirectory
{
    std::vector<ZipEntry> entries;
    std::string names;     ///< One after another: most are short, and there may be many.
    bool complete = false; ///< Every byte of it was a record, and there are as many as claimed.

    std::string_view name(std::size_t index) const; ///< As stored, all bytes.
};

/// Reads the directory up to its first damaged record.
ZipDirectory ReadZipDirectory(ArchiveFile& file, const ZipEnd& end);

/// The reason for messages why an entry cannot be opened; empty when it can.
std::string ZipProblemText(const ZipEntry& entry);

} // namespace vo::detail
