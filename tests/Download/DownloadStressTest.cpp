#include "RunService.h"

#include <LogCapture.h>
#include <ScratchFolder.h>
#include <ScriptedHttpServer.h>
#include <VoTestSupport.h>

#include <Core/VoPair.h>
#include <Core/VoSharedPtr.h>
#include <Core/VoUUID.h>
#include <Download/VoDownloadException.h>
#include <Download/VoDownloadManager.h>
#include <Download/VoDownloadNotification.h>
#include <Download/VoDownloadRequest.h>
#include <Download/VoGroupedDownloadRequest.h>
#include <FileSystem/VoUrl.h>
#include <Threading/VoReceiver.h>
#include <Threading/VoStopFlag.h>

using vo::test::ScriptedAnswer;

// Eight threads request, wait, cancel, stop, connect and drop receivers at once. What each of them must see holds
// whatever the order: every download ends exactly once, and nobody waits for ever.
TEST(DownloadStress, ManyThreadsMayDoEverythingAtOnce)
{
    constexpr int threadCount = 8;
    constexpr int rounds = 12;
    const vo::test::LogCapture quiet;
    const vo::test::ScratchFolder folder;
    vo::test::ScriptedHttpServer server;
    server.get("/file", ScriptedAnswer::Body(std::string(20000, 'x')));

    std::map<std::string, int> ends; // by id; only the service's thread writes
    const VoReceiver all = VoDownloadManager::Connect([&](const VoSharedPtr<VoDownloadNotification>& notification) {
        if (notification->type() == VoDownloadNotification::Complete ||
            notification->type() == VoDownloadNotification::Failed)
            ++ends[notification->id().toString().toStdString()];
    });

    std::atomic<int> running{threadCount};
    std::atomic<int> outcomes{0};
    const auto work = [&](int thread) {
        const VoUrl url(VoString(server.url("/file")));
        for (int round = 0; round < rounds; ++round) {
            const std::string name = std::to_string(thread) + "-" + std::to_string(round);
            const VoReceiver receiver = VoDownloadManager::Connect([](const auto&) {});
            try {
                switch ((thread + round) % 4) {
                case 0:
                    VoDownloadManager::RequestWait(url, folder.path(name));
                    break;
                case 1: {
                    const auto request = VoSharedPtr<VoDownloadRequest>::Make(url, folder.path(name));
                    std::future<void> future = VoDownloadManager::RequestFuture(request, [](const auto&) {});
                    VoDownloadManager::CancelDownload(request->id());
                    future.get();
                    break;
                }
                case 2: {
                    const auto group = VoSharedPtr<VoGroupedDownloadRequest>::Make();
                    for (int i = 0; i < 3; ++i)
                        group->add(url, folder.path(name + "-" + std::to_string(i)));
                    const VoStopFlag stop;
                    // Raised by the first sign of life, so in the middle.
                    VoDownloadManager::RequestWait(group, stop, [stop](const auto&) { stop.stop(); });
                    break;
                }
                default: {
                    const auto request = VoSharedPtr<VoDownloadRequest>::Make(url, folder.path(name));
                    {
                        const auto dropped = VoDownloadManager::RequestDownload(request, [](const auto&) {});
                    }
                    VoDownloadManager::RequestWait(url, folder.path(name + "b"));
                }
                }
                ++outcomes;
            } catch (const VoDownloadException& e) {
                EXPECT_TRUE(e.isCancelled()) << e.what();
                ++outcomes;
            }
        }
        --running;
    };
    vo::test::Threads threads(threadCount, work);
    vo::test::RunServiceUntil([&] { return running == 0; });
    threads.join();
    // A last one behind all requests that nobody waited for.
    VoDownloadManager::RequestWait(VoUrl(VoString(server.url("/file"))), folder.path("last"));

    EXPECT_EQ(outcomes, threadCount * rounds);
    EXPECT_GE(ends.size(), static_cast<std::size_t>(threadCount * rounds));
    for (const auto& [id, times] : ends)
        EXPECT_EQ(times, 1) << id;
}
