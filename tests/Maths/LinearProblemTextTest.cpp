#include <VoTestSupport.h>

#include <Maths/VoLinearProblemExceptions.h>
#include <Maths/VoLinearProblemSolution.h>
#include <Maths/VoLinearProblemText.h>

#include <string>

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
    struct Row
    {
        const char* text;
        const char* message;
    };
    const char* const bounds = "Line 3: Only the bounds \">= 0\" and \"<= +inf\" of a variable fit the solver";
    const Row rows[] = {
        {"", "Line 1: \"maximize\" or \"minimize\" expected, not the end of the text"},
        {"\n\nx + y\n", "Line 3: \"maximize\" or \"minimize\" expected, not \"x\""},
        {"max x", "Line 1: \"subject to\" expected, not the end of the text"},
        {"max x\nsubject from x <= 1 end", "Line 2: \"+\" or \"-\" expected before \"subject\""},
        {"max x st\nx <= 1", "Line 2: \"end\" is missing"},
        {"max x st x <= 1 end\nmore", "Line 2: Text after \"end\": \"more\""},
        {"max x st x <= 1 end\nmin", "Line 2: Text after \"end\": \"min\""},
        {"max x st x <= 1 max", "Line 1: Not expected: \"max\""},
        {"max x st\n\nx >= 1\nend", "Line 3: Only \"<=\" constraints fit the solver when maximizing"},
        {"min x st\nx <= 1\nend", "Line 2: Only \">=\" constraints fit the solver when minimizing"},
        {"max x st x\n= 1\nend", "Line 2: Only \"<=\" constraints fit the solver when maximizing"},
        {"max x st x <= 1\n <= 2 end", "Line 2: Ranges do not fit the solver"},
        {"max x st\nx <= -1 end", "Line 2: Negative bound of constraint \"c1\": the origin must be feasible when "
                                  "maximizing"},
        {"min x - y st\nx >= 1 y >= 2 end",
         "Line 1: Negative coefficient of \"y\" in an objective to be minimized does not fit the solver"},
        {"min x\nst\nx + y >= 1\nend",
         "Line 4: A problem to be minimized must have as many constraints as variables, not 1 for 2"},
        {"max st\nend", "Line 2: Problem without variables"},
        {"max x st\nend", "Line 2: Problem without constraints"},
        {"max st <= 1 end", "Line 1: Constraint without variables"},
        {"max x st x 1 end", "Line 1: \"+\" or \"-\" expected before \"1\""},
        {"max x st x + y end", "Line 1: \"<=\" or \">=\" expected, not \"end\""},
        {"max x st x <= y end", "Line 1: Number expected, not \"y\""},
        {"max x st x <=\nend", "Line 2: Number expected, not \"end\""},
        {"max 3 x + 5\nst x <= 1 end", "Line 2: Variable expected, not \"st\" (constants do not fit the solver)"},
        {"max x + x st x <= 1 end", "Line 1: Variable \"x\" appears twice"},
        {"max x st a: x <= 1\na: x <= 2 end", "Line 2: Constraint \"a\" appears twice"},
        {"max x * y st x <= 1 end", "Line 1: Character not expected: \"*\""},
        {"max [ x ^ 2 ] st x <= 1 end", "Line 1: Character not expected: \"[\""},
        {"max 1e999 x st x <= 1 end", "Line 1: Number out of range: \"1e999\""},
        {"max . x st x <= 1 end", "Line 1: Number expected"},
        {"max x st x <= 1\nbounds\nx <= 4\nend", bounds},
        {"max x st x <= 1\nbounds\nx >= 1\nend", bounds},
        {"max x st x <= 1\nbounds\n0 <= x <= 1\nend", bounds},
        {"max x st x <= 1\nbounds\nx >= -inf\nend", bounds},
        {"max x st x <= 1\nbounds\n+inf <= x\nend", bounds},
        {"max x st x <= 1\nbounds\nx >= 0 <= x\nend", bounds},
        {"max x st x <= 1\nbounds\nx free end", bounds},
        {"max x st x <= 1\nbounds\nw >= 0\nend", "Line 3: Unknown variable \"w\""},
        {"max x st x <= 1\nbounds\nx <= inf\nend", "Line 3: Unknown variable \"inf\""},
        {"max x st x <= +inf end", "Line 1: Number expected, not \"inf\""},
        {"max x st x <= 1\ninteger x end", "Line 2: Section \"integer\" does not fit the solver"},
        {"max x st x <= 1\nsemi-continuous x end", "Line 2: Section \"semi-continuous\" does not fit the solver"},
    };
    for (const Row& row : rows)
        EXPECT_THROW_MSG(VoLinearProblemText::Parse(row.text), VoLinearProblemException, row.message) << row.text;
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
