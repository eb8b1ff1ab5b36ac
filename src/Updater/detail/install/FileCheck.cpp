#include <Updater/detail/install/FileCheck.h>

#include <Core/VoFileException.h>
#include <Core/VoString.h>
#include <Core/detail/Sha3Hasher.h>
#include <FileSystem/VoFileSystem.h>
#include <FileSystem/detail/NativeFile.h>
#include <FileSystem/detail/NativePath.h>
#include <IO/VoFileByteStream.h>
#include <Threading/VoParallelTaskScheduler.h>
#include <Threading/VoStopFlag.h>
#include <Updater/detail/install/EventReport.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <memory>
#include <system_error>
#include <vector>

namespace vo::updater::detail {

namespace {

FileState Read(const ExpectedFile& file, const VoStopFlag& stop)
{
    constexpr std::size_t blockSize = 64 * 1024; // larger ones are fetched from the system for each file
    std::error_code error;
    vo::detail::NativeFile opened = vo::detail::NativeFile::OpenForReading(vo::detail::ToNative(file.path), error);
    if (error)
        return FileState::Unreadable;
    const std::unique_ptr<char[]> block(new char[blockSize]);
    vo::detail::Sha3 digest;
    while (const std::size_t count = opened.read(block.get(), blockSize, error)) {
        stop.throwIfStopped();
        digest.add(block.get(), count);
    }
    if (error)
        return FileState::Unreadable;
    return digest.finish() == file.checksum ? FileState::Sound : FileState::Changed;
}

// One file, and what came of it.
struct Examination
{
    ExpectedFile file;
    FileState state = FileState::Missing;
    std::exception_ptr failure{};

    void run(Links links, const VoStopFlag& stop) noexcept
    {
        try {
            state = Examine(file, links, stop);
        } catch (...) {
            failure = std::current_exception();
        }
    }
};

// Enough files to keep all workers busy, and no more bytes than are read while a progress line may stand still.
std::vector<Examination> NextBatch(std::size_t first, std::size_t count,
                                   const std::function<ExpectedFile(std::size_t)>& expected, std::size_t workers)
{
    constexpr std::int64_t enoughBytes = std::int64_t{64} << 20;
    std::vector<Examination> batch;
    std::int64_t bytes = 0;
    for (std::size_t i = first; i < count && batch.size() < 32 * workers; ++i) {
        if (batch.size() >= workers && bytes >= enoughBytes)
            break;
        batch.push_back({expected(i)});
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
    const FileKind kind = KindOf(file.path, links);
    if (kind == FileKind::None)
        return FileState::Missing;
    const bool mayBe = kind == FileKind::File && file.size == VoFileSystem::FileSize(file.path);
    return mayBe ? Read(file, stop) : FileState::Changed;
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
        scheduler.parallelFor(0, batch.size(), 1, [&](std::size_t begin, std::size_t end) {
            for (std::size_t i = begin; i < end; ++i)
                batch[i].run(links, stop);
        });
        for (std::size_t i = 0; i < batch.size(); ++i) {
            stop.throwIfStopped();
            if (batch[i].failure)
                std::rethrow_exception(batch[i].failure);
            told(first + i, batch[i].state);
        }
    }
}

VoDeque<FileFinding> VerifyFiles(std::size_t count, const std::function<ExpectedFile(std::size_t)>& expected,
                                 const EventReport& report, const VoStopFlag& stop)
{
    VoDeque<FileFinding> findings;
    report.report(AbstractMessage::VerificationStarted, "Starting installation verification");
    ExamineAll(count, expected, Links::Followed, stop, [&](std::size_t number, FileState state) {
        if (state != FileState::Sound) {
            const VoString path = expected(number).path.path();
            if (state == FileState::Missing)
                report.report(AbstractMessage::FileMissing, "File missing: " + path, "File missing " + path);
            else
                report.report(AbstractMessage::FileMismatch, "File checksum mismatch: " + path);
            findings.pushBack({number, state});
        }
        report.send<VerificationProgressMessage>(number + 1, count);
    });
    return findings;
}

void ReportVerified(bool isIntact, const EventReport& report)
{
    if (isIntact)
        report.report(AbstractMessage::VerificationSuccess, "Installation verification success");
    else
        report.report(AbstractMessage::VerificationFailed, "Installation verification failed");
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
