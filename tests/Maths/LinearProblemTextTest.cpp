#include <VoTestSupport.h>

#include <Maths/VoLinearProblemExceptions.h>
#include <Maths/VoLinearProblemSolution.h>
#include <Maths/VoLinearProblemText.h>

#include <fstream>

namespace {

TEST(LinearProblemText, ReadsTheFormatInItsUsualSpellings)
{
    const auto text = VoLinearProblemText::Parse("\\ a comment with maximize in it\n"
                                                 "MAXIMISE\r\n profit: 3 x + 2.5e0y -  - z\n"
                                                 "Subject  To\n"
                                                 "hours: x + y\n <= 4 \\ not the end\n"
                                                 " + x + .5 z =< + 6 - x + 0 Y < 7\n"
                                                 "Bounds x >= 0 0 <= y\n z <= +inf +Infinity >= Y 0 <= x <= +INF\n"
                                                 "END\n \\ the end\n");
    EXPECT_EQ(text.objectiveName, "profit");
    EXPECT_EQ(text.parameterNames, (VoVector<VoString>{"x", "y", "z", "Y"}));
    ASSERT_EQ(text.parameterNames.size(), 4u) << "names count with their case";
    EXPECT_EQ(text.constraintNames, (VoVector<VoString>{"hours", "c2", "c3"}));
    EXPECT_EQ(text.problem.sense(), VoLinearProblem::Sense::Maximise);
    EXPECT_EQ(text.problem.objective(), (VoVector<double>{3, 2.5, 1, 0}));
    EXPECT_EQ(text.problem.coefficients(0), (VoVector<double>{1, 1, 0, 0}));
    EXPECT_EQ(text.problem.coefficients(1), (VoVector<double>{1, 0, 0.5, 0}));
    EXPECT_EQ(text.problem.coefficients(2), (VoVector<double>{-1, 0, 0, 0}));
    EXPECT_EQ(text.problem.bound(1), 6);
}

TEST(LinearProblemText, ReadsProblemsToBeMinimised)
{
    const auto text = VoLinearProblemText::Parse("min 2x+3y st x+y>=4 x+3y>-6 end");
    EXPECT_EQ(text.problem.sense(), VoLinearProblem::Sense::Minimise);
    EXPECT_EQ(text.objectiveName, "obj");
    EXPECT_EQ(text.problem.bound(1), -6);
}

TEST(LinearProblemText, RefusesWhatTheSolverCannotTakeAndSaysWhere)
{
    std::ifstream file(VOCORE_APPROVED "/refused-problems.txt"); // each problem stands before its "=>"
    std::string problem;
    int problems = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.rfind("=> ", 0) != 0) {
            problem += line + "\n";
            continue;
        }
        problem.resize(problem.empty() ? 0 : problem.size() - 1); // the last line ends with the text
        EXPECT_THROW_MSG(VoLinearProblemText::Parse(VoString(problem)), VoLinearProblemException, line.substr(3))
            << problem;
        problem.clear();
        ++problems;
    }
    EXPECT_GT(problems, 40);
}

TEST(LinearProblemText, RefusesProblemsThatAreTooLargeBeforeMakingThem)
{
    std::string text = "max x0";
    for (int i = 1; i < 12000; ++i)
        text += " + x" + std::to_string(i);
    text += " st";
    for (int i = 0; i < 8000; ++i)
        text += "\nx0 <= 1";
    EXPECT_THROW_MSG(VoLinearProblemText::Parse(VoString(text + "\nend")), VoLinearProblemException,
                     "Line 8002: Problem is too large for the solver");
}

TEST(LinearProblemText, SurvivesEveryCutOfAText)
{
    const std::string whole = "maximize p: 3 x + 2e-1 y subject to a: x + y <= 4 such: x <= 6 bounds 0 <= x end";
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_THROW(VoLinearProblemText::Parse(VoString(whole.data(), length)), VoLinearProblemException) << length;
    EXPECT_EQ(VoLinearProblemText::Parse(VoString(whole)).problem.numberConstraints(), 2u);
}

} // namespace
