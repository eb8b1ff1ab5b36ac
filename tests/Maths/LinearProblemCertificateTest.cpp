#include <VoTestSupport.h>

#include <Maths/VoLinearProblem.h>
#include <Maths/VoLinearProblemCertificate.h>
#include <Maths/VoLinearProblemExceptions.h>
#include <Maths/VoLinearProblemSolution.h>
#include <Maths/VoRandom.h>

#include "ExactLinearProgram.h"

namespace {

using Sense = VoLinearProblem::Sense;
using Verdict = VoLinearProblemCertificate::Verdict;
using vo::test::Decimal;
using vo::test::ExactLinearProgram;

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
    VoLinearProblem inOneOnly(Sense::Maximise, {3, 0}); // constraint the parameter with the noise
    inOneOnly.addConstraint({1, 1}, 4);
    inOneOnly.addConstraint({1, 0}, 6);
    EXPECT_EQ(VoLinearProblemCertificate(inOneOnly, Claim({4, -1e-12}, 12, {3, 0})).verdict(), Verdict::Optimal);
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

TEST(LinearProblemCertificate, RefusesAnswersOfAnotherShape)
{
    EXPECT_THROW(VoLinearProblemCertificate(Sample(), Claim({4}, 12, {3, 0})), VoInvalidNumberCoefficientsException);
    EXPECT_THROW(VoLinearProblemCertificate(Sample(), Claim({4, 0}, 12, {3})), VoInvalidNumberCoefficientsException);
}

TEST(LinearProblemCertificate, ProvesTheSolverRightOnPositiveProblems)
{
    VoRandom random(11);
    const auto numbers = [&random](std::size_t count) {
        VoVector<double> values(count);
        for (double& value : values) // of three orders of magnitude
            value = (0.01 + random.uniform()) * (random.integer(0, 3) == 0 ? 10 : 1);
        return values;
    };
    for (int i = 0; i < 2000; ++i) {
        const auto parameters = static_cast<std::size_t>(random.integer(1, 20));
        const Sense sense = i % 2 == 0 ? Sense::Maximise : Sense::Minimise;
        VoLinearProblem problem(sense, numbers(parameters));
        for (auto rows = i % 2 == 0 ? random.integer(1, 20) : static_cast<std::int64_t>(parameters); rows > 0; --rows)
            problem.addConstraint(numbers(parameters), numbers(1)[0]);
        const VoLinearProblemCertificate certificate(problem, VoLinearProblemSolution::Solve(problem, 10000));
        ASSERT_EQ(certificate.verdict(), Verdict::Optimal) << i;
        ASSERT_FALSE(certificate.zeroRatioPassedOver()) << i;
    }
}

/// A family of problems, made to be difficult in one way.
VoLinearProblem RandomProblem(VoRandom& random, int family)
{
    const int parameters = static_cast<int>(random.integer(1, 5));
    const Sense sense = random.integer(0, 1) == 0 ? Sense::Minimise : Sense::Maximise;
    const auto constraints = sense == Sense::Minimise ? parameters : static_cast<int>(random.integer(1, 5));
    const auto twoDigits = [&] { return static_cast<double>(random.integer(-999, 999)) / 100; };
    const auto number = [&]() -> double {
        switch (family) {
        case 0: // data with two decimals
            return twoDigits();
        case 1: // of very different sizes
            return twoDigits() * std::pow(10.0, static_cast<double>(random.integer(-6, 6)));
        case 2: // small integers, on which ratios tie and vanish
            return static_cast<double>(random.integer(-2, 2));
        default: // multiples of a tenth, so that rows depend on one another but for the rounding
            return static_cast<double>(random.integer(-3, 3)) / 10;
        }
    };
    const auto numbers = [&](int count) {
        VoVector<double> values;
        for (int i = 0; i < count; ++i)
            values.pushBack(number());
        return values;
    };
    VoVector<double> objective = numbers(parameters);
    if (sense == Sense::Minimise)
        std::transform(objective.begin(), objective.end(), objective.begin(), [](double c) { return std::fabs(c); });
    VoLinearProblem problem(sense, objective);
    for (int i = 0; i < constraints; ++i) {
        const double bound = number();
        VoVector<double> row = numbers(parameters);
        if (family == 3 && i > 0 && random.integer(0, 1) == 0) {
            const double factor = number();
            row = problem.coefficients(static_cast<std::size_t>(i - 1));
            for (double& coefficient : row)
                coefficient *= factor;
        }
        problem.addConstraint(row, sense == Sense::Maximise ? std::fabs(bound) : bound);
    }
    return problem;
}

mpq_class AsHeld(double value)
{
    return mpq_class(value);
}

// Whether the claim keeps every constraint, without any rounding; the problem's numbers as they are meant or held.
bool KeepsAll(const VoLinearProblem& problem, const VoVector<double>& parameters, mpq_class (*number)(double))
{
    const int sign = problem.sense() == Sense::Maximise ? 1 : -1;
    for (std::size_t i = 0; i < problem.numberConstraints(); ++i) {
        mpq_class sum = -number(problem.bound(i));
        for (std::size_t j = 0; j < parameters.size(); ++j)
            sum += number(problem.coefficients(i)[j]) * mpq_class(parameters[j]);
        if (sgn(sum) * sign > 0)
            return false;
    }
    return std::none_of(parameters.begin(), parameters.end(), [](double parameter) { return parameter < 0; });
}

bool IsFinite(const VoLinearProblemSolution& claim)
{
    const auto finite = [](double value) { return std::isfinite(value); };
    return std::isfinite(claim.value) && std::all_of(claim.parameters.begin(), claim.parameters.end(), finite) &&
           std::all_of(claim.multipliers.begin(), claim.multipliers.end(), finite);
}

// Whether the claimed value is the optimum, but for rounding of the terms that it is the sum of.
bool IsOptimum(const VoLinearProblem& problem, const VoLinearProblemSolution& claim, const ExactLinearProgram& exact)
{
    if (!exact.optimum())
        return false;
    double terms = std::fabs(claim.value);
    for (std::size_t j = 0; j < claim.parameters.size(); ++j)
        terms += std::fabs(problem.objective()[j] * claim.parameters[j]);
    return abs(mpq_class(claim.value) - *exact.optimum()) <= mpq_class(1e-8 * terms);
}

bool IsWrong(Verdict verdict, const VoLinearProblem& problem, const VoLinearProblemSolution& claim,
             const ExactLinearProgram& exact)
{
    switch (verdict) {
    case Verdict::Optimal:
        return !IsFinite(claim) || !IsOptimum(problem, claim, exact);
    case Verdict::Feasible:
        return !exact.feasible() && !KeepsAll(problem, claim.parameters, AsHeld);
    default:
        return IsFinite(claim) && KeepsAll(problem, claim.parameters, Decimal) &&
               KeepsAll(problem, claim.parameters, AsHeld);
    }
}

VoLinearProblemSolution ExactAnswer(const ExactLinearProgram& exact)
{
    VoLinearProblemSolution answer;
    for (const mpq_class& parameter : exact.parameters())
        answer.parameters.pushBack(parameter.get_d());
    for (const mpq_class& multiplier : exact.multipliers())
        answer.multipliers.pushBack(multiplier.get_d());
    answer.value = exact.optimum()->get_d();
    return answer;
}

// The environment variable VOCORE_CAMPAIGN asks for more problems than the test takes time for.
TEST(LinearProblemCertificate, AgreesWithRationalArithmetic)
{
    const char* campaign = std::getenv("VOCORE_CAMPAIGN");
    const int problems = campaign ? std::atoi(campaign) : 2000;
    std::array<std::size_t, 3> verdicts{};
    std::size_t wrong = 0;
    std::size_t withheld = 0;
    VoRandom random(12);
    const auto judge = [&](const VoLinearProblem& problem, const VoLinearProblemSolution& claim,
                           const ExactLinearProgram& exact) {
        const Verdict verdict = VoLinearProblemCertificate(problem, claim).verdict();
        ++verdicts[static_cast<std::size_t>(verdict)];
        if (IsWrong(verdict, problem, claim, exact) && ++wrong <= 5)
            ADD_FAILURE() << "verdict " << static_cast<int>(verdict) << " on "
                          << testing::PrintToString(claim.parameters) << " with multipliers "
                          << testing::PrintToString(claim.multipliers) << " and value " << claim.value;
        return verdict;
    };
    for (int i = 0; i < problems; ++i) {
        SCOPED_TRACE(i);
        const int family = i % 4;
        const VoLinearProblem problem = RandomProblem(random, family);
        const ExactLinearProgram exact(problem);
        try {
            auto claim = VoLinearProblemSolution::Solve(problem, 200);
            judge(problem, claim, exact);
            claim.multipliers = {};
            judge(problem, claim, exact);
        } catch (const VoInvalidCallException&) {
            // no answer, so no wrong one
        }
        if (!exact.optimum())
            continue;
        VoLinearProblemSolution answer = ExactAnswer(exact);
        const bool proven = judge(problem, answer, exact) == Verdict::Optimal;
        withheld += proven || family == 3 || *exact.optimum() == 0 ? 0 : 1; // 0 may leave no term to measure against
        for (double& parameter : answer.parameters)
            parameter *= 1 + 1e-6 * static_cast<double>(random.integer(-1, 1));
        judge(problem, answer, exact);
    }
    EXPECT_EQ(wrong, 0u);
    EXPECT_EQ(withheld, 0u) << "right answers with their proof, of problems that are no more difficult than rounding";
    for (std::size_t verdict = 0; verdict < verdicts.size(); ++verdict) {
        EXPECT_GT(verdicts[verdict], static_cast<std::size_t>(problems / 20));
        RecordProperty("verdict" + std::to_string(verdict), std::to_string(verdicts[verdict]));
    }
}

} // namespace
