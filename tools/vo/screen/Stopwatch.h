#pragma once

#include <chrono>

namespace vo::tool {

/// How long something takes, by a clock that is never set.
class Stopwatch
{
public:
    double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count(); }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

} // namespace vo::tool
