#include <Updater/detail/files/FileCheck.h>

#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/detail/Sha3Batch.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativeFile.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoFileByteStream.h>
#include <Threading/VoParallelTaskScheduler.h>
#include <Threading/VoStopFlag.h>
#include <Updater/detail/files/FileStamp.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

namespace vo::updater::detail {

namespace {

// One file, and what came of it.
struct Examination
{
    ExpectedFile file;
    FileState state = FileState::Missing;
    std::exception_ptr failure{};
};

// Files whose bytes have to decide, each opened when its turn comes.
class Reading
{
public:
    Reading(const VoStopFlag& stop, std::size_t count)
        : m_stop(stop)
    {
        m_files.reserve(count);
    }

    void add(Examination& examination) { m_files.push_back({&examination, {}, false}); }

    void run()
    {
        const auto read = [this](std::size_t number, char* room, std::size_t size) {
            return next(m_files[number], room, size);
        };
        const auto done = [this](std::size_t number, const VoChecksum& digest) { finish(m_files[number], digest); };
        vo::detail::Sha3Batch().hash(m_files.size(), read, done);
    }

private:
    struct File
    {
        Examination* examination;
        vo::detail::NativeFile opened;
        bool isBegun;
    };

    std::size_t next(File& file, char* room, std::size_t size)
    {
        m_stop.throwIfStopped();
        std::error_code error;
        if (!std::exchange(file.isBegun, true)) {
            file.examination->state = FileState::Changed; // until its digest is known
            file.opened =
                vo::detail::NativeFile::OpenForReading(vo::detail::ToNative(file.examination->file.path), error);
        }
        const std::size_t count = error ? 0 : file.opened.read(room, size, error);
        if (error)
            file.examination->state = FileState::Unreadable;
        return count;
    }

    static void finish(File& file, const VoChecksum& digest)
    {
        FileState& state = file.examination->state;
        if (state == FileState::Changed && digest == file.examination->file.checksum)
            state = FileState::Sound;
        file.opened = {};
    }

    const VoStopFlag& m_stop;
    std::vector<File> m_files;
};

// What can be said of a file without reading it; nothing when its bytes have to decide.
std::optional<FileState> StateBySize(const ExpectedFile& file, Links links)
{
    if (const auto stamp = StampOf(file.path)) // one look, and no link that could be followed
        return file.size == stamp->size ? std::nullopt : std::make_optional(FileState::Changed);
    const FileKind kind = KindOf(file.path, links);
    if (kind == FileKind::None)
        return FileState::Missing;
    if (kind == FileKind::File && file.size == VoFileSystem::FileSize(file.path))
        return std::nullopt;
    return FileState::Changed;
}

void ExamineTogether(Examination* first, std::size_t count, Links links, const VoStopFlag& stop)
{
    Reading reading(stop, count);
    for (Examination* examination = first; examination != first + count; ++examination) {
        try {
            if (const auto state = StateBySize(examination->file, links))
                examination->state = *state;
            else
                reading.add(*examination);
        } catch (...) {
            examination->failure = std::current_exception();
        }
    }
    reading.run();
}

// How many files are handed to a worker: some for each lane of the hash.
constexpr std::size_t FilesTogether = 32;

// Enough files to keep all workers busy, and no more bytes than are read while a progress line may stand still.
std::vector<Examination> NextBatch(std::size_t first, std::size_t count,
                                   const std::function<ExpectedFile(std::size_t)>& expected, std::size_t workers)
{
    constexpr std::int64_t enoughBytes = std::int64_t{64} << 20;
    std::vector<Examination> batch;
    std::int64_t bytes = 0;
    for (std::size_t i = first; i < count && batch.size() < 4 * FilesTogether * workers; ++i) {
        if (batch.size() >= workers && bytes >= enoughBytes)
            break;
        batch.push_back({expected(i), {}, {}});
        bytes += std::clamp<std::int64_t>(batch.back().file.size.bytes(), 0, enoughBytes);
    }
    return batch;
}

} // namespace

bool HasSize(const ExpectedFile& file, Links links)
{
    return KindOf(file.path, links) == FileKind::File && file.size == VoFileSystem::FileSize(file.path);
}

FileState Examine(const ExpectedFile& file, Links links, const VoStopFlag& stop)
{
    Examination examination{file, {}, {}};
    ExamineTogether(&examination, 1, links, stop);
    if (examination.failure)
        std::rethrow_exception(examination.failure);
    return examination.state;
}

bool IsSound(const ExpectedFile& file)
{
    return HasSize(file, Links::Kept) && VoFileSystem::Checksum(file.path) == file.checksum;
}

void ExamineAll(std::size_t count, const std::function<ExpectedFile(std::size_t)>& expected, Links links,
                const VoStopFlag& stop, const std::function<void(std::size_t, FileState)>& told)
{
    background_task::VoParallelTaskScheduler scheduler;
    std::vector<Examination> batch;
    for (std::size_t first = 0; first < count; first += batch.size()) {
        batch = NextBatch(first, count, expected, scheduler.workers());
        const std::size_t share =
            (batch.size() + scheduler.workers() - 1) / scheduler.workers(); // a few large files go to different workers
        scheduler.parallelFor(0, batch.size(), std::min(share, FilesTogether), [&](std::size_t begin, std::size_t end) {
            ExamineTogether(&batch[begin], end - begin, links, stop);
        });
        for (std::size_t i = 0; i < batch.size(); ++i) {
            stop.throwIfStopped();
            if (batch[i].failure)
                std::rethrow_exception(batch[i].failure);
            told(first + i, batch[i].state);
        }
    }
}

bool HaveSameContent(const VoFilePath& a, const VoFilePath& b)
{
    if (VoFileSystem::FileSize(a) != VoFileSystem::FileSize(b))
        return false;
    constexpr std::size_t blockSize = 256 * 1024;
    std::vector<char> blockA(blockSize);
    std::vector<char> blockB(blockSize);
    VoFileInputByteStream streamA(a);
    VoFileInputByteStream streamB(b);
    for (;;) {
        const std::size_t countA = streamA.read(blockA.data(), blockSize);
        const std::size_t countB = streamB.read(blockB.data(), blockSize);
        if (countA != countB ||
            !std::equal(blockA.begin(), blockA.begin() + static_cast<std::ptrdiff_t>(countA), blockB.begin()))
            return false;
        if (countA < blockSize)
            return true;
    }
}

} // namespace vo::updater::detail
