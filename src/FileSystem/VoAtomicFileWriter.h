#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <cstddef>
#include <memory>

/// Replaces a file as a whole: others see the old content or the new one, never a part.
///
/// The content goes to a new file beside the target, which commit() forces to disk and renames over the target. Without
/// a commit the destructor removes it and the target stays as it was. After a loss of power the target has the old or
/// the new content, provided the volume keeps its promises.
///
/// A target that is a link is itself replaced, not the file it leads to. A replaced file keeps its permissions. A
/// process that is killed before commit() leaves a file named as the target with ".tmp" and random letters behind.
///
///     VoAtomicFileWriter writer(path);
///     writer.write(bytes, size);
///     writer.commit();
class VOCORE_EXPORT VoAtomicFileWriter
{
public:
    /// Makes the file beside the target and opens it.
    /// @throws VoPathSizeFileException when the target's path is too long
    /// @throws VoInvalidPathFileException when the target is null or a directory, a device, a pipe or a socket, or a
    /// link to one
    /// @throws VoCannotOpenFileException with the target, when the file cannot be made
    explicit VoAtomicFileWriter(const VoFilePath& target);
    /// The moved-from writer has no file: what it is asked for throws VoInvalidCallException "No file to write".
    /// @{
    VoAtomicFileWriter(VoAtomicFileWriter&& other) noexcept;
    VoAtomicFileWriter& operator=(VoAtomicFileWriter&& other) noexcept;
    /// @}
    /// Removes what was not committed.
    ~VoAtomicFileWriter();

    /// The device that writes the new content, already open for writing. It ends with the writer or the commit,
    /// whichever comes first.
    VoIODevice& device();
    /// Appends bytes.
    /// @throws VoFileException "Cannot write file: " and the system's text. The first failure stays: commit() repeats
    /// it.
    void write(const char* data, std::size_t size);

    /// Whether a commit waits for the disk.
    enum class Durability
    {
        Forced,      ///< The content is on the disk when commit() returns.
        LeftToSystem ///< The content is whole for every process; for many files that can be made again.
    };

    /// Forces the content to disk, unless that is left to the system, and puts it in the target's place. After a
    /// failure the target is as it was and the new content is gone.
    /// @throws VoFileException "Cannot write file: " or "rename: " and the system's text
    /// @throws VoInvalidCallException "File already committed" when called again
    void commit(Durability durability = Durability::Forced);

    /// The file beside the target, empty so far, for writers that take a path. They write and close it before commit(),
    /// and nothing is written through this object then. Null after the commit.
    /// @throws VoInvalidPathFileException when the name of a directory on the way holds a backslash
    VoFilePath temporary() const;
    /// The file that commit() replaces.
    const VoFilePath& target() const noexcept;

private:
    struct Private;
    Private& state();

    std::unique_ptr<Private> m_private;
};
