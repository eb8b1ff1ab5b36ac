#pragma once

#include <Core/VoDeque.h>
#include <Core/VoExport.h>
#include <Core/VoString.h>
#include <Shell/VoScriptedTest.h>
#include <Threading/VoStopFlag.h>
#include <Time/VoTimeDuration.h>

#include <cstddef>
#include <cstdint>
#include <functional>

/// Runs scripted tests, each in a process of its own, several at a time.
///
/// A process is a program that carries out one script by VoScriptedTest::run() and ends with 0 when it passed; else
/// its last line on standard error says why. Its current directory and, by the environment variable VOAPPDATAPATH, its
/// application data are an empty folder that goes when it has ended. A process that takes longer than the test's limit
/// is killed.
///
///     VoScriptedTestRun run;
///     run.program = "/usr/bin/vo";
///     run.arguments = {"shell", "--test"};
///     const auto results = run.run(VoScriptedTest::Find(folder), stop);
///     VoScriptedTestRun::WriteJUnit(report, "shell", results);
struct VOCORE_EXPORT VoScriptedTestRun
{
    /// How a test ended.
    enum class Outcome : std::int32_t
    {
        Passed,   ///< As expected.
        Failed,   ///< The process ended with another code than 0, or by a fault.
        TimedOut, ///< It took longer than allowed and was killed.
        NotRun    ///< The process could not be started.
    };

    /// What became of a test.
    struct VOCORE_EXPORT Result
    {
        VoScriptedTest test;               ///< The test.
        Outcome outcome = Outcome::NotRun; ///< How it ended.
        VoString message;                  ///< Why, in a line, unless it passed.
        VoString output;                   ///< The last 64 KiB of what the process wrote.
        VoTimeDuration duration;           ///< How long it took.
    };

    VoString program;                     ///< As the system names it.
    VoDeque<VoString> arguments{};        ///< Before the script's path.
    std::size_t processes = 0;            ///< At a time; 0: as many as the machine has processors.
    VoTimeDuration limit = VoSeconds(60); ///< Of a test that names none.

    /// Runs tests.
    /// @param tests in the order in which they begin
    /// @param stop ends the processes that run
    /// @param onResult called with each result as the tests end, one call at a time, on any thread; may be empty. What
    /// it throws ends the run and passes through.
    /// @return the results, in the order of the tests
    /// @throws VoUserCancelledException when `stop` was raised
    VoDeque<Result> run(const VoDeque<VoScriptedTest>& tests, const VoStopFlag& stop,
                        const std::function<void(const Result&)>& onResult = nullptr) const;

    /// Writes results in the form of JUnit, which test servers read. Throws as VoAtomicFileWriter.
    static void WriteJUnit(const VoFilePath& file, const VoString& suite, const VoDeque<Result>& results);

    /// The name of an outcome, as "timed out".
    static const char* OutcomeText(Outcome outcome) noexcept;
};
