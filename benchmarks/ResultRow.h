#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

/// A row of the harness's tables, for programs that measure by themselves (harness.py tells the format).
struct ResultRow
{
    std::string job;         ///< What is done.
    std::string ours;        ///< Our figure with its unit.
    std::string floor = "-"; ///< That of the raw dependency.
    std::string peer = "-";  ///< That of another library, with its name.
    double ratio = 0;        ///< What the goal is about; 0: not measured.
    double atLeast = 0;      ///< The goal, when there is a least ratio.
    double atMost = 0;       ///< The goal, when there is a greatest one.
};

/// Prints a row. One without a goal is for information.
inline void PrintRow(const ResultRow& row)
{
    const auto number = [](double value) {
        char text[32];
        std::snprintf(text, sizeof text, "%.3g", value);
        return std::string(text);
    };
    const bool hasGoal = row.atLeast > 0 || row.atMost > 0;
    const bool isMet = row.atLeast > 0 ? row.ratio >= row.atLeast : row.ratio <= row.atMost;
    const std::string goal = !hasGoal          ? "-"
                             : row.atLeast > 0 ? ">= " + number(row.atLeast)
                                               : "<= " + number(row.atMost);
    const char* met = !hasGoal ? "-" : row.ratio <= 0 ? "not measured" : isMet ? "yes" : "no";
    std::printf("row|%s|%s|%s|%s|%s|%s|%s\n", row.job.c_str(), row.ours.c_str(), row.floor.c_str(), row.peer.c_str(),
                row.ratio > 0 ? number(row.ratio).c_str() : "-", goal.c_str(), met);
    std::fflush(stdout);
}

/// A time for a row.
inline std::string Milliseconds(double seconds)
{
    char text[32];
    std::snprintf(text, sizeof text, seconds < 1e-3 ? "%.4f ms" : "%.3g ms", seconds * 1e3);
    return text;
}

/// Whether only a trial run is wanted.
inline bool IsSmokeRun()
{
    return std::getenv("VOCORE_SMOKE") != nullptr;
}

/// Whether two cores were found free, so that wall times of parallel work mean something.
inline bool HasTwoFreeCores()
{
    const char* cores = std::getenv("VOCORE_FREE_CORES");
    return cores && std::atoi(cores) >= 2;
}
