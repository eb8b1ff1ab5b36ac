#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

/// @file
/// The zip library behind two handles that own what it opens. No other file knows it. Results are its codes, 0 for
/// success; every call on a handle without an archive gives a code too.

namespace vo::detail {

/// Result codes that are decided by us as well.
enum ZipCode : int
{
    ZipDone = 0,
    ZipSystemError = -1,
    ZipEndOfList = -100,
    ZipWrongParameter = -102,
    ZipBadFile = -103,
    ZipWrongChecksum = -105
};

/// What the directory of an archive says of an entry. All of it may be lies.
struct ZipEntryRecord
{
    std::string name; ///< All bytes, zero bytes included.
    std::uint64_t position = 0;
    std::uint64_t number = 0; ///< With the position what the zip library needs to come back.
    std::uint64_t size = 0;
    bool readable = false; ///< Not encrypted, and stored or deflated.
};

/// An archive being read.
class VOCORE_PRIVATE_EXPORT UnzipHandle
{
public:
    UnzipHandle() noexcept; ///< No archive.
    /// Empty when the file cannot be opened or is no archive; also for an archive without entries, see IsEmptyArchive.
    explicit UnzipHandle(const std::filesystem::path& file);
    UnzipHandle(UnzipHandle&& other) noexcept;
    UnzipHandle& operator=(UnzipHandle&& other) noexcept;
    ~UnzipHandle();

    explicit operator bool() const noexcept { return m_archive != nullptr; }

    /// Steps through the directory. @{
    int first();
    int next();
    int record(ZipEntryRecord& record) const;
    /// @}

    std::uint64_t claimedCount() const; ///< Of entries; 0 without an archive.

    int open(std::uint64_t position, std::uint64_t number); ///< Opens the entry of a record.
    int read(char* data, std::size_t size);                 ///< Bytes read, 0 at the end, or a code below zero.
    int finishEntry(); ///< Ends the open entry; ZipWrongChecksum when it was read whole and is damaged.
    int close();

private:
    struct Closer
    {
        void operator()(void* archive) const noexcept;
    };
    std::unique_ptr<void, Closer> m_archive;
};

/// Whether a file is the end record of an archive and nothing else.
bool IsEmptyArchive(const std::filesystem::path& file);

/// An archive being written.
class VOCORE_PRIVATE_EXPORT ZipHandle
{
public:
    ZipHandle() noexcept; ///< No archive.
    /// Makes the file; empty when that cannot be done.
    explicit ZipHandle(const std::filesystem::path& file);
    ZipHandle(ZipHandle&& other) noexcept;
    ZipHandle& operator=(ZipHandle&& other) noexcept;
    ~ZipHandle();

    explicit operator bool() const noexcept { return m_archive != nullptr; }

    int open(const std::string& name, int level); ///< Ends the entry before.
    int write(const char* data, std::size_t size);
    int close();

private:
    struct Closer
    {
        void operator()(void* archive) const noexcept;
    };
    std::unique_ptr<void, Closer> m_archive;
};

} // namespace vo::detail
