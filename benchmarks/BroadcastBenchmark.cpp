#include <Core/VoSharedPtr.h>
#include <Threading/VoBroadcaster.h>

#include <QtCore/QObject>

#include <benchmark/benchmark.h>

#if __has_include(<boost/signals2.hpp>)
#include <boost/signals2.hpp>
#endif

#include <cstdint>
#include <vector>

/// @file
/// VoBroadcaster beside Qt's signals with functors connected directly, and beside Boost's where that is installed. The
/// argument is the number of receivers.

/// What signals.
class Signaller : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    void changed(int value);
    void replaced(const VoSharedPtr<int>& value);
};

namespace {

template <typename T>
void Broadcast(benchmark::State& state, T value)
{
    VoBroadcaster<T> broadcaster;
    std::vector<VoReceiver> receivers;
    std::int64_t calls = 0;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        receivers.push_back(broadcaster.connect([&calls](T) { ++calls; }));
    for (auto _ : state)
        broadcaster.broadcast(value);
    state.SetItemsProcessed(calls);
}

void BroadcastInt(benchmark::State& state)
{
    Broadcast<int>(state, 5);
}

void BroadcastSharedPtr(benchmark::State& state)
{
    Broadcast<VoSharedPtr<int>>(state, VoSharedPtr<int>::Make(5));
}

template <typename Signal, typename T>
void Emit(benchmark::State& state, Signal signal, T value)
{
    Signaller signaller;
    std::int64_t calls = 0;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        QObject::connect(&signaller, signal, [&calls](T) { ++calls; });
    for (auto _ : state)
        Q_EMIT(signaller.*signal)(value);
    state.SetItemsProcessed(calls);
}

void SignalInt(benchmark::State& state)
{
    Emit(state, &Signaller::changed, 5);
}

void SignalSharedPtr(benchmark::State& state)
{
    Emit(state, &Signaller::replaced, VoSharedPtr<int>::Make(5));
}

#if __has_include(<boost/signals2.hpp>)
template <typename T>
void BoostSignal(benchmark::State& state, T value)
{
    boost::signals2::signal<void(T)> signal;
    std::int64_t calls = 0;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        signal.connect([&calls](T) { ++calls; });
    for (auto _ : state)
        signal(value);
    state.SetItemsProcessed(calls);
}

void BoostInt(benchmark::State& state)
{
    BoostSignal<int>(state, 5);
}

void BoostSharedPtr(benchmark::State& state)
{
    BoostSignal<VoSharedPtr<int>>(state, VoSharedPtr<int>::Make(5));
}

BENCHMARK(BoostInt)->Arg(10)->Arg(100);
BENCHMARK(BoostSharedPtr)->Arg(10)->Arg(100);
#endif

} // namespace

BENCHMARK(BroadcastInt)->Arg(0)->Arg(1)->Arg(10)->Arg(100);
BENCHMARK(SignalInt)->Arg(0)->Arg(1)->Arg(10)->Arg(100);
BENCHMARK(BroadcastSharedPtr)->Arg(10)->Arg(100);
BENCHMARK(SignalSharedPtr)->Arg(10)->Arg(100);

#include "BroadcastBenchmark.moc"
