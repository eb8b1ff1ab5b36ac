#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

/// @file
/// The zip library behind two handles. No other file knows it. Results are its codes, 0 for success; every call on a
/// handle without an archive gives a code too.

namespace vo::detail {

class ArchiveFile;
struct ZipEntry;

/// The library's result codes that have texts of their own, or are decided by us as well.
enum ZipCode : int
{
    ZipDone = 0,
    ZipSystemError = -1,
    ZipEndOfList = -100,
    ZipWrongParameter = -102,
    ZipBadFile = -103,
    ZipInternalError = -104,
    ZipWrongChecksum = -105
};

/// Reads entries of an archive without 64-bit fields.
class UnzipHandle
{
public:
    explicit UnzipHandle(ArchiveFile& file); ///< The file must outlive the handle.

    /// Makes an entry the current one. False when the library finds another one in its place, or no archive at all.
    bool goTo(const ZipEntry& entry, std::uint64_t index);
    int open();                             ///< Opens the current entry.
    int read(char* data, std::size_t size); ///< Bytes read, 0 at the end, or a code below zero.
    int finishEntry(); ///< Ends the open entry; ZipWrongChecksum when it was read whole and is damaged.

private:
    struct Closer
    {
        void operator()(void* archive) const noexcept;
    };
    std::unique_ptr<void, Closer> m_archive;
};

/// An archive being written. Where the library falls short, its headers and end records are completed: of entries from
/// 4 GiB on, and of archives beyond 4 GiB or with more than 65,534 entries.
class VOCORE_PRIVATE_EXPORT ZipHandle
{
public:
    ZipHandle() noexcept; ///< No archive.
    /// Makes the file; empty when that cannot be done.
    explicit ZipHandle(const std::filesystem::path& file);
    ZipHandle(ZipHandle&& other) noexcept;
    ZipHandle& operator=(ZipHandle&& other) = delete;
    ~ZipHandle();

    explicit operator bool() const noexcept { return m_archive != nullptr; }

    /// Ends the entry before and begins a new one. An entry that is at least as large as expected costs no second pass
    /// over its bytes when it needs a 64-bit field.
    int open(const std::string& name, int level, std::uint64_t expectedSize);
    int write(const char* data, std::size_t size);
    int finishEntry(); ///< Does nothing without an open entry.
    int close();
    std::error_code error() const noexcept; ///< What the system said of the first write that failed.

private:
    struct Closer
    {
        void operator()(void* archive) const noexcept;
    };

    struct Entry
    {
        std::uint64_t header = 0; // where its local header stands
        std::uint64_t size = 0;   // uncompressed, so far
        std::size_t nameSize = 0;
        bool hasLargeField = false;
    };

    int openInLibrary(const std::string& name, int level);
    int completeHeader(std::uint64_t compressedSize);
    int completeEnd(std::uint64_t directory);
    int writeAt(std::uint64_t position, const std::string& bytes);

    std::unique_ptr<ArchiveFile> m_file; // outlives the archive
    std::unique_ptr<void, Closer> m_archive;
    bool m_isOpen = false;
    Entry m_entry; // when open
    std::uint64_t m_count = 0;
    std::uint64_t m_directorySize = 0; // in bytes, of the entries that are finished
};

} // namespace vo::detail
