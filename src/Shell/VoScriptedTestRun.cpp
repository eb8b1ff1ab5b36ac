#include <Shell/VoScriptedTestRun.h>

#include <Core/VoException.h>
#include <Core/VoExceptionText.h>
#include <Core/VoPrintable.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoDirectoryPath.h>
#include <FileSystem/VoTemporaryDir.h>
#include <FileSystem/detail/NativePath.h>
#include <Threading/detail/Processors.h>
#include <Time/VoTimer.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamWriter.h>

#include <QtCore/QProcess>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using Outcome = VoScriptedTestRun::Outcome;

namespace {

constexpr std::size_t MostOutput = std::size_t(64) << 10;
constexpr int Slice = 50; // milliseconds between looks at the stop flag

// One process for one test.
class TestProcess
{
public:
    TestProcess(const VoScriptedTestRun& run, const VoScriptedTest& test, const VoStopFlag& stop)
        : m_limit(test.limit > VoTimeDuration() ? test.limit : run.limit)
        , m_stop(stop)
    {
        m_result.test = test;
        QStringList arguments;
        for (const VoString& argument : run.arguments)
            arguments << argument.toQString();
        arguments << QString::fromStdString(std::filesystem::absolute(vo::detail::ToNative(test.file)).u8string());
        m_process.setProgram(run.program.toQString());
        m_process.setArguments(arguments);
    }

    VoScriptedTestRun::Result run()
    {
        const VoTemporaryDir scratch;
        const QString folder = QString::fromStdString(vo::detail::ToNative(scratch.path()).u8string());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("VOAPPDATAPATH"), folder);
        m_process.setProcessEnvironment(environment);
        m_process.setWorkingDirectory(folder);
        m_process.setStandardInputFile(QProcess::nullDevice());
        m_process.start();
        waitForEnd();
        m_result.duration = m_timer.elapsed();
        m_result.output = VoString(m_output);
        return m_result;
    }

private:
    void waitForEnd()
    {
        if (!m_process.waitForStarted(-1))
            return end(Outcome::NotRun,
                       "cannot start " + VoString(m_process.program()) + ": " + VoString(m_process.errorString()));
        while (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(Slice)) {
            takeOutput();
            if (!m_stop.isStopped() && !m_timer.hasExpired(m_limit))
                continue;
            m_process.kill();
            m_process.waitForFinished(-1);
            takeOutput();
            m_stop.throwIfStopped();
            return end(Outcome::TimedOut, "took longer than " + m_limit.toString());
        }
        takeOutput();
        if (m_process.exitStatus() != QProcess::NormalExit)
            end(Outcome::Failed, "the process ended by a fault; its last words: " + lastLine());
        else if (m_process.exitCode() != 0)
            end(Outcome::Failed, lastLine());
        else
            m_result.outcome = Outcome::Passed;
    }

    void takeOutput()
    {
        const std::string errors = m_process.readAllStandardError().toStdString();
        m_errors = last(m_errors + errors);
        m_output = last(m_output + m_process.readAllStandardOutput().toStdString() + errors);
    }

    static std::string last(std::string text)
    {
        if (text.size() > MostOutput)
            text.erase(0, text.size() - MostOutput);
        return text;
    }

    // Programs tell last why they fail.
    VoString lastLine() const
    {
        std::string text = m_errors.empty() ? m_output : m_errors;
        text.erase(text.find_last_not_of("\r\n") + 1);
        const std::size_t newline = text.rfind('\n');
        return VoString(newline == std::string::npos ? text : text.substr(newline + 1));
    }

    void end(Outcome outcome, const VoString& message)
    {
        m_result.outcome = outcome;
        m_result.message = message;
    }

    const VoTimeDuration m_limit;
    const VoStopFlag& m_stop;
    QProcess m_process;
    const VoTimer m_timer;
    std::string m_output;
    std::string m_errors;
    VoScriptedTestRun::Result m_result;
};

// Hands tests out to threads, each of which waits for one process.
class Crowd
{
public:
    Crowd(const VoScriptedTestRun& run, const VoDeque<VoScriptedTest>& tests, const VoStopFlag& stop,
          const std::function<void(const VoScriptedTestRun::Result&)>& onResult)
        : m_run(run)
        , m_tests(tests)
        , m_stop(stop.child())
        , m_onResult(onResult)
        , m_results(tests.size())
    {
    }

    VoDeque<VoScriptedTestRun::Result> finish()
    {
        const std::size_t wanted = m_run.processes != 0 ? m_run.processes : vo::detail::AvailableProcessors();
        std::vector<std::thread> threads;
        try {
            for (std::size_t i = 1; i < std::min(wanted, m_tests.size()); ++i)
                threads.emplace_back([this] { work(); });
        } catch (const std::exception&) { // fewer threads do as well
        }
        work();
        for (std::thread& thread : threads)
            thread.join();
        if (m_failure)
            std::rethrow_exception(m_failure);
        return VoDeque<VoScriptedTestRun::Result>(m_results.begin(), m_results.end());
    }

private:
    void work() noexcept
    {
        try {
            for (std::size_t i = m_next++; i < m_tests.size(); i = m_next++) {
                m_stop.throwIfStopped();
                VoScriptedTestRun::Result result = TestProcess(m_run, m_tests.at(i), m_stop).run();
                const std::lock_guard<std::mutex> lock(m_mutex);
                m_results[i] = std::move(result);
                if (m_onResult)
                    m_onResult(m_results[i]);
            }
        } catch (...) {
            {
                const std::lock_guard<std::mutex> lock(m_mutex);
                if (!m_failure)
                    m_failure = std::current_exception();
            }
            m_stop.stop();
        }
    }

    const VoScriptedTestRun& m_run;
    const VoDeque<VoScriptedTest>& m_tests;
    const VoStopFlag m_stop; // raised with the caller's, or by the first failure
    const std::function<void(const VoScriptedTestRun::Result&)>& m_onResult;
    std::atomic<std::size_t> m_next{0};
    std::mutex m_mutex; // guards the two
    std::vector<VoScriptedTestRun::Result> m_results;
    std::exception_ptr m_failure;
};

// Lines that an XML document can hold.
VoString PrintableLines(const VoString& text)
{
    VoString lines;
    const std::string& bytes = text.toStdString();
    for (std::size_t start = 0; start < bytes.size();) {
        const std::size_t end = std::min(bytes.find('\n', start), bytes.size());
        lines += vo::Printable(VoString(bytes.substr(start, end - start))) + "\n";
        start = end + 1;
    }
    return lines;
}

VoString Seconds(const VoTimeDuration& duration)
{
    return VoString(static_cast<double>(duration.count()) / 1e9);
}

void WriteCase(VoXMLElementWriter& suite, const VoString& suiteName, const VoScriptedTestRun::Result& result)
{
    const auto element = suite.createElement("testcase");
    element->writeAttribute("classname", vo::Printable(suiteName));
    element->writeAttribute("name", vo::Printable(result.test.name));
    element->writeAttribute("time", Seconds(result.duration));
    if (result.outcome == Outcome::Passed)
        return;
    const auto failure = element->createElement(result.outcome == Outcome::NotRun ? "error" : "failure");
    failure->writeAttribute("type", VoScriptedTestRun::OutcomeText(result.outcome));
    failure->writeAttribute("message", vo::Printable(result.message));
    failure->writeText(PrintableLines(result.output));
}

} // namespace

VoDeque<VoScriptedTestRun::Result> VoScriptedTestRun::run(const VoDeque<VoScriptedTest>& tests, const VoStopFlag& stop,
                                                          const std::function<void(const Result&)>& onResult) const
{
    return Crowd(*this, tests, stop, onResult).finish();
}

void VoScriptedTestRun::WriteJUnit(const VoFilePath& file, const VoString& suite, const VoDeque<Result>& results)
{
    const auto count = [&](Outcome first, Outcome second) {
        return VoString(std::count_if(results.begin(), results.end(), [=](const Result& result) {
            return result.outcome == first || result.outcome == second;
        }));
    };
    VoTimeDuration total;
    for (const Result& result : results)
        total = total + result.duration;
    VoAtomicFileWriter target(file);
    VoXMLStreamWriter writer(target.device(), VoXMLStreamWriter::AutoFormattingSettings(true));
    writer.startDocument();
    {
        const auto root = writer.createElement("testsuite");
        root->writeAttribute("name", vo::Printable(suite));
        root->writeAttribute("tests", VoString(results.size()));
        root->writeAttribute("failures", count(Outcome::Failed, Outcome::TimedOut));
        root->writeAttribute("errors", count(Outcome::NotRun, Outcome::NotRun));
        root->writeAttribute("skipped", "0");
        root->writeAttribute("time", Seconds(total));
        for (const Result& result : results)
            WriteCase(*root, suite, result);
    }
    writer.finishDocument();
    target.commit();
}

const char* VoScriptedTestRun::OutcomeText(Outcome outcome) noexcept
{
    switch (outcome) {
    case Outcome::Passed:
        return "passed";
    case Outcome::Failed:
        return "failed";
    case Outcome::TimedOut:
        return "timed out";
    case Outcome::NotRun:
        return "not run";
    }
    return "unknown";
}
