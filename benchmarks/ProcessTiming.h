#pragma once

#include <Core/VoException.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <sched.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

/// What one run in a process of its own took.
struct ProcessCost
{
    double processor = 0; ///< Seconds, all threads, the system's part included.
    double wall = 0;      ///< Seconds.
    long peak = 0;        ///< Kilobytes of memory.
};

/// Runs a job in a process of its own, so that its memory and its processor time are its own. A job that fails ends the
/// benchmark.
inline ProcessCost RunProcess(const std::function<void()>& job)
{
    std::fflush(stdout);
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = ::fork();
    if (child == 0) {
        try {
            job();
        } catch (const VoException& exception) {
            std::fprintf(stderr, "%s\n", exception.what());
            std::_Exit(1);
        }
        std::_Exit(0);
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || ::wait4(child, &status, 0, &usage) != child || status != 0) {
        std::fprintf(stderr, "a job failed\n");
        std::exit(1);
    }
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    return {seconds(usage.ru_utime) + seconds(usage.ru_stime), wall.count(), usage.ru_maxrss};
}

/// A job that is another program.
inline std::function<void()> Program(const std::string& command)
{
    return [command] {
        ::execl("/bin/sh", "sh", "-c", ("exec " + command).c_str(), static_cast<char*>(nullptr));
        std::_Exit(127);
    };
}

/// Keeps a job on one processor, so that it finds no use for threads.
inline std::function<void()> OnOneProcessor(std::function<void()> job)
{
    return [job = std::move(job)] {
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(::sched_getcpu(), &one);
        ::sched_setaffinity(0, sizeof one, &one);
        job();
    };
}

/// Medians of several jobs that take turns.
inline std::vector<ProcessCost> TakeTurns(const std::vector<std::function<void()>>& jobs, int repetitions)
{
    std::vector<std::vector<ProcessCost>> costs(jobs.size());
    for (int repetition = 0; repetition < repetitions; ++repetition)
        for (std::size_t i = 0; i < jobs.size(); ++i)
            costs[i].push_back(RunProcess(jobs[i]));
    const auto median = [](std::vector<ProcessCost>& all, auto member) {
        std::sort(all.begin(), all.end(),
                  [member](const ProcessCost& a, const ProcessCost& b) { return a.*member < b.*member; });
        return all[all.size() / 2].*member;
    };
    std::vector<ProcessCost> medians;
    for (auto& all : costs)
        medians.push_back(
            {median(all, &ProcessCost::processor), median(all, &ProcessCost::wall), median(all, &ProcessCost::peak)});
    return medians;
}

/// Whether a program can be run.
inline bool HasProgram(const std::string& name)
{
    return std::system(("command -v " + name + " >/dev/null 2>&1").c_str()) == 0;
}

/// A directory in memory where there is one, removed at the end.
class BenchmarkFolder
{
public:
    BenchmarkFolder()
    {
        std::string name = (::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + std::string("/vocore-XXXXXX");
        m_path = ::mkdtemp(name.data()) ? name : std::string();
        if (m_path.empty())
            std::exit(1);
    }
    BenchmarkFolder(const BenchmarkFolder&) = delete;
    BenchmarkFolder& operator=(const BenchmarkFolder&) = delete;
    ~BenchmarkFolder() { std::system(("rm -rf '" + m_path + "'").c_str()) == 0 ? void() : std::perror("rm"); }

    std::string operator/(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};
