#include <VoTestSupport.h>

#include <Subsystem/VoLogging.h>
#include <Threading/VoThread.h>
#include <Threading/VoThreadException.h>
#include <Threading/detail/ThreadFactory.h>

#include <future>

namespace {

VoThread Start(std::function<void()> function)
{
    return vo::detail::CreateThread(std::move(function), "test");
}

} // namespace

TEST(VoThread, AnEmptyHandleCanBeNeitherJoinedNorDetached)
{
    VoThread thread;
    EXPECT_FALSE(thread.joinable());
    EXPECT_EQ(std::thread::id(), thread.id());
    EXPECT_THROW_MSG(thread.join(), VoJoinThreadException, "Invalid thread join call");
    EXPECT_THROW_MSG(thread.detach(), VoDetachThreadException, "Invalid thread detach call");
}

TEST(VoThread, IsJoinedOnceAndMovesWithItsThread)
{
    std::thread::id inside;
    VoThread thread = Start([&] { inside = std::this_thread::get_id(); });
    const std::thread::id id = thread.id();
    VoThread moved(std::move(thread));
    EXPECT_FALSE(thread.joinable());
    moved.join();
    EXPECT_EQ(id, inside);
    EXPECT_THROW_MSG(moved.join(), VoJoinThreadException, "Invalid thread join call");
    EXPECT_THROW_MSG(moved.detach(), VoDetachThreadException, "Invalid thread detach call");
}

TEST(VoThread, IsDetachedOnce)
{
    const auto done = std::make_shared<std::promise<void>>(); // the thread may outlive this test by an instant
    std::future<void> ended = done->get_future();
    VoThread thread = Start([done] { done->set_value(); });
    thread.detach();
    EXPECT_THROW_MSG(thread.detach(), VoDetachThreadException, "Invalid thread detach call");
    ended.wait();
}

TEST(VoThread, CannotJoinItself)
{
    std::promise<VoThread*> handle;
    VoThread thread = Start([future = std::make_shared<std::future<VoThread*>>(handle.get_future())] {
        EXPECT_THROW(future->get()->join(), VoJoinThreadException);
    });
    handle.set_value(&thread);
    thread.join();
}

TEST(VoThreadDeathTest, AJoinableHandleThatEndsTakesTheProcessWithIt)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    vo::logging::EnableStandardError();
    EXPECT_DEATH({ VoThread thread = Start([] {}); }, "Thread destroyed whilst still running");
    EXPECT_DEATH(
        {
            VoThread thread = Start([] {});
            thread = VoThread();
        },
        "Thread destroyed whilst still running");
    vo::logging::DisableStandardError();
}
