#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstdint>
#include <functional>

// The Windows API defines these names as macros for its own functions.
#if defined(_WIN32)
#undef CopyFile
#undef CreateDirectory
#undef MoveFile
#endif

/// Operations on files and directories.
///
/// Failures are thrown as VoFileException with the paths at hand and the message "operation: " and the system's text,
/// the operation being "exists", "file_size", "remove", "rename", "status", "create_directory", "create_directories",
/// "remove_all", "temp_directory_path", "equivalent", "space" or "directory_iterator"; where a member throws something
/// else it says so. A failure of the standard library itself becomes VoInvalidCallException with its text. What makes,
/// copies or moves throws VoPathSizeFileException for a path that is too long, before it touches the disk; every path
/// with a zero byte is refused with VoInvalidPathFileException.
///
/// Any thread may call; what several do to one file at once is ordered by the system only.
class VOCORE_EXPORT VoFileSystem
{
public:
    VoFileSystem() = delete;

    /// What to do when the target of a copy exists. Any other value means NoOption.
    enum CopyOptions : std::int32_t
    {
        NoOption = 0,          ///< refuse
        SkipExisting = 1,      ///< leave the target as it is, and succeed
        OverwriteExisting = 2, ///< replace it
        UpdateExisting = 3     ///< replace it when the source is newer, else leave it, and succeed
    };

    /// The application's well-known directories.
    enum DirectoryIdentifier : std::int32_t
    {
        ApplicationData = 0, ///< VOAPPDATAPATH, else the platform's place for application data
        Documents = 1,       ///< VODOCSPATH, else the user's documents
        Logs = 2             ///< "logs" in the application data directory
    };

    /// @name Questions
    /// @{

    /// True when anything bears the path. A link that leads nowhere does not exist; the null path neither.
    /// @{
    static bool Exists(const VoFilePath& path);
    static bool Exists(const VoAbstractPath& path);
    static bool Exists(const VoString& path);
    static bool Exists(const VoStringView& path);
    static bool Exists(const char* path);
    /// @}

    /// True when the path leads to a directory on disk, whatever its text ends with. False when nothing is there.
    /// @{
    static bool IsDirectory(const VoFilePath& path);
    static bool IsDirectory(const VoAbstractPath& path);
    /// @}

    /// The size of a file in bytes.
    /// @throws VoFileNotFoundException when nothing bears the path
    static std::uint64_t FileSize(const VoFilePath& path);

    /// True when the two paths lead to one file on disk, through whatever links. False when either is missing.
    static bool Same(const VoFilePath& a, const VoFilePath& b);

    /// The digest of a file; see VoChecksum.
    static VoChecksum Checksum(const VoFilePath& path);

    /// The bytes that may still be written to the volume that holds a directory. The nearest directory above that
    /// exists is asked when this one does not exist yet.
    static std::uint64_t FreeSpace(const VoDirectoryPath& directory);
    /// @}

    /// @name Changes
    /// @{

    /// Removes a file, a link or an empty directory. False when there was none.
    /// @{
    static bool Remove(const VoFilePath& path);
    static bool Remove(const VoAbstractPath& path);
    /// @}

    /// Removes a directory with all it holds, and gives the number of things removed; 0 when there was none. Links are
    /// removed and not followed, the directory itself included.
    /// @throws VoInvalidCallException "Cannot remove root directory: " and the path, for a null path or a root
    static std::uint64_t RemoveAll(const VoDirectoryPath& directory);

    /// Makes a directory, and those above it where wanted. False when it is there already.
    /// @throws VoFileException also when something else than a directory bears the path
    static bool CreateDirectory(const VoDirectoryPath& path, bool createParents = false);

    /// Copies a file with its permissions; true when something was copied. The target appears whole or not at all: it
    /// is written beside its place and renamed, so a target that is a link is itself replaced. A source that is a link
    /// means the file that it leads to. The copy is not forced to disk.
    /// @throws VoFileException with both paths and the system's text alone: for a source that is missing or no regular
    ///        file, a target that exists under NoOption, and a target that is a directory or the source itself
    static bool CopyFile(const VoFilePath& from, const VoFilePath& to, CopyOptions options = NoOption);

    /// Renames a file, link or directory; a file takes the place of an existing target. A file or link moves to another
    /// volume by a copy that keeps permissions and modification time where the volume has them; the source is removed
    /// when the copy is whole and on the disk. Directories do not move to another volume.
    static void MoveFile(const VoFilePath& from, const VoFilePath& to);

    /// Makes sure that the names in a directory, as they are now, survive a loss of power. Does nothing on systems
    /// without such an operation.
    static void SyncDirectory(const VoDirectoryPath& directory);
    /// @}

    /// @name Walks
    /// Names come in the order of their bytes, a directory before what it holds. Links to directories are delivered as
    /// files and not entered. The names of each directory are read before the first of them is delivered, so the
    /// callback may add and remove; what vanished meanwhile is skipped. Exceptions of the callback end the walk and
    /// pass through.
    /// @throws VoFileException "directory_iterator: " and the system's text, when a directory cannot be read
    /// @throws VoInvalidPathFileException when a name holds a backslash, which no path of ours can tell from a
    ///         separator
    /// @{

    /// Hands the files of a directory to the callback, and where wanted the directories too: as paths that end with the
    /// separator.
    static void ForEachFile(const VoDirectoryPath& directory, bool recursive, bool includeDirectories,
                            const std::function<void(const VoFilePath&)>& callback);
    /// Hands the directories in a directory to the callback.
    /// @throws VoInvalidPathException also when a name makes no valid directory path: one with a ":" too many
    static void ForEachDirectory(const VoDirectoryPath& directory, bool recursive,
                                 const std::function<void(const VoDirectoryPath&)>& callback);
    /// The number of paths that ForEachFile would deliver.
    static std::uint64_t NumberFiles(const VoDirectoryPath& directory, bool recursive, bool includeDirectories = false);
    /// @}

    /// @name Places
    /// @{

    /// The system's directory for temporary files.
    static VoDirectoryPath TempDirectory();
    /// A well-known directory. The environment is read at each call; the directory need not exist.
    /// @throws VoInvalidParameterException "Unknown directory identifier: " and the number
    static VoDirectoryPath Directory(DirectoryIdentifier identifier);

    /// @}
    /// @name The desktop
    /// This library shows nothing itself: a program with a display links VoCoreGui and calls
    /// VoDesktopServices::Install() once.
    /// @{

    /// Hands a file or directory to the desktop's default application. Throws what the opener throws, as
    /// VoDesktopServices tells.
    /// @throws VoInvalidCallException "Cannot open " + path + ": no desktop services are installed" without an opener
    /// @{
    static void OpenFile(const VoFilePath& path);
    static void OpenDirectory(const VoDirectoryPath& path);
    /// @}

    /// What opens a path, a directory's too.
    using Opener = void (*)(const VoFilePath& path);
    /// Sets what OpenFile() and OpenDirectory() call, or nothing; returns what was set before. Code that is called so
    /// must not be unloaded. From any thread.
    static Opener SetOpener(Opener opener) noexcept;
    /// @}
};
