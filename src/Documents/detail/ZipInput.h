#pragma once

#include <Documents/detail/ArchiveFile.h>
#include <Documents/detail/MiniZip.h>
#include <Documents/detail/ZipDirectory.h>
#include <Documents/detail/ZipEntryReader.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace vo::detail {

/// The reading side of an archive: its directory, read once, and the open entry.
///
/// An entry is found by its position, so that an archive of n entries is unpacked in time that grows with n: looking a
/// name up in the file would step through the directory each time.
class VOCORE_PRIVATE_EXPORT ZipInput
{
public:
    /// @param path What messages show.
    /// @throws VoInvalidPathFileException as FindZipEnd
    ZipInput(std::unique_ptr<ArchiveFile> file, const VoFilePath& path);

    std::size_t count(); ///< Number of entries. Reads the directory when it is first asked.
    bool complete();     ///< Whether the directory could be read to its end and holds as many entries as it claims.

    /// @name What the directory says of an entry, by an index below count()
    /// @{
    std::string_view name(std::size_t index) const; ///< As stored, all bytes.
    const ZipEntry& entry(std::size_t index) const { return m_directory->entries[index]; }
    std::uint64_t size(std::size_t index) const { return entry(index).size; }
    /// @}

    /// The index of the first entry whose name has the text of a VoFilePath; count() when there is none.
    std::size_t find(const std::string& path);

    /// Opens an entry. Refuses with ZipBadFile one with a problem, with ZipEndOfList what is beyond the last.
    int open(std::size_t index);

    /// Reads from the open entry; fewer bytes only at its end. A code other than 0 says what failed, now or before.
    std::size_t read(char* data, std::size_t size, int& code);
    bool atEnd() const noexcept { return m_remaining == 0 || m_failure != ZipDone; }
    std::uint64_t remaining() const noexcept { return m_remaining; } ///< As claimed; 0 without an open entry.
    std::string_view openName() const;                               ///< Empty without an open entry.

    int close();

private:
    static constexpr std::size_t None = static_cast<std::size_t>(-1);

    const ZipDirectory& directory();
    const std::unordered_map<std::string, std::size_t>& places();
    bool libraryReads(std::size_t index);

    std::unique_ptr<ArchiveFile> m_file;
    ZipEnd m_end;
    std::optional<ZipDirectory> m_directory;
    std::unordered_map<std::string, std::size_t> m_places; // by path; made when an entry is first opened by its name

    std::optional<UnzipHandle> m_library; // opened for the first entry that it reads
    ZipEntryReader m_reader;
    bool m_usesLibrary = false; // for the open entry
    std::size_t m_open = None;
    std::uint64_t m_remaining = 0;
    int m_failure = ZipDone;
};

} // namespace vo::detail
