#include <Documents/detail/ZipOutput.h>

#include <Core/VoException.h>
#include <Threading/detail/Processors.h>
#include <Threading/detail/ThreadFactory.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace vo::detail {

namespace {

// The compressor takes and frees a quarter of a megabyte for each entry. An allocator that returns the end of its
// memory to the system at once would do that each time, and fetch it again page by page, which costs a small file as
// much as its compression; one that has seen a larger piece freed keeps as much.
void AccustomAllocator()
{
    constexpr std::size_t size = std::size_t{1} << 20;
    void* const piece = ::operator new(size);
    *static_cast<volatile char*>(piece) = 0; // so that it is not left out
    ::operator delete(piece);
}

} // namespace

ZipOutput::ZipOutput(ZipHandle archive, Threads threads)
    : m_archive(std::move(archive))
    , m_threads(threads == Threads::WhereUseful && AvailableProcessors() < 2 ? Threads::Never : threads)
{
    AccustomAllocator();
}

ZipOutput::~ZipOutput()
{
    stopThread();
}

int ZipOutput::open(const std::string& name, int level, std::uint64_t expectedSize)
{
    if (const int failed = finishEntry())
        return failed;
    m_passed = 0;
    return m_archive.open(name, level, expectedSize); // not kept: the archive is as it was, and another name may do
}

int ZipOutput::write(const char* data, std::size_t size)
{
    while (size != 0 && m_failure == ZipDone) {
        if (!m_gathered.bytes)
            m_gathered = newBlock();
        const std::size_t count = std::min(size, BlockSize - m_gathered.size);
        std::memcpy(m_gathered.bytes.get() + m_gathered.size, data, count);
        m_gathered.size += count;
        data += count;
        size -= count;
        if (m_gathered.size == BlockSize)
            m_failure = pass();
    }
    return m_failure;
}

int ZipOutput::finishEntry()
{
    if (m_gathered.size != 0 && m_failure == ZipDone)
        m_failure = pass();
    if (m_thread.joinable()) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_waiting.empty() && !m_busy; });
        if (m_failure == ZipDone)
            m_failure = m_threadFailure;
    }
    m_gathered.size = 0;
    if (m_failure == ZipDone)
        m_failure = m_archive.finishEntry();
    return m_failure;
}

int ZipOutput::close()
{
    const int written = finishEntry();
    stopThread();
    const int closed = m_archive.close();
    return written == ZipDone ? closed : written;
}

int ZipOutput::pass()
{
    // An entry of one block is done before a thread would have woken up.
    const bool first = m_passed++ == 0;
    if (!first && startThread())
        return passToThread();
    const int code = m_archive.write(m_gathered.bytes.get(), m_gathered.size);
    m_gathered.size = 0;
    return code;
}

int ZipOutput::passToThread()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_waiting.size() < MostBlocks; });
    m_waiting.push_back(std::move(m_gathered));
    m_gathered = Block();
    if (!m_spare.empty()) {
        m_gathered.bytes = std::move(m_spare.back().bytes);
        m_spare.pop_back();
    }
    const int code = m_threadFailure;
    lock.unlock();
    m_changed.notify_all();
    return code;
}

// False where there is to be none, or none can be had; then the caller compresses.
bool ZipOutput::startThread()
{
    if (m_thread.joinable())
        return true;
    if (m_threads == Threads::Never)
        return false;
    try {
        m_waiting.reserve(MostBlocks);
        m_spare.reserve(MostBlocks + 2);
        m_thread = CreateThread([this] { compress(); }, "zip");
        return true;
    } catch (const VoException&) {
        m_threads = Threads::Never;
        return false;
    }
}

void ZipOutput::stopThread()
{
    if (!m_thread.joinable())
        return;
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_changed.notify_all();
    m_thread.join();
    m_stopping = false;
}

// The thread's work: compresses what waits until there is nothing more and it is to stop. After a failure blocks are
// only taken away, so that nobody waits for ever.
void ZipOutput::compress()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_stopping || !m_waiting.empty(); });
        if (m_waiting.empty())
            return;
        Block block = std::move(m_waiting.front());
        m_waiting.erase(m_waiting.begin());
        m_busy = true;
        const bool wanted = m_threadFailure == ZipDone;
        lock.unlock();
        m_changed.notify_all();
        const int code = wanted ? m_archive.write(block.bytes.get(), block.size) : static_cast<int>(ZipDone);
        lock.lock();
        m_busy = false;
        if (wanted)
            m_threadFailure = code;
        block.size = 0;
        m_spare.push_back(std::move(block)); // has room
        m_changed.notify_all();
    }
}

ZipOutput::Block ZipOutput::newBlock()
{
    Block block;
    block.bytes.reset(new char[BlockSize]);
    return block;
}

} // namespace vo::detail
