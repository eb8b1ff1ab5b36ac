#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/detail/NativeFolder.h>

#include <filesystem>
#include <system_error>

namespace vo::updater::detail {

/// Keeps the changes that this thread makes below a directory inside of it: while it lives, FileActions there are made
/// in the folder that the directory was when this began, and links on the way are followed only where they stay inside.
/// Containment asks once, before a run; what is replaced by a link after that leads nowhere.
///
/// Where the directory is missing, the nearest one above it is held, and what is made below that may be no link at all.
/// Several may live at a time, one within the other; the innermost directory counts, and of one directory the first.
/// Has no effect where the system cannot hold folders.
class VOCORE_PRIVATE_EXPORT HeldTree
{
public:
    /// A null directory holds nothing. What the system refuses is told by the first action.
    explicit HeldTree(const VoDirectoryPath& root);
    ~HeldTree();
    HeldTree(const HeldTree&) = delete;
    HeldTree& operator=(const HeldTree&) = delete;

private:
    friend struct HeldPlace;
    using Folder = vo::detail::NativeFolder;

    static const HeldTree* Find(const VoFilePath& path);
    bool reaches(const VoFilePath& path) const;
    Folder open(const VoFilePath& path, std::error_code& error) const;
    Folder openInRoot(const std::filesystem::path& relative, const VoFilePath& path, std::error_code& error) const;

    const VoDirectoryPath m_root;
    const HeldTree* const m_outer;
    VoDirectoryPath m_anchorPath; // the root, or the nearest directory above it that is there
    Folder m_anchor;
    std::error_code m_error; // of opening that
    // Opened when it is there, and then kept.
    mutable Folder m_rootFolder;
    mutable std::filesystem::path m_realRoot; // its path without links
};

/// Where a change to a file or directory is made.
struct HeldPlace
{
    vo::detail::NativeFolder folder; ///< Its folder in a HeldTree of this thread; not open without one.
    std::filesystem::path name;      ///< In that folder, or the whole path.

    /// @throws VoFileException ("Link leads out of the installation: " + directory)
    static HeldPlace Of(const VoFilePath& path, std::error_code& error);
    /// The name of another path in the same directory.
    std::filesystem::path siblingName(const VoFilePath& other) const;
};

} // namespace vo::updater::detail
