#pragma once

#include <algorithm>
#include <ctime>
#include <functional>
#include <vector>

/// Processor time of several ways to do a job, taken in turns so that all meet the same disturbances.
///
/// @return for each way, the median of the seconds that one run took
inline std::vector<double> InterleavedTiming(const std::vector<std::function<void()>>& ways, int repetitions = 7,
                                             double secondsEach = 0.05)
{
    const auto seconds = [](const std::function<void()>& way, int runs) {
        const std::clock_t start = std::clock();
        for (int i = 0; i < runs; ++i)
            way();
        return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    };
    std::vector<int> runs;
    for (const auto& way : ways) {
        int count = 1;
        while (seconds(way, count) < secondsEach)
            count *= 2;
        runs.push_back(count);
    }
    std::vector<std::vector<double>> times(ways.size());
    for (int repetition = 0; repetition < repetitions; ++repetition)
        for (std::size_t i = 0; i < ways.size(); ++i)
            times[i].push_back(seconds(ways[i], runs[i]) / runs[i]);
    std::vector<double> medians;
    for (auto& each : times) {
        std::nth_element(each.begin(), each.begin() + repetitions / 2, each.end());
        medians.push_back(each[static_cast<std::size_t>(repetitions / 2)]);
    }
    return medians;
}
