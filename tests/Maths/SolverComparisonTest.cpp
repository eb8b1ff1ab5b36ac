#include <VoTestSupport.h>

#include <Maths/VoLinearProblemSolution.h>
#include <Maths/VoLinearProblemText.h>

#include "RandomProblems.h"

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QStandardPaths>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

#include <cmath>
#include <cstdlib>
#include <optional>

namespace {

using Sense = VoLinearProblem::Sense;

/// Another solver, as a program of its own. The tests are skipped where it is not installed.
class SolverComparison : public testing::Test
{
protected:
    void SetUp() override
    {
        m_program = QStandardPaths::findExecutable(QStringLiteral("glpsol"));
        if (m_program.isEmpty())
            GTEST_SKIP() << "glpsol is not installed";
        ASSERT_TRUE(m_directory.isValid());
    }

    // The optimum; none when the problem has none.
    std::optional<double> otherOptimum(const std::string& text)
    {
        const QString problem = m_directory.filePath(QStringLiteral("problem.lp"));
        const QString answer = m_directory.filePath(QStringLiteral("answer"));
        QFile file(problem);
        if (!file.open(QIODevice::WriteOnly) || file.write(text.data(), static_cast<qint64>(text.size())) < 0) {
            ADD_FAILURE() << "cannot write the problem";
            return std::nullopt;
        }
        file.close();

        QProcess process;
        process.start(m_program, {QStringLiteral("--lp"), problem, QStringLiteral("--write"), answer});
        if (!process.waitForFinished() || process.exitCode() != 0) {
            ADD_FAILURE() << "glpsol failed on\n" << text << process.readAllStandardOutput().toStdString();
            return std::nullopt;
        }
        return readOptimum(answer);
    }

private:
    // A line "s bas ROWS COLUMNS PRIMAL DUAL OBJECTIVE"; "f" says of both states that they are feasible.
    static std::optional<double> readOptimum(const QString& path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        while (!file.atEnd()) {
            const QList<QByteArray> words = file.readLine().simplified().split(' ');
            if (words.size() == 7 && words[0] == "s" && words[4] == "f" && words[5] == "f")
                return words[6].toDouble();
        }
        return std::nullopt;
    }

    QString m_program;
    QTemporaryDir m_directory;
};

bool Agree(double a, double b)
{
    return std::fabs(a - b) <= 1e-9 * std::max(std::fabs(a), std::fabs(b));
}

TEST_F(SolverComparison, AgreesOnProblemsWithPositiveData)
{
    VoRandom random(31);
    for (int i = 0; i < 150; ++i) {
        const Sense sense = i % 2 == 0 ? Sense::Maximise : Sense::Minimise;
        const auto parameters = static_cast<std::size_t>(random.integer(1, i < 140 ? 15 : 60));
        const auto constraints =
            sense == Sense::Minimise ? parameters : static_cast<std::size_t>(random.integer(1, i < 140 ? 15 : 60));
        const std::string text =
            vo::test::ProblemText(vo::test::PositiveProblem(random, sense, parameters, constraints));
        const auto solution = VoLinearProblemSolution::Solve(VoLinearProblemText::Parse(VoString(text)).problem, 10000);
        const auto optimum = otherOptimum(text);
        ASSERT_TRUE(optimum) << text;
        ASSERT_TRUE(solution.found);
        ASSERT_TRUE(Agree(solution.value, *optimum)) << solution.value << " instead of " << *optimum << '\n' << text;
    }
}

} // namespace
