#include <Updater/detail/publish/PatchMaker.h>

#include <Core/VoByteArray.h>
#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoString.h>
#include <Core/detail/Sha3Hasher.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFileSystem.h>
#include <IO/VoFileByteStream.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/files/ChunkFile.h>
#include <Updater/detail/files/FileCheck.h>
#include <Updater/detail/files/FilePatch.h>

#include <algorithm>
#include <utility>

namespace vo::updater::detail {

namespace {

// A patch that is larger than this share of the file compressed is not worth its documents.
constexpr double WorthwhileShare = 0.7;

// No chunk holds more, whatever its release says.
constexpr std::uint64_t LargestChunk = 0x7fffffff;

} // namespace

PatchMaker::PatchMaker(const AdvertisedPackageListing& package, const std::map<VoFilePath, VoFilePath>& sources,
                       const VoDirectoryPath& directory, Working working, Warn warn)
    : m_package(package)
    , m_sources(sources)
    , m_directory(directory)
    , m_working(std::move(working))
    , m_warn(std::move(warn))
    , m_patches(package.packageID(), package.versionID())
{
    for (const AdvertisedFileListing& file : package.files()) {
        for (const ChunkReferenceListing& piece : file.chunks()) {
            std::uint64_t& extent = m_extents[piece.chunkID()];
            extent = std::max(extent, piece.offset() + piece.length());
        }
    }
}

VoFilePath PatchMaker::path(const ReleasePatches::Patch& patch) const
{
    return m_directory.file(patch.id.toString() + ReleasePatches::Suffix);
}

void PatchMaker::addFrom(const VoFilePath& definition)
{
    const auto release = AdvertisedPackageListing::Open(definition);
    ValidatePackage(*release);
    const VoFilePath old = m_directory.file("before");
    for (const AdvertisedFileListing& after : m_package.files()) {
        const AdvertisedFileListing* before = release->file(after.id());
        if (!before || before->equivalent(after) || before->chunks().isEmpty() || after.chunks().isEmpty() ||
            isKnown(*before, after) || m_sources.count(after.target()) == 0)
            continue;
        m_working(after.target());
        try {
            rebuild(*release, definition.parent(), *before, old);
            make(*before, after, old);
        } catch (const VoUserCancelledException&) {
            throw;
        } catch (const VoException&) {
            m_warn("No patch for " + after.target().path() + ": " + CurrentExceptionText());
        }
    }
    VoFileSystem::Remove(old);
}

// Several releases may have a file with one content.
bool PatchMaker::isKnown(const AdvertisedFileListing& before, const AdvertisedFileListing& after) const
{
    return std::any_of(m_patches.patches.begin(), m_patches.patches.end(), [&](const ReleasePatches::Patch& patch) {
        return patch.fileID == after.id() && patch.before.isOf(before);
    });
}

// Its share of the bytes of its chunks.
std::uint64_t PatchMaker::compressedSize(const AdvertisedFileListing& file) const
{
    double size = 0;
    for (const ChunkReferenceListing& piece : file.chunks()) {
        const auto extent = static_cast<double>(std::max<std::uint64_t>(m_extents.at(piece.chunkID()), 1));
        const double share = static_cast<double>(piece.length()) / extent;
        size += share * static_cast<double>(m_package.chunk(piece.chunkID())->size().bytes());
    }
    return static_cast<std::uint64_t>(size);
}

void PatchMaker::rebuild(const AdvertisedPackageListing& release, const VoDirectoryPath& place,
                         const AdvertisedFileListing& file, const VoFilePath& to) const
{
    VoFileOutputByteStream stream(to);
    VoUUID held("");
    VoByteArray bytes;
    for (const ChunkReferenceListing& piece : file.chunks()) {
        const ChunkListing& chunk = *release.chunk(piece.chunkID());
        if (held != chunk.id())
            bytes = ReadChunk(place.appended(chunk.path()), LargestChunk);
        held = chunk.id();
        if (piece.offset() > bytes.size() || piece.length() > bytes.size() - piece.offset())
            throw VoValidationException("Piece lies outside of its chunk: " + chunk.path().path());
        stream.write(bytes.data() + piece.offset(), static_cast<std::size_t>(piece.length()));
    }
    stream.close();
    if (!IsSound(Expected(to, file)))
        throw VoValidationException("File checksum does not match for: " + file.target().path());
}

void PatchMaker::make(const AdvertisedFileListing& before, const AdvertisedFileListing& after, const VoFilePath& old)
{
    const auto sizeOf = [](const AdvertisedFileListing& file) {
        return static_cast<std::uint64_t>(file.size().bytes());
    };
    ReleasePatches::Patch patch;
    patch.id = VoUpdater::GenerateID();
    patch.fileID = after.id();
    patch.before = {sizeOf(before), before.checksum()};
    patch.after = {sizeOf(after), after.checksum()};
    const VoFilePath file = path(patch);
    MakePatch(old, m_sources.at(after.target()), file, [&] { m_working(after.target()); });
    patch.size = VoFileSystem::FileSize(file);
    if (static_cast<double>(patch.size) > WorthwhileShare * static_cast<double>(compressedSize(after))) {
        VoFileSystem::Remove(file);
        return;
    }
    vo::detail::Sha3 made;
    ApplyPatch(old, file, patch.after.size, [&](const char* bytes, std::size_t size) { made.add(bytes, size); });
    if (made.finish() != after.checksum()) // the source was changed since it was packed
        throw VoValidationException("File checksum does not match for: " + after.target().path());
    patch.checksum = VoFileSystem::Checksum(file);
    m_patches.patches.pushBack(patch);
}

} // namespace vo::updater::detail
