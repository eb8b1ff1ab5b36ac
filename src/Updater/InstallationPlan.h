#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <Core/VoVersion.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/ChunkListing.h>
#include <Updater/PackageDifferences.h>

#include <cstdint>

namespace vo::updater {

/// What an installation would do, known before a byte moves. A plain value.
struct VOCORE_EXPORT InstallationPlan
{
    /// One file to add, rewrite or remove.
    struct VOCORE_EXPORT File
    {
        FileDifference::Type type; ///< What happens to it.
        VoUUID id;                 ///< The file's ID.
        VoFilePath path;           ///< Where it is or will be installed.
        std::uint64_t bytes;       ///< Length of the new content; of a removed file that of the old one.
        VoFilePath copiedFrom{};   ///< The installed file that it is copied from; null when it is built.
        std::uint64_t patch = 0;   ///< The length of the patch that makes it of the installed file; 0: built of chunks.
    };

    VoUUID packageID{""};     ///< The package.
    VoUUID versionID{""};     ///< The release to install.
    VoString name;            ///< The release's display name.
    VoVersion version;        ///< The release's version.
    bool isInstalled = false; ///< Whether some release of the package is installed.
    /// Whether an operation on the package was interrupted or could not be recorded: there is something to be
    /// completed.
    bool isUnfinished = false;
    VoUUID installedVersionID{""};      ///< That release; empty when none is installed.
    VoVersion installedVersion;         ///< Its version.
    VoDirectoryPath installedDirectory; ///< Where it is installed; null when none is.
    bool isMove = false;                ///< Whether it is installed in another directory than the one planned for.

    VoDeque<File> files; ///< What changes on disk, in the order in which the installer goes through it.
    /// A link to make.
    struct VOCORE_EXPORT Link
    {
        VoFilePath path; ///< Where.
        VoString to;     ///< Where it leads, from its folder, with backslashes; empty for a copy.
    };
    VoDeque<Link> links;              ///< Links to make or to change, or the copies that stand for them.
    bool copiesLinks = false;         ///< Whether files are copied where the release has links, as on Windows.
    VoDeque<VoFilePath> removedLinks; ///< Links to remove.
    VoDeque<VoFilePath> programs;     ///< Those of the files to add or rewrite that are executable.
    VoDeque<VoDirectoryPath> folders; ///< Folders to make in which nothing lies.

    VoDeque<ChunkListing> chunks;  ///< The chunks to fetch, in the order of the advert.
    VoDeque<ChunkListing> patches; ///< The patches to fetch, listed as chunks are.
    /// Needed chunks and patches that an interrupted run has left whole; not fetched again.
    VoDeque<ChunkListing> stagedChunks;

    /// Files on disk that no package owns and that the installation replaces.
    VoDeque<VoFilePath> foreignFiles;
    /// Files on disk that no package owns and that have the content of the release's files already: they are taken
    /// over.
    VoDeque<VoFilePath> adoptedFiles;

    /// A file that another package owns.
    struct VOCORE_EXPORT OwnedFile
    {
        VoFilePath path;  ///< The file.
        VoUUID packageID; ///< Its package.
        VoString name;    ///< The display name of that.
    };
    VoDeque<OwnedFile> conflicts; ///< Files of the release in the places of such ones: installing is refused.
    VoDeque<OwnedFile>
        keptFiles; ///< Files that the release does not have any more, and that stay for their other owners.

    std::uint64_t addedFiles = 0;     ///< Number of files to add.
    std::uint64_t copiedFiles = 0;    ///< How many of these are copied from installed files.
    std::uint64_t patchedFiles = 0;   ///< Number of files that patches make.
    std::uint64_t modifiedFiles = 0;  ///< Number of files to rewrite: changed, missing, resized or moved.
    std::uint64_t removedFiles = 0;   ///< Number of files to remove.
    std::uint64_t unchangedFiles = 0; ///< Number of files that stay as they are.
    std::uint64_t bytesToFetch = 0;   ///< Total size of `chunks` and `patches`.
    std::uint64_t bytesToCopy = 0;    ///< Total length of the copied files.
    std::uint64_t bytesToWrite = 0;   ///< Total length of the added and modified files.
    std::uint64_t bytesToRemove = 0;  ///< Total length of the removed files.

    bool isEmpty() const; ///< Whether every file, link and folder is in place already.
    /// Whether the release is already the one recorded, in this directory, and there is nothing to do or to complete.
    bool isUpToDate() const;
    /// Whether an older version would replace a newer one. The build type plays no part.
    bool isDowngrade() const;
};

} // namespace vo::updater
