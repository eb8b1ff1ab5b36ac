#include <VoTestSupport.h>

#include <Maths/VoLinearProblem.h>
#include <Maths/VoLinearProblemCertificate.h>
#include <Maths/VoLinearProblemExceptions.h>
#include <Maths/VoLinearProblemSolution.h>

#include "RandomProblems.h"

#include <limits>

namespace {

using Sense = VoLinearProblem::Sense;
using Verdict = VoLinearProblemCertificate::Verdict;

// Make 3x + 2y largest, x + y <= 4, x + 3y <= 6: x = 4, y = 0, value 12, multipliers 3 and 0.
VoLinearProblem Sample()
{
    VoLinearProblem problem(Sense::Maximise, {3, 2});
    problem.addConstraint({1, 1}, 4);
    problem.addConstraint({1, 3}, 6);
    return problem;
}

VoLinearProblemSolution Claim(VoVector<double> parameters, double value, VoVector<double> multipliers)
{
    VoLinearProblemSolution claim;
    claim.parameters = std::move(parameters);
    claim.value = value;
    claim.multipliers = std::move(multipliers);
    return claim;
}

TEST(LinearProblemCertificate, JudgesClaimsByTheProblemAlone)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    struct Row
    {
        const char* what;
        VoLinearProblemSolution claim;
        Verdict verdict;
    };
    const Row rows[] = {
        {"the optimum with its proof", Claim({4, 0}, 12, {3, 0}), Verdict::Optimal},
        {"rounding noise", Claim({4 + 1e-12, -1e-12}, 12 + 1e-12, {3, 1e-13}), Verdict::Optimal},
        {"the optimum without a proof", Claim({4, 0}, 12, {}), Verdict::Feasible},
        {"another corner", Claim({0, 2}, 4, {3, 0}), Verdict::Feasible},
        {"a proof that is too weak", Claim({4, 0}, 12, {4, 0}), Verdict::Feasible},
        {"multipliers that prove nothing", Claim({4, 0}, 12, {0, 2}), Verdict::Feasible},
        {"a negative multiplier", Claim({4, 0}, 12, {4.5, -1}), Verdict::Feasible},
        {"a value that is not the objective's", Claim({4, 0}, 12.001, {3, 0}), Verdict::Feasible},
        {"a broken constraint", Claim({4, 0.001}, 12.002, {3, 0}), Verdict::Infeasible},
        {"a negative parameter", Claim({4, -0.001}, 11.998, {3, 0}), Verdict::Infeasible},
        {"no number at all", Claim({nan, 0}, 12, {3, 0}), Verdict::Infeasible},
        {"an infinite parameter", Claim({4, -infinity}, 12, {3, 0}), Verdict::Infeasible},
        {"an infinite value", Claim({4, 0}, infinity, {3, 0}), Verdict::Infeasible},
        {"an infinite multiplier", Claim({4, 0}, 12, {infinity, 0}), Verdict::Feasible},
    };
    for (const Row& row : rows)
        EXPECT_EQ(VoLinearProblemCertificate(Sample(), row.claim).verdict(), row.verdict) << row.what;
}

TEST(LinearProblemCertificate, ShowsItsFigures)
{
    const VoLinearProblemCertificate certificate(Sample(), Claim({5, -1}, 10, {1, 0}));
    EXPECT_EQ(certificate.primalResiduals(), (VoVector<double>{0, 0, 0, 1}));
    EXPECT_EQ(certificate.dualResiduals(), (VoVector<double>{2, 1, 0, 0}));
    EXPECT_EQ(certificate.largestPrimalResidual(), 1);
    EXPECT_EQ(certificate.largestDualResidual(), 2);
    EXPECT_EQ(certificate.gap(), 4 - 13);
    EXPECT_EQ(certificate.valueError(), -3);
}

TEST(LinearProblemCertificate, MeasuresSmallUnitsAgainstThemselves)
{
    VoLinearProblem farads(Sense::Maximise, {1, 1});
    farads.addConstraint({1, 2}, 3e-12);
    farads.addConstraint({2, 1}, 3e-12);
    EXPECT_EQ(VoLinearProblemCertificate(farads, VoLinearProblemSolution::Solve(farads, 10)).verdict(),
              Verdict::Optimal);
    const double third = 1.0 / 3;
    EXPECT_EQ(VoLinearProblemCertificate(farads, Claim({1.1e-12, 1e-12}, 2.1e-12, {third, third})).verdict(),
              Verdict::Infeasible);
}

TEST(LinearProblemCertificate, RefusesAnswersOfAnotherShape)
{
    EXPECT_THROW(VoLinearProblemCertificate(Sample(), Claim({4}, 12, {3, 0})), VoInvalidNumberCoefficientsException);
    EXPECT_THROW(VoLinearProblemCertificate(Sample(), Claim({4, 0}, 12, {3})), VoInvalidNumberCoefficientsException);
}

TEST(LinearProblemCertificate, ProvesTheSolverRightOnPositiveProblems)
{
    VoRandom random(11);
    for (int i = 0; i < 1000; ++i) {
        const auto parameters = static_cast<std::size_t>(random.integer(1, 20));
        const auto constraints = static_cast<std::size_t>(random.integer(1, 20));
        for (Sense sense : {Sense::Maximise, Sense::Minimise}) {
            const VoLinearProblem problem = vo::test::PositiveProblem(
                random, sense, parameters, sense == Sense::Maximise ? constraints : parameters);
            const auto solution = VoLinearProblemSolution::Solve(problem, 10000);
            const VoLinearProblemCertificate certificate(problem, solution);
            ASSERT_EQ(certificate.verdict(), Verdict::Optimal) << vo::test::ProblemText(problem);
            ASSERT_FALSE(certificate.zeroRatioPassedOver());
        }
    }
}

TEST(LinearProblemCertificate, FindsTheKnownWrongAnswer)
{
    VoLinearProblem problem(Sense::Maximise, {2, 3});
    problem.addConstraint({1, 2}, 2);
    problem.addConstraint({1, 1}, 1);
    const auto solution = VoLinearProblemSolution::Solve(problem, 10);
    const VoLinearProblemCertificate certificate(problem, solution);
    EXPECT_TRUE(solution.found);
    EXPECT_NE(certificate.verdict(), Verdict::Optimal);
    EXPECT_TRUE(certificate.zeroRatioPassedOver());
    EXPECT_EQ(VoLinearProblemCertificate(problem, Claim({0, 1}, 3, {1, 1})).verdict(), Verdict::Optimal);
}

} // namespace
