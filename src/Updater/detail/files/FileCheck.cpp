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
#include <Time/VoTimer.h>
#include <Updater/detail/files/FileStamp.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

namespace vo::updater::detail {

namespace {

using vo::detail::Sha3Batch;

// One file, and what came of it.
struct Examination
{
    ExpectedFile file;
    FileState state = FileState::Missing;
    std::exception_ptr failure{};
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

// The files of a batch, of which each worker takes the next when it can read another.
class Turns
{
public:
    // Large ones first: a file is read by one worker, and the others would wait for the last.
    explicit Turns(std::vector<Examination>& examinations)
    {
        m_order.reserve(examinations.size());
        for (Examination& examination : examinations)
            m_order.push_back(&examination);
        constexpr std::int64_t large = std::int64_t{1} << 20;
        std::stable_sort(m_order.begin(), m_order.end(), [](const Examination* a, const Examination* b) {
            return a->file.size.bytes() / large > b->file.size.bytes() / large;
        });
    }

    Examination* take()
    {
        const std::size_t turn = m_next.fetch_add(1, std::memory_order_relaxed);
        return turn < m_order.size() ? m_order[turn] : nullptr;
    }

private:
    std::vector<Examination*> m_order;
    std::atomic<std::size_t> m_next{0};
};

// One worker's files whose bytes have to decide, each opened when its turn comes.
class Reading
{
public:
    Reading(Turns& turns, Links links, const VoStopFlag& stop)
        : m_turns(turns)
        , m_links(links)
        , m_stop(stop)
    {
    }

    void run(const Sha3Batch& hash)
    {
        const auto next = [this] { return begin(); };
        const auto read = [this](std::size_t number, char* room, std::size_t size) {
            return this->read(m_files[number], room, size);
        };
        const auto done = [this](std::size_t number, const VoChecksum& digest) { finish(m_files[number], digest); };
        hash.hash(next, read, done);
    }

private:
    struct File
    {
        Examination* examination;
        vo::detail::NativeFile opened{};
        bool isBegun = false;
    };

    std::optional<std::size_t> begin()
    {
        while (Examination* const examination = m_turns.take()) {
            try {
                if (const auto state = StateBySize(examination->file, m_links)) {
                    examination->state = *state;
                    continue;
                }
                m_files.push_back({examination});
                return m_files.size() - 1;
            } catch (...) {
                examination->failure = std::current_exception();
            }
        }
        return std::nullopt;
    }

    std::size_t read(File& file, char* room, std::size_t size)
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

    Turns& m_turns;
    const Links m_links;
    const VoStopFlag& m_stop;
    std::vector<File> m_files;
};

// How much is examined before anything is told: enough to keep all workers busy, and not so much that whoever watches
// waits long for a slow disk.
class BatchSize
{
public:
    explicit BatchSize(std::size_t workers)
        : m_workers(workers)
    {
    }

    std::vector<Examination> next(std::size_t first, std::size_t count,
                                  const std::function<ExpectedFile(std::size_t)>& expected) const
    {
        std::vector<Examination> batch;
        std::int64_t bytes = 0;
        for (std::size_t i = first; i < count && batch.size() < FilesOfWorker * m_workers; ++i) {
            if (batch.size() >= m_workers && bytes >= m_bytes)
                break;
            batch.push_back({expected(i), {}, {}});
            bytes += std::clamp<std::int64_t>(batch.back().file.size.bytes(), 0, m_bytes);
        }
        return batch;
    }

    void adapt(VoTimeDuration taken)
    {
        if (taken < VoMilliseconds(250))
            m_bytes = std::min(m_bytes * 2, MostBytes);
        else if (taken > VoSeconds(1))
            m_bytes = std::max(m_bytes / 2, FewestBytes);
    }

private:
    static constexpr std::size_t FilesOfWorker = 512;
    static constexpr std::int64_t FewestBytes = std::int64_t{64} << 20;
    static constexpr std::int64_t MostBytes = std::int64_t{1} << 30;

    std::size_t m_workers;
    std::int64_t m_bytes = FewestBytes * 4;
};

} // namespace

bool HasSize(const ExpectedFile& file, Links links)
{
    return KindOf(file.path, links) == FileKind::File && file.size == VoFileSystem::FileSize(file.path);
}

FileState Examine(const ExpectedFile& file, Links links, const VoStopFlag& stop)
{
    std::vector<Examination> one = {{file, {}, {}}};
    Turns turns(one);
    Reading(turns, links, stop).run(Sha3Batch(1));
    if (one[0].failure)
        std::rethrow_exception(one[0].failure);
    return one[0].state;
}

bool IsSound(const ExpectedFile& file)
{
    return HasSize(file, Links::Kept) && VoFileSystem::Checksum(file.path) == file.checksum;
}

void ExamineAll(std::size_t count, const std::function<ExpectedFile(std::size_t)>& expected, Links links,
                const VoStopFlag& stop, const std::function<void(std::size_t, FileState)>& told)
{
    background_task::VoParallelTaskScheduler scheduler;
    BatchSize size(scheduler.workers());
    std::vector<Examination> batch;
    for (std::size_t first = 0; first < count; first += batch.size()) {
        const VoTimer timer;
        batch = size.next(first, count, expected);
        Turns turns(batch);
        const std::size_t readers = std::min(scheduler.workers(), batch.size());
        // One file is hashed faster by itself.
        const Sha3Batch hash = batch.size() > readers ? Sha3Batch() : Sha3Batch(1);
        scheduler.parallelFor(0, readers, 1, [&](std::size_t, std::size_t) { Reading(turns, links, stop).run(hash); });
        size.adapt(timer.elapsed());
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
