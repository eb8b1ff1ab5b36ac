#pragma once

#include <thread>
#include <type_traits>
#include <vector>

namespace vo::test {

/// Threads that do the same work, which is given the number of its thread if it takes one; joined when they are
/// destroyed at the latest.
class Threads
{
public:
    template <typename Count, typename Work>
    Threads(Count count, const Work& work)
    {
        for (Count i{}; i < count; ++i)
            m_threads.emplace_back([work, i] {
                if constexpr (std::is_invocable_v<const Work&, Count>)
                    work(i);
                else
                    work();
            });
    }

    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;
    ~Threads() { join(); }

    void join()
    {
        for (std::thread& thread : m_threads)
            thread.join();
        m_threads.clear();
    }

private:
    std::vector<std::thread> m_threads;
};

} // namespace vo::test
