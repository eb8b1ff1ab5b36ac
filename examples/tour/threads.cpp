// Notifications, the wish to stop, and work on other threads.

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Threading/VoBroadcaster.h>
#include <Threading/VoParallelTaskScheduler.h>
#include <Threading/VoReceiver.h>
#include <Threading/VoStopFlag.h>
#include <Time/VoTimeDuration.h>

#include <atomic>
#include <iostream>

namespace {

void notifications()
{
    //! [notify]
    VoBroadcaster<VoString> onChanged;
    {
        const VoReceiver receiver = onChanged.connect([](const VoString& what) { std::cout << what << " changed\n"; });
        onChanged.broadcast("R1");
    } // the receiver is gone, and with it the connection: nobody is called that does not stand any more
    onChanged.broadcast("R2");
    //! [notify]
}

void parallel()
{
    //! [parallel]
    vo::background_task::VoParallelTaskScheduler scheduler; // as many threads as the machine has processors
    std::future<int> answer = scheduler.add([] { return 6 * 7; });
    std::atomic<std::size_t> sum = 0;
    scheduler.parallelFor(0, 1001, 100, [&](std::size_t first, std::size_t last) {
        std::size_t part = 0;
        for (std::size_t i = first; i < last; ++i)
            part += i;
        sum += part;
    });
    std::cout << answer.get() << ' ' << sum << '\n'; // what a task throws comes out of its future
    //! [parallel]
}

void stopping()
{
    //! [stopping]
    const VoStopFlag stop; // copies are the same flag: one for who asks, one for who works
    vo::background_task::VoParallelTaskScheduler scheduler(1);
    std::future<void> work = scheduler.add([stop] {
        for (;;) {
            stop.throwIfStopped();
            stop.waitFor(VoSeconds(1)); // ends at once when asked to
        }
    });
    stop.stop();
    try {
        work.get();
    } catch (const VoUserCancelledException& error) {
        std::cout << error.name() << '\n';
    }
    //! [stopping]
}

} // namespace

int main()
{
    notifications();
    parallel();
    stopping();
}

/* Prints:
R1 changed
42 500500
VoUserCancelledException
*/
