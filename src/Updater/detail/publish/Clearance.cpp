#include <Updater/detail/publish/Clearance.h>

#include <Core/VoString.h>
#include <Core/VoVersion.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/TemporaryName.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/ReleaseManifest.h>
#include <Updater/ReleasePatches.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/documents/ReleaseDocuments.h>
#include <Updater/detail/documents/UpdaterPaths.h>
#include <Updater/detail/documents/XMLDocument.h>
#include <Updater/detail/files/FileActions.h>
#include <Updater/detail/publish/Publication.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace vo::updater::detail {

namespace {

using Declaration = AdvertisedPackages::Declaration;

constexpr std::size_t DigestLength = 64;

bool EndsWith(std::string_view text, std::string_view end)
{
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

bool StartsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

std::string NameOf(const VoFilePath& file)
{
    return VoString(file.filename()).toStdString();
}

bool IsChunk(std::string_view name)
{
    return EndsWith(name, Layout::ChunkSuffix);
}

// Whether the name ends with a digest.
bool IsCopy(std::string_view name)
{
    if (name.size() <= DigestLength + 1 || name[name.size() - DigestLength - 1] != '.')
        return false;
    const std::string_view digest = name.substr(name.size() - DigestLength);
    return digest.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

bool IsOrCopies(std::string_view name, std::string_view plain)
{
    return name == plain || (StartsWith(name, plain) && name.size() == plain.size() + 1 + DigestLength && IsCopy(name));
}

bool IsPatch(std::string_view name)
{
    return EndsWith(name, ReleasePatches::Suffix);
}

bool IsDefinition(std::string_view name)
{
    return IsOrCopies(name, Layout::DefinitionName);
}

bool IsDocument(std::string_view name)
{
    return IsDefinition(name) || std::any_of(std::begin(OptionalDocuments), std::end(OptionalDocuments),
                                             [&](const char* plain) { return IsOrCopies(name, plain); });
}

std::string Folded(const VoString& text)
{
    return FoldedName(text).toStdString();
}

// Tells of the files of a kind that no document lists, and of what writing such files left.
void FindUnlisted(const VoDirectoryPath& directory, bool (*isOne)(std::string_view),
                  const std::set<std::string>& listed, const std::function<void(const VoFilePath&)>& tell)
{
    if (!VoFileSystem::IsDirectory(directory))
        return;
    VoFileSystem::ForEachFile(directory, false, false, [&](const VoFilePath& file) {
        const std::string name = NameOf(file);
        if (isOne(name) ? listed.count(Folded(VoString(name))) == 0 : isOne(vo::detail::SiblingOf(name)))
            tell(file);
    });
}

// By a look at the beginning: among the files of a web server's folder are pages and pictures.
bool LooksLikeDeclarations(const VoFilePath& file)
{
    constexpr std::size_t beginning = 4096;
    if (VoFileSystem::FileSize(file) > LargestDocument)
        return false;
    std::string start = ReadDocument(file).toStdString().substr(0, beginning);
    start.erase(std::remove(start.begin(), start.end(), '\0'), start.end()); // of wider encodings
    return start.find("<packages") != std::string::npos;
}

} // namespace

std::pair<AdvertisedPackages, VoDeque<VoString>> NewestOnly(const AdvertisedPackages& declared, std::size_t keep)
{
    const auto isOld = [&](const Declaration& declaration) {
        const auto isNewer = [&](const Declaration& other) {
            return other.packageID() == declaration.packageID() && other.version() > declaration.version();
        };
        const auto& all = declared.declarations();
        return static_cast<std::size_t>(std::count_if(all.begin(), all.end(), isNewer)) >= keep;
    };
    std::pair<AdvertisedPackages, VoDeque<VoString>> result{declared, {}};
    for (const Declaration& declaration : declared.declarations()) {
        if (!isOld(declaration))
            continue;
        result.first.remove(declaration.packageID(), declaration.path());
        result.second.pushBack(declaration.name() + " " + declaration.version().toString());
    }
    return result;
}

Clearance::Clearance(const VoDirectoryPath& folder)
    : m_folder(folder)
{
}

void Clearance::keep(const AdvertisedPackages& declarations)
{
    for (const Declaration& declaration : declarations.declarations())
        keepRelease(declaration.path());
}

void Clearance::keepRelease(const VoFilePath& definition)
{
    m_kept.insert(Folded(definition.path()));
    for (const char* name : OptionalDocuments)
        m_kept.insert(Folded(Beside(definition, name).path()));
}

void Clearance::keep(const ReleaseManifest& manifest)
{
    for (const ReleaseManifest::Release& release : manifest.releases) {
        keepRelease(release.path);
        m_kept.insert(Folded(release.path.path() + "." + release.checksum.toString()));
    }
    for (const ReleaseManifest::Document& document : manifest.documents)
        m_kept.insert(Folded(document.path.path() + "." + document.checksum.toString()));
}

void Clearance::keepOtherDeclarations(const VoFilePath& except)
{
    VoFileSystem::ForEachFile(m_folder, false, false, [&](const VoFilePath& file) {
        // The manifest tells whether a kept copy of a former state still counts. The lock is ours, and on some systems
        // nobody reads it meanwhile.
        const std::string name = NameOf(file);
        if (file == except || IsCopy(name) || name == Publication::LockName || KindOf(file) != FileKind::File ||
            !LooksLikeDeclarations(file))
            return;
        if (const auto declarations = AdvertisedPackages::Open(file))
            keep(*declarations);
    });
}

bool Clearance::isKept(const VoFilePath& file) const
{
    return m_kept.count(Folded(m_folder.relativeFile(file).path())) != 0;
}

void Clearance::forEachRelease(const std::function<void(const VoDirectoryPath&)>& visit) const
{
    const VoDirectoryPath packages = m_folder.directory(Layout::PackagesDirectory);
    if (!VoFileSystem::IsDirectory(packages))
        return;
    VoFileSystem::ForEachDirectory(packages, false, [&](const VoDirectoryPath& package) {
        VoFileSystem::ForEachDirectory(package, false, visit);
    });
}

// The names of the chunks that the definitions which stay refer to.
std::set<std::string> Clearance::chunksOf(const VoDirectoryPath& release) const
{
    std::set<std::string> chunks;
    VoFileSystem::ForEachFile(release, false, false, [&](const VoFilePath& file) {
        if (!IsDefinition(NameOf(file)) || !isKept(file))
            return;
        const auto definition = AdvertisedPackageListing::Open(file);
        for (const ChunkListing& chunk : definition->chunks())
            chunks.insert(Folded(VoString(chunk.path().filename())));
    });
    return chunks;
}

// The names of the patches that the documents which stay list.
std::set<std::string> Clearance::patchesOf(const VoDirectoryPath& release) const
{
    std::set<std::string> patches;
    VoFileSystem::ForEachFile(release, false, false, [&](const VoFilePath& file) {
        if (!IsOrCopies(NameOf(file), ReleasePatches::FileName) || !isKept(file))
            return;
        const VoString bytes = ReadDocument(file, ReleasePatches::LargestSize);
        const ReleasePatches document = ReleasePatches::Parse(bytes, file.path());
        for (const ReleasePatches::Patch& patch : document.patches)
            patches.insert(Folded(VoString(patch.file().path().filename())));
    });
    return patches;
}

void Clearance::findInRelease(const VoDirectoryPath& release, const std::function<void(const VoFilePath&)>& tell) const
{
    VoFileSystem::ForEachFile(release, false, false, [&](const VoFilePath& file) {
        const std::string name = NameOf(file);
        if (IsDocument(name) ? !isKept(file) : IsDocument(vo::detail::SiblingOf(name)))
            tell(file);
    });
    FindUnlisted(release.directory(Layout::ChunksDirectory), IsChunk, chunksOf(release), tell);
    FindUnlisted(release.directory(ReleasePatches::Directory), IsPatch, patchesOf(release), tell);
}

void Clearance::find(const std::function<void(const VoFilePath&)>& tell) const
{
    VoFileSystem::ForEachFile(m_folder, false, false, [&](const VoFilePath& file) {
        const std::string name = NameOf(file);
        const std::string_view whole = vo::detail::SiblingOf(name);
        if (EndsWith(whole, ".xml") || EndsWith(whole, ".minisig"))
            tell(file);
    });
    forEachRelease([&](const VoDirectoryPath& release) { findInRelease(release, tell); });
}

void Clearance::removeEmptyFolders() const
{
    forEachRelease([](const VoDirectoryPath& release) {
        const bool isEmpty = EraseDirectoryIfEmpty(release.directory(ReleasePatches::Directory)) &&
                             EraseDirectoryIfEmpty(release.directory(Layout::ChunksDirectory));
        if (isEmpty && EraseDirectoryIfEmpty(release))
            EraseDirectoryIfEmpty(release.parent());
    });
}

} // namespace vo::updater::detail
