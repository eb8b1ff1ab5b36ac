#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <memory>

/// A new empty file, readable and writable by this user only, whose name nobody else can have taken; removed when the
/// object ends unless it was released. A file that was moved away meanwhile is no failure.
class VOCORE_EXPORT VoTemporaryFile
{
public:
    /// Makes the file in the system's temporary directory.
    /// @throws VoCannotOpenFileException
    VoTemporaryFile();
    /// Makes the file in a directory, for instance beside the file it is to replace.
    /// @throws VoCannotOpenFileException
    explicit VoTemporaryFile(const VoDirectoryPath& directory);
    /// A moved-from object has the null path.
    /// @{
    VoTemporaryFile(VoTemporaryFile&& other) noexcept;
    VoTemporaryFile& operator=(VoTemporaryFile&& other) noexcept;
    /// @}
    ~VoTemporaryFile();

    /// The file.
    const VoFilePath& path() const noexcept;

    /// Leaves the file on disk and forgets it; gives its path.
    VoFilePath release();

private:
    struct Private;
    std::unique_ptr<Private> m_private; // empty after a move
};
