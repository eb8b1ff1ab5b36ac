#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <optional>
#include <thread>

namespace vo::test {

/// Ends what `connect` made of a callback while that callback, made to run by `call`, does so on another thread:
/// expects that the end waits for it.
template <typename Connect, typename Call>
void ExpectEndWaitsForCallback(const Connect& connect, const Call& call)
{
    std::promise<void> entered;
    std::promise<void> leave;
    std::atomic<bool> left{false};
    std::optional connection(connect([&] {
        entered.set_value();
        leave.get_future().wait();
        left = true;
    }));
    std::thread caller(call);
    entered.get_future().wait();
    std::thread dropper([&] {
        connection.reset();
        EXPECT_TRUE(left);
    });
    leave.set_value();
    caller.join();
    dropper.join();
}

} // namespace vo::test
