#pragma once

// The writing side of the published layout (UpdaterPaths.h): one release enters the declarations, or nothing changes.

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoFileLock.h>
#include <FileSystem/VoFilePath.h>
#include <Updater/AdvertisedPackages.h>
#include <Updater/detail/files/FileCheck.h>
#include <Updater/detail/publish/ManifestFolder.h>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace vo::updater::detail {

/// One publication beside a declarations document. From the beginning to the end of this object nobody else publishes
/// in the document's directory: neither into this document nor, since they share the release directories, into another
/// one beside it. What was done is undone at the end, unless declare() has succeeded.
class VOCORE_PRIVATE_EXPORT Publication
{
public:
    /// The name of the lock's file, beside the declarations.
    static constexpr const char* LockName = ".packages.lock";

    /// Makes the directory of the document where needed, waits for others who publish there (`waiting` is called again
    /// and again, and may end that by throwing) and reads the document, which need not exist.
    /// @throws VoNullPointerException for another document, and what making directories, locking and reading throw
    Publication(const VoFilePath& declarationsFile, const std::function<void()>& waiting);
    Publication(const Publication&) = delete;
    Publication& operator=(const Publication&) = delete;
    ~Publication();

    /// What is declared now.
    const AdvertisedPackages& declarations() const { return *m_declarations; }

    /// The manifest and keys of the folder.
    ManifestFolder& manifest() { return *m_manifest; }

    /// Makes a directory with those above it.
    void makeDirectory(const VoDirectoryPath& directory);
    /// Moves a file in.
    void moveFile(const VoFilePath& from, const VoFilePath& to);
    /// Puts a file that is there already into a second place as well: as a link where the volume has them, so that the
    /// releases share it, else as a copy. A sound one that is there stays.
    void shareFile(const ExpectedFile& from, const VoFilePath& to);
    /// Writes the definition of a release, and before it what it holds besides its files. Where the document declares
    /// another build of it at that place, its declaration goes first: between the two steps a reader then finds no
    /// release, and never one whose definition is that of another.
    void writeDefinition(const AdvertisedPackageListing& package, const VoFilePath& definition,
                         const VoFilePath& relative);
    /// Writes a document that stands beside a definition, before the release is declared; without bytes takes away the
    /// one that another build may have left.
    void writeBeside(const VoFilePath& path, const std::optional<VoString>& bytes);
    /// Declares the release, and lists it in the manifest of a folder that has one or is signed now, as the last step.
    ManifestState declare(const AdvertisedPackageListing& package, const VoFilePath& relative,
                          const ReleaseTerms& terms = ReleaseTerms(), const ReleaseSigning& signing = ReleaseSigning());
    /// Writes the document with other declarations, and the manifest as declare() does.
    ManifestState redeclare(const AdvertisedPackages& declarations, const ReleaseSigning& signing);

private:
    struct Replaced
    {
        VoFilePath path;
        std::optional<VoString> bytes; // none: there was no such file
    };

    void lock(const std::function<void()>& waiting);
    void replace(const VoFilePath& path, const std::function<void()>& write);
    void keepListed(const VoFilePath& path, const VoString& bytes);
    ManifestState writeDeclarations(const ReleaseTerms& terms, const ReleaseSigning& signing);
    void eraseDirectories(std::size_t first) noexcept;
    void undo() noexcept;

    const VoFilePath m_path;
    std::vector<VoDirectoryPath> m_madeDirectories; // outermost first
    std::size_t m_outside = 0;                      // the first so many of them were made before the lock was had
    std::vector<std::pair<VoFilePath, VoFilePath>> m_moved;
    std::vector<VoFilePath> m_shared;
    std::vector<Replaced> m_replaced;
    std::optional<VoFileLock> m_lock;
    VoUniquePtr<AdvertisedPackages> m_declarations;
    std::optional<ManifestFolder> m_manifest;
    bool m_isDeclared = false;
};

} // namespace vo::updater::detail
