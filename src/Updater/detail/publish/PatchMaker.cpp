#include <Updater/detail/publish/PatchMaker.h>

#include <Core/VoByteArray.h>
#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoString.h>
#include <Core/detail/Sha3Hasher.h>
#include <Download/VoDownloadSize.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoFileByteStream.h>
#include <Threading/VoParallelTaskScheduler.h>
#include <Updater/VoUpdater.h>
#include <Updater/detail/documents/PackageValidator.h>
#include <Updater/detail/files/ChunkFile.h>
#include <Updater/detail/files/FileCheck.h>
#include <Updater/detail/files/FilePatch.h>

#include <QtCore/QScopeGuard>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <memory>
#include <mutex>
#include <system_error>
#include <utility>

namespace vo::updater::detail {

namespace {

// A patch that is larger than this share of the file compressed is not worth its documents.
constexpr double WorthwhileShare = 0.7;

// No patch is smaller.
constexpr double SmallestPatch = 40;

// More would make a document that nobody reads.
constexpr std::size_t MostPatches = 32'768;

// No chunk holds more, whatever its release says.
constexpr std::uint64_t LargestChunk = 0x7fffffff;

// Files that patches are made of at the same time, together: each byte takes about five of memory.
constexpr std::uint64_t BytesTogether = std::uint64_t{64} << 20;

std::uint64_t SizeOf(const AdvertisedFileListing& file)
{
    return static_cast<std::uint64_t>(file.size().bytes());
}

} // namespace

// The chunks of an earlier release, as the threads need them. Many small files lie in one.
class PatchMaker::OldChunks
{
public:
    explicit OldChunks(const VoDirectoryPath& place)
        : m_place(place)
    {
    }

    std::shared_ptr<const VoByteArray> read(const ChunkListing& chunk)
    {
        const std::lock_guard lock(m_mutex);
        const auto found =
            std::find_if(m_held.begin(), m_held.end(), [&](const auto& held) { return held.first == chunk.id(); });
        if (found != m_held.end())
            return found->second;
        if (m_held.size() == MostHeld)
            m_held.pop_front();
        m_held.emplace_back(
            chunk.id(), std::make_shared<const VoByteArray>(ReadChunk(m_place.appended(chunk.path()), LargestChunk)));
        return m_held.back().second;
    }

private:
    static constexpr std::size_t MostHeld = 4;

    const VoDirectoryPath m_place;
    std::mutex m_mutex;
    std::deque<std::pair<VoUUID, std::shared_ptr<const VoByteArray>>> m_held;
};

struct PatchMaker::Job
{
    const AdvertisedFileListing* before;
    const AdvertisedFileListing* after;
    std::optional<ReleasePatches::Patch> patch{}; // none: not worth it, or not to be had
    VoString failure{};

    std::uint64_t bytes() const
    {
        constexpr PatchWindow window;
        return std::min(SizeOf(*before), window.old) + std::min(SizeOf(*after), window.made);
    }
};

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
    OldChunks chunks(definition.parent());
    background_task::VoParallelTaskScheduler scheduler;
    std::vector<Job> jobs = jobsOf(*release);
    for (std::size_t first = 0; first < jobs.size();) {
        std::size_t last = first;
        for (std::uint64_t bytes = 0; last < jobs.size() && last - first < 4 * scheduler.workers(); ++last) {
            bytes += jobs[last].bytes();
            if (last > first && bytes > BytesTogether)
                break;
            m_working(jobs[last].after->target());
        }
        const auto work = [&](Job& job, const std::function<void()>& between) { run(job, *release, chunks, between); };
        // What takes long is done on this thread, where it can be given up.
        if (last - first == 1)
            work(jobs[first], [&] { m_working(jobs[first].after->target()); });
        else
            scheduler.parallelFor(first, last, 1, [&](std::size_t i, std::size_t) { work(jobs[i], [] {}); });
        for (; first < last; ++first)
            take(jobs[first]);
    }
}

std::vector<PatchMaker::Job> PatchMaker::jobsOf(const AdvertisedPackageListing& release) const
{
    std::vector<Job> jobs;
    for (const AdvertisedFileListing& after : m_package.files()) {
        if (m_patches.patches.size() + jobs.size() == MostPatches) {
            m_warn("No more than " + VoString(MostPatches) + " patches are made");
            break;
        }
        const AdvertisedFileListing* before = release.file(after.id());
        const bool isOne = before && !before->equivalent(after) && SizeOf(*before) > 0 && !isKnown(*before, after) &&
                           m_sources.count(after.target()) > 0 &&
                           WorthwhileShare * static_cast<double>(compressedSize(after)) > SmallestPatch;
        if (isOne)
            jobs.push_back({before, &after});
    }
    return jobs;
}

void PatchMaker::take(const Job& job)
{
    if (job.patch) {
        m_known.emplace(job.patch->fileID, job.patch->before);
        m_patches.patches.pushBack(*job.patch);
    }
    if (!job.failure.isEmpty())
        m_warn("No patch for " + job.after->target().path() + ": " + job.failure);
}

// Several releases may have a file with one content.
bool PatchMaker::isKnown(const AdvertisedFileListing& before, const AdvertisedFileListing& after) const
{
    const auto [first, last] = m_known.equal_range(after.id());
    return std::any_of(first, last, [&](const auto& known) { return known.second.isOf(before); });
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

// On any thread; nothing of the maker is changed.
void PatchMaker::run(Job& job, const AdvertisedPackageListing& release, OldChunks& chunks,
                     const std::function<void()>& between) const
{
    const VoUUID id = VoUpdater::GenerateID();
    const VoFilePath old = m_directory.file(id.toString() + ".before");
    const auto erase = qScopeGuard([&old] {
        std::error_code ignored; // the directory goes, too
        std::filesystem::remove(vo::detail::ToNative(old), ignored);
    });
    try {
        rebuild(release, chunks, *job.before, old);
        job.patch = make(id, job, old, between);
    } catch (const VoUserCancelledException&) {
        throw;
    } catch (const VoException&) {
        job.failure = CurrentExceptionText();
    }
}

void PatchMaker::rebuild(const AdvertisedPackageListing& release, OldChunks& chunks, const AdvertisedFileListing& file,
                         const VoFilePath& to)
{
    VoFileOutputByteStream stream(to);
    for (const ChunkReferenceListing& piece : file.chunks()) {
        const ChunkListing& chunk = *release.chunk(piece.chunkID());
        const std::shared_ptr<const VoByteArray> bytes = chunks.read(chunk);
        if (piece.offset() > bytes->size() || piece.length() > bytes->size() - piece.offset())
            throw VoValidationException("Piece lies outside of its chunk: " + chunk.path().path());
        stream.write(bytes->data() + piece.offset(), static_cast<std::size_t>(piece.length()));
    }
    stream.close();
    if (!IsSound(Expected(to, file)))
        throw VoValidationException("File checksum does not match for: " + file.target().path());
}

// None for a patch that is not worth it.
std::optional<ReleasePatches::Patch> PatchMaker::make(const VoUUID& id, const Job& job, const VoFilePath& old,
                                                      const std::function<void()>& between) const
{
    const AdvertisedFileListing& after = *job.after;
    ReleasePatches::Patch patch;
    patch.id = id;
    patch.fileID = after.id();
    patch.before = {SizeOf(*job.before), job.before->checksum()};
    patch.after = {SizeOf(after), after.checksum()};
    const VoFilePath file = path(patch);
    const auto mostBytes = static_cast<std::uint64_t>(WorthwhileShare * static_cast<double>(compressedSize(after)));
    if (!MakePatch(old, m_sources.at(after.target()), file, between, PatchWindow(), mostBytes))
        return std::nullopt;
    patch.size = VoFileSystem::FileSize(file);
    if (patch.size > mostBytes) {
        VoFileSystem::Remove(file);
        return std::nullopt;
    }
    vo::detail::Sha3 made;
    ApplyPatch(old, file, patch.after.size, [&](const char* bytes, std::size_t size) { made.add(bytes, size); });
    if (made.finish() != after.checksum()) // the source was changed since it was packed
        throw VoValidationException("File checksum does not match for: " + after.target().path());
    patch.checksum = VoFileSystem::Checksum(file);
    return patch;
}

} // namespace vo::updater::detail
