#include <Updater/detail/install/ChunkReader.h>

#include <Threading/VoParallelTaskScheduler.h>
#include <Threading/VoThreadException.h>
#include <Threading/detail/Processors.h>

#include <algorithm>
#include <deque>
#include <exception>
#include <future>
#include <unordered_map>
#include <utility>

namespace vo::updater::detail {

namespace {

// What is read ahead takes its compressed and its uncompressed bytes. Who takes the chunks has work of his own: one
// processor is his.
std::size_t MostAhead(std::uint64_t limit)
{
    constexpr std::uint64_t besides = std::uint64_t{16} << 20;
    return static_cast<std::size_t>(2 + besides / std::max<std::uint64_t>(limit, 1));
}

} // namespace

struct ChunkReader::Private
{
    Private(const StagingDirectory& directory, std::uint64_t mostBytes, std::vector<VoUUID> chunks, std::size_t workers)
        : staging(directory)
        , limit(mostBytes)
        , order(std::move(chunks))
        , scheduler(workers > 0 ? workers : vo::detail::AvailableProcessors())
        , mostAhead(std::min(scheduler.workers() - 1, MostAhead(limit)))
    {
        for (std::size_t i = 0; i < order.size(); ++i)
            positions.emplace(order[i], i);
    }

    void readAhead();
    void skipTo(std::size_t position);

    const StagingDirectory staging;
    const std::uint64_t limit;
    const std::vector<VoUUID> order;
    std::unordered_map<VoUUID, std::size_t> positions;
    std::size_t next = 0;                       // the first that is not asked for
    std::deque<std::future<VoByteArray>> ahead; // those before it
    background_task::VoParallelTaskScheduler scheduler;
    const std::size_t mostAhead;
};

// The step is announced here and not where the chunk is read, so that whoever observes the steps sees them on one
// thread and in one order. What he throws belongs to the chunk.
void ChunkReader::Private::readAhead()
{
    while (next < order.size() && ahead.size() < mostAhead) {
        std::promise<VoByteArray> failed;
        try {
            staging.announceReading(order[next]);
            ahead.push_back(scheduler.add([this, id = order[next]] { return staging.load(id, limit); }));
        } catch (const VoThreadException&) {
            ahead.push_back(
                std::async(std::launch::deferred, [this, id = order[next]] { return staging.load(id, limit); }));
        } catch (...) {
            failed.set_exception(std::current_exception());
            ahead.push_back(failed.get_future());
        }
        ++next;
    }
}

void ChunkReader::Private::skipTo(std::size_t position)
{
    while (!ahead.empty() && next - ahead.size() < position)
        ahead.pop_front();
    next = std::max(next, position);
}

ChunkReader::ChunkReader(const StagingDirectory& staging, std::uint64_t limit, std::vector<VoUUID> order,
                         std::size_t workers)
    : m_private(new Private(staging, limit, std::move(order), workers))
{
}

ChunkReader::~ChunkReader() = default;

VoByteArray ChunkReader::take(const VoUUID& id)
{
    Private& state = *m_private;
    const auto position = state.positions.find(id);
    const bool isAhead = position != state.positions.end() && position->second >= state.next - state.ahead.size();
    if (!isAhead || state.mostAhead == 0)
        return state.staging.read(id, state.limit);
    state.skipTo(position->second);
    state.readAhead();
    std::future<VoByteArray> chunk = std::move(state.ahead.front());
    state.ahead.pop_front();
    state.readAhead();
    return chunk.get();
}

} // namespace vo::updater::detail
