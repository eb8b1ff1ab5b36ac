#pragma once

#include <Documents/MiniZip.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vo::detail {

/// The reading side of an archive: its directory, read once, and the open entry.
///
/// An entry is found by its position, so that an archive of n entries is unpacked in time that grows with n: looking a
/// name up in the file would step through the directory each time.
class VOCORE_PRIVATE_EXPORT ZipInput
{
public:
    explicit ZipInput(UnzipHandle archive);

    std::size_t count(); ///< Number of entries. Reads the directory when it is first asked.
    bool complete();     ///< Whether the directory could be read to its end.

    /// @name What the directory says of an entry, by an index below count()
    /// @{
    std::string_view name(std::size_t index) const; ///< As stored, all bytes.
    std::uint64_t size(std::size_t index) const { return m_entries[index].size; }
    bool readable(std::size_t index) const { return m_entries[index].readable; } ///< Whether open() is possible at all.
    /// @}

    /// Opens an entry by the text of its VoFilePath; the first one of that name.
    int open(const std::string& path);
    /// Opens an entry. Refuses with ZipBadFile what is not readable.
    int open(std::size_t index);

    /// Reads from the open entry; fewer bytes only at its end. A code other than 0 says what failed, now or before.
    std::size_t read(char* data, std::size_t size, int& code);
    bool atEnd() const noexcept { return m_remaining == 0 || m_failure != ZipDone; }
    std::uint64_t remaining() const noexcept { return m_remaining; } ///< As claimed; 0 without an open entry.
    std::string_view openName() const;                               ///< Empty without an open entry.

    int close();

private:
    struct Entry
    {
        std::uint64_t position;
        std::uint64_t number;
        std::uint64_t size;
        std::uint64_t nameEnd; // in m_names; the name begins where the one before ends
        bool readable;
    };

    static constexpr std::size_t None = static_cast<std::size_t>(-1);

    const std::vector<Entry>& entries();
    const std::unordered_map<std::string, std::size_t>& places();

    UnzipHandle m_archive;
    bool m_listed = false;
    bool m_complete = true;
    std::vector<Entry> m_entries;
    std::string m_names;                                   // one after another: most are short, and there may be many
    std::unordered_map<std::string, std::size_t> m_places; // by path; made when an entry is first opened by its name
    std::size_t m_open = None;
    std::uint64_t m_remaining = 0;
    int m_failure = ZipDone;
};

} // namespace vo::detail
