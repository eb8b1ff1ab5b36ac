#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>

#include <memory>

/// A new directory under the system's temporary directory, open to this user only, that is removed with all it holds
/// when the object ends. A failure to remove it is logged.
class VOCORE_EXPORT VoTemporaryDir
{
public:
    /// Makes the directory.
    /// @throws VoFileException "create_directory: " and the system's text
    VoTemporaryDir();
    /// Makes the directory inside another one, for instance to have it on the same volume as its later place.
    /// @throws VoFileException "create_directory: " and the system's text
    explicit VoTemporaryDir(const VoDirectoryPath& parent);
    /// A moved-from object has the null path.
    /// @{
    VoTemporaryDir(VoTemporaryDir&& other) noexcept;
    VoTemporaryDir& operator=(VoTemporaryDir&& other) noexcept;
    /// @}
    ~VoTemporaryDir();

    /// The directory.
    const VoDirectoryPath& path() const noexcept;
    /// The path of a file in the directory.
    VoFilePath path(const VoString& name) const;

    /// Leaves the directory on disk and forgets it; gives its path.
    VoDirectoryPath release();

private:
    struct Private;
    std::unique_ptr<Private> m_private; // empty after a move
};
