#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoString.h>
#include <Core/VoWeakPtr.h>

#include <cstddef>
#include <cstdint>
#include <memory>

class VoZipArchive_Internal;

/// One zip file, open either for reading or for writing, that hands out one entry at a time as a device.
///
///     VoZipArchive archive(path, VoZipArchive::Write);
///     archive.open("folder\\readme.txt", VoZipArchive::Default)->write("text");
///     archive.close();
///
/// Entries are read in any order and written one after another; opening an entry ends the one before. Names in the
/// archive are separated by "/", paths here by "\". Entries carry the first date of the format, 1980-01-01, and no
/// owner or permission, so the same content always gives the same bytes.
///
/// Archives and entries may have any size and number: from 4 GiB or 65,535 entries on the format's 64-bit records are
/// written, and only then. An entry that turns out so large while it is written is moved by 20 bytes when it ends.
///
/// Archives are hostile until checked: names come back as they are stored (see VoZipper for the checks before they are
/// used on disk), encrypted entries, unknown methods and entries that share bytes with others are refused, sizes and
/// checksums are verified while reading, and no claim of the archive makes the library take memory in advance.
///
/// A resource of one thread; it neither copies nor moves. Where the machine has more than one core, the bytes of large
/// entries are compressed by a thread of the archive's own while the caller makes the next ones.
class VOCORE_EXPORT VoZipArchive
{
public:
    /// What the archive is open for.
    enum Mode : std::int32_t
    {
        Read = 0, ///< Listing and unpacking.
        Write = 1 ///< Packing. Always makes a new file: what the path held before is gone.
    };

    /// How hard an entry is compressed. Entries are always deflated, with NoCompression at level 0. Any other value
    /// means Default.
    enum Compression : std::int32_t
    {
        NoCompression = 0, ///< Level 0.
        Fastest = 1,       ///< Level 1.
        Best = 2,          ///< Level 9.
        Default = 3        ///< The compressor's usual level.
    };

    /// Opens or makes the archive file.
    /// @throws VoFileNotFoundException when there is no file to read
    /// @throws VoInvalidPathFileException "Invalid path: " when the file cannot be made; when reading, one of "Not a
    ///         zip archive: ", "Zip archive is not complete: ", "Data behind the end of zip archive: ", "Zip archive of
    ///         several volumes: ", "Zip archive is damaged: " and "Zip archive cannot be read: ", and the path
    /// @throws VoPathSizeFileException for an over-long path
    /// @throws VoInvalidParameterException "Unknown mode for zip/unzip"
    VoZipArchive(const VoFilePath& path, Mode mode);
    VoZipArchive(const VoZipArchive&) = delete;
    VoZipArchive& operator=(const VoZipArchive&) = delete;
    /// As close(), but a failure is only logged, in the category "zip".
    ~VoZipArchive();

    /// Detaches the active entry, completes the file and closes it. Further calls do nothing.
    /// @throws VoInvalidCallException "Cannot close zip archive file: " and the reason, " in " and the path, or the
    ///        failed write of the last entry. The archive is closed even then; a file being written is not complete.
    void close();

    /// Detaches the active entry, if any, and makes another one active. The archive keeps it alive until the next
    /// open(), paths() or close(); who holds on to it longer gets exceptions from it.
    ///
    /// Reading finds an entry by the exact bytes of its path, in the form that paths() gives; among entries of one name
    /// the first. Writing does not check for a name that is there already.
    /// @throws VoInvalidParameterException "Cannot open zip archive file: " and the reason, " in " and the name:
    ///        "Unzip end of list of file" when there is no such entry, "Unzip encryption not supported", "Unzip method
    ///        12 (bzip2) not supported" or the like, "Unzip overlapping entries" for one that shares bytes with an
    ///        earlier one, "Unzip bad zip file"; "Unzip param error" and "Zip param error" after close()
    /// @throws VoInvalidCallException as VoZipFile writes, for bytes of the entry before that could not be written
    VoWeakPtr<VoZipFile> open(const VoFilePath& entryPath, Compression compression = Default);

    /// The paths of all entries, in the archive's order; folders that have an entry of their own end with "\". Detaches
    /// the active entry. The directory is read up to its first damaged record.
    /// @throws VoInvalidCallException "Zip paths cannot be returned in write mode"
    VoDeque<VoFilePath> paths();

    /// What the directory of an archive says.
    struct Listing
    {
        /// One file or folder.
        struct Entry
        {
            VoString name;          ///< As stored: with "/", all bytes.
            std::uint64_t size = 0; ///< Of the content when it is unpacked.
        };

        VoDeque<Entry> entries;  ///< In the archive's order, up to the first damaged record.
        bool isComplete = false; ///< Whether all could be read, and are as many as the archive claims.
    };
    /// Names and sizes of all entries, unchecked. Empty after close().
    /// @throws VoInvalidCallException "Zip paths cannot be returned in write mode"
    Listing listing();

    /// The text that stands for a result code of the zip library in the messages of this archive.
    VoString errorMessage(int code) const;

    Mode mode() const noexcept; ///< As given to the constructor.

    /// The state, for the library's own use.
    /// @{
    VoZipArchive_Internal& internal() noexcept;
    const VoZipArchive_Internal& internal() const noexcept;
    /// @}

private:
    friend class VoZipper;

    VoWeakPtr<VoZipFile> openForWriting(const VoFilePath& entryPath, Compression compression,
                                        std::uint64_t expectedSize);
    VoWeakPtr<VoZipFile> openEntry(std::size_t index);
    VoWeakPtr<VoZipFile> openEntry(std::size_t index, const VoString& name);
    VoWeakPtr<VoZipFile> activate();
    void detach() noexcept;
    void finishEntry();
    void requireOpened(int code, const VoString& name) const;

    std::unique_ptr<VoZipArchive_Internal> m_internal;
};
