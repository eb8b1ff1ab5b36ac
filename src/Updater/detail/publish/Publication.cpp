#include <Updater/detail/publish/Publication.h>

#include <Core/VoExceptionText.h>
#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/VoUUID.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoFileByteStream.h>
#include <Updater/AdvertisedPackageListing.h>
#include <Updater/ReleaseAttributes.h>
#include <Updater/detail/documents/Log.h>
#include <Updater/detail/documents/XMLDocument.h>

#include <filesystem>
#include <system_error>

namespace vo::updater::detail {

namespace {

VoUniquePtr<AdvertisedPackages> OpenDeclarations(const VoFilePath& path)
{
    if (!VoFileSystem::Exists(path))
        return VoUniquePtr<AdvertisedPackages>::Make();
    VoUniquePtr<AdvertisedPackages> declarations = AdvertisedPackages::Open(path);
    *declarations; // throws when it is another document
    return declarations;
}

void CopyDurably(const VoFilePath& from, const VoFilePath& to)
{
    constexpr std::size_t blockSize = 256 * 1024;
    VoFileInputByteStream source(from);
    source.requireOpen();
    VoAtomicFileWriter writer(to);
    std::vector<char> block(blockSize);
    while (const std::size_t count = source.read(block.data(), block.size()))
        writer.write(block.data(), count);
    writer.commit();
}

// One step back; the others are taken whatever becomes of it.
template <typename Step>
void TakeBack(const VoString& what, Step step) noexcept
{
    try {
        step();
    } catch (...) {
        PublishingLog().error("Failed publication cannot be removed: " + what + ": " + CurrentExceptionText());
    }
}

} // namespace

Publication::Publication(const VoFilePath& declarationsFile, const std::function<void()>& waiting)
    : m_path(declarationsFile)
{
    try {
        lock(waiting);
        m_declarations = OpenDeclarations(m_path);
        m_manifest.emplace(m_path.parent());
    } catch (...) {
        undo();
        throw;
    }
}

Publication::~Publication()
{
    if (!m_isDeclared)
        undo();
}

void Publication::lock(const std::function<void()>& waiting)
{
    const VoDirectoryPath directory = m_path.parent();
    for (;;) {
        makeDirectory(directory);
        m_outside = m_madeDirectories.size();
        try {
            m_lock.emplace(directory.file(LockName), waiting);
            return;
        } catch (const VoCannotOpenFileException&) {
            // Another publication that failed may have taken away the directory that it had made.
            if (directory.isNull() || VoFileSystem::Exists(directory))
                throw;
        }
    }
}

void Publication::makeDirectory(const VoDirectoryPath& directory)
{
    if (directory.isNull() || VoFileSystem::IsDirectory(directory))
        return;
    // Another publication that failed may take away the parent, which it had made, between the two steps.
    constexpr int attempts = 100;
    const VoDirectoryPath parent = directory.parent();
    for (int attempt = 1;; ++attempt) {
        if (parent != directory)
            makeDirectory(parent);
        try {
            if (VoFileSystem::CreateDirectory(directory))
                m_madeDirectories.push_back(directory);
            return;
        } catch (const VoFileException&) {
            if (attempt == attempts)
                throw;
        }
    }
}

void Publication::moveFile(const VoFilePath& from, const VoFilePath& to)
{
    VoFileSystem::MoveFile(from, to);
    m_moved.emplace_back(from, to);
}

void Publication::shareFile(const ExpectedFile& from, const VoFilePath& to)
{
    if (VoFileSystem::Exists(to)) {
        // Also left by a run that was killed while copying it.
        if (VoFileSystem::Same(from.path, to) || IsSound({to, from.checksum, from.size}))
            return;
        VoFileSystem::Remove(to);
    }
    // Nothing is written through a link: whatever replaces a chunk's file renames another one over it.
    std::error_code error;
    std::filesystem::create_hard_link(vo::detail::ToNative(from.path), vo::detail::ToNative(to), error);
    if (error)
        CopyDurably(from.path, to);
    m_shared.push_back(to);
}

void Publication::writeDefinition(const AdvertisedPackageListing& package, const VoFilePath& definition,
                                  const VoFilePath& relative)
{
    // A definition that is published anew is not declared while it changes.
    const std::size_t declared = m_declarations->declarations().size();
    m_declarations->remove(package.packageID(), relative);
    if (m_declarations->declarations().size() != declared)
        replace(m_path, [this] { m_declarations->write(m_path); });
    // First: a definition is never there without them.
    const auto& attributes = package.attributes();
    const bool hasAttributes = attributes && !attributes->isEmpty();
    writeBeside(definition.parent().file(ReleaseAttributes::FileName),
                hasAttributes ? std::make_optional(attributes->toDocument()) : std::nullopt);
    replace(definition, [&] { package.write(definition); });
    VoFileSystem::SyncDirectory(definition.parent());
}

void Publication::writeBeside(const VoFilePath& path, const std::optional<VoString>& bytes)
{
    if (bytes)
        replace(path, [&] { WriteBytes(path, *bytes); });
    else if (VoFileSystem::Exists(path))
        replace(path, [&] { VoFileSystem::Remove(path); });
}

ManifestState Publication::declare(const AdvertisedPackageListing& package, const VoFilePath& relative,
                                   const ReleaseTerms& terms, const ReleaseSigning& signing)
{
    m_declarations->add(package, relative);
    return writeDeclarations(terms, signing);
}

ManifestState Publication::redeclare(const AdvertisedPackages& declarations, const ReleaseSigning& signing)
{
    *m_declarations = declarations;
    return writeDeclarations(ReleaseTerms(), signing);
}

ManifestState Publication::writeDeclarations(const ReleaseTerms& terms, const ReleaseSigning& signing)
{
    replace(m_path, [this] { m_declarations->write(m_path); });
    ManifestState state;
    if (m_manifest->exists() || !signing.keys.empty())
        state = m_manifest->update({VoFilePath(VoString(m_path.filename())), terms, {}, false}, signing);
    m_isDeclared = true;
    return state;
}

// Keeps what a file held before it was first written. Noted after the writing: one that fails has left it as it was.
void Publication::replace(const VoFilePath& path, const std::function<void()>& write)
{
    Replaced before{path, std::nullopt};
    if (VoFileSystem::Exists(path)) {
        before.bytes = ReadDocument(path);
        keepListed(path, *before.bytes);
    }
    write();
    m_replaced.push_back(std::move(before));
}

// For clients that read the manifest before there is another one. Stays when the publication fails: a full disk may
// keep the document from being put back.
void Publication::keepListed(const VoFilePath& path, const VoString& bytes)
{
    const auto copy = m_manifest->copyName(m_path.parent().relativeFile(path), bytes);
    if (copy && !VoFileSystem::Exists(m_manifest->path(*copy)))
        WriteBytes(m_manifest->path(*copy), bytes);
}

void Publication::undo() noexcept
{
    // The definition before the declarations that name it.
    for (auto file = m_replaced.rbegin(); file != m_replaced.rend(); ++file) {
        TakeBack(file->path.path(), [&] {
            if (!file->bytes) {
                VoFileSystem::Remove(file->path);
                return;
            }
            WriteBytes(file->path, *file->bytes);
        });
    }
    for (const VoFilePath& file : m_shared)
        TakeBack(file.path(), [&] { VoFileSystem::Remove(file); });
    for (auto file = m_moved.rbegin(); file != m_moved.rend(); ++file)
        TakeBack(file->second.path(), [&] { VoFileSystem::MoveFile(file->second, file->first); });
    // As long as nobody else can be about to fill them.
    eraseDirectories(m_outside);
    m_lock.reset();
    eraseDirectories(0);
}

// What is not empty is in use.
void Publication::eraseDirectories(std::size_t first) noexcept
{
    while (m_madeDirectories.size() > first) {
        TakeBack(m_madeDirectories.back().path(), [&] {
            std::error_code ignored;
            std::filesystem::remove(vo::detail::ToNative(m_madeDirectories.back()), ignored);
        });
        m_madeDirectories.pop_back();
    }
}

} // namespace vo::updater::detail
