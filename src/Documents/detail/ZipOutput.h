#pragma once

#include <Documents/detail/MiniZip.h>
#include <Threading/VoThread.h>

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace vo::detail {

/// The writing side of an archive. Bytes are gathered in blocks before they are compressed; from the second block of an
/// entry on, a thread compresses while the caller makes the next one, where that helps. The blocks, and so the
/// archive's bytes, are the same with and without it.
///
/// The first failure is kept: it is the result of every later call.
class VOCORE_PRIVATE_EXPORT ZipOutput
{
public:
    enum class Threads
    {
        WhereUseful, ///< When the process may use a second processor.
        Never,
        Always
    };

    explicit ZipOutput(ZipHandle archive, Threads threads = Threads::WhereUseful);
    ZipOutput(const ZipOutput&) = delete;
    ZipOutput& operator=(const ZipOutput&) = delete;
    ~ZipOutput();

    /// Ends the entry before and begins a new one. Call finishEntry() first to tell the two failures apart. What is
    /// expected is a hint, see ZipHandle.
    int open(const std::string& name, int level, std::uint64_t expectedSize = 0);
    int write(const char* data, std::size_t size);
    int finishEntry(); ///< Hands over what is gathered, waits until it is compressed, and completes the entry.
    int close();
    std::error_code error() const noexcept { return m_archive.error(); } ///< As ZipHandle::error().

private:
    static constexpr std::size_t BlockSize = std::size_t{64} * 1024;
    static constexpr std::size_t MostBlocks = 16; ///< Waiting for the thread; more make the caller wait.

    struct Block
    {
        std::unique_ptr<char[]> bytes;
        std::size_t size = 0;
    };

    int pass();
    int passToThread();
    bool startThread();
    void stopThread();
    void compress();
    Block newBlock();

    ZipHandle m_archive; // while blocks wait, the thread's
    Threads m_threads;
    Block m_gathered;
    std::size_t m_passed = 0; // blocks of the open entry
    int m_failure = ZipDone;

    std::mutex m_mutex; // guards what follows
    std::condition_variable m_changed;
    std::vector<Block> m_waiting; // oldest first
    std::vector<Block> m_spare;
    bool m_busy = false;
    bool m_stopping = false;
    int m_threadFailure = ZipDone;
    VoThread m_thread; // the caller's
};

} // namespace vo::detail
