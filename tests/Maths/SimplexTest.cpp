#include <SpecialNumbers.h>
#include <VoTestSupport.h>

#include <Maths/VoLinearProblemExceptions.h>
#include <Maths/VoLinearProblemSolution.h>
#include <Maths/VoRandom.h>
#include <Maths/VoSimplexAlgorithm.h>

#include "ReferenceSimplex.h"

using vo::test::Infinity;
using vo::test::NotANumber;

namespace {

using Largest = VoSimplexAlgorithm<double, true>;
using Smallest = VoSimplexAlgorithm<double, false>;
using vo::test::ReferenceSimplex;
using Numbers = VoVector<double>;

Largest Sample()
{
    Largest problem(2, 2);
    problem.setObjective({3, 2});
    problem.addLeqConstraint({1, 1}, 4);
    problem.addLeqConstraint({1, 3}, 6);
    return problem;
}

// The sign of NaN is the compiler's choice of operands.
testing::AssertionResult SameBits(const SimplexMatrix& tableau, const ReferenceSimplex& reference)
{
    for (std::size_t r = 0; r < tableau.rows(); ++r)
        for (std::size_t c = 0; c < tableau.columns(); ++c) {
            const double expected = reference.rows()[r][c];
            if (std::memcmp(&expected, tableau.rowData(r) + c, sizeof expected) != 0 &&
                !(std::isnan(expected) && std::isnan(tableau(r, c))))
                return testing::AssertionFailure()
                       << "cell " << r << ',' << c << " is " << tableau(r, c) << " instead of " << expected;
        }
    return testing::AssertionSuccess();
}

// In two parts, so that the second starts from a tableau in the middle of its way.
void CompareRun(Largest& solver, ReferenceSimplex& reference, std::size_t steps)
{
    bool failed = false;
    for (std::size_t step = 0; step < steps && !reference.found() && !failed; ++step)
        failed = !reference.step();
    try {
        solver.run(steps / 2);
        solver.run(steps - steps / 2);
        EXPECT_FALSE(failed);
    } catch (const VoInvalidCallException&) {
        EXPECT_TRUE(failed);
    }
    ASSERT_TRUE(SameBits(solver.problemMatrix(), reference));
    EXPECT_EQ(solver.zeroRatioPassedOver(), reference.zeroRatioPassedOver());
}

// Fills both with the same random numbers, taken from a few kinds that are likely to meet.
template <bool Maximise>
void Fill(VoRandom& random, VoSimplexAlgorithm<double, Maximise>& solver, ReferenceSimplex& reference)
{
    const std::size_t parameters = solver.numberParameters();
    const std::size_t constraints = solver.numberConstraints();
    const auto kind = random.integer(0, 2);
    const auto number = [&]() -> double {
        if (kind == 0)
            return random.uniform() + 0.01;
        if (kind == 1)
            return static_cast<double>(random.integer(-1, 3));
        return random.integer(0, 9) == 0 ? random.normal(0, 5) : random.integer(0, 1) == 0 ? 0.0 : -0.0;
    };
    Numbers objective(parameters);
    for (double& coefficient : objective)
        coefficient = number();
    solver.setObjective(objective);
    for (std::size_t i = 0; i < parameters; ++i)
        (Maximise ? reference.objective()[i] : reference.rightHandSide(i)) = Maximise ? -objective[i] : objective[i];

    for (std::size_t k = 0; k < constraints; ++k) {
        Numbers coefficients(parameters);
        for (double& coefficient : coefficients)
            coefficient = number();
        const double bound = std::fabs(number());
        if constexpr (Maximise)
            solver.addLeqConstraint(coefficients, bound);
        else
            solver.addGeqConstraint(coefficients, bound);
        for (std::size_t i = 0; i < parameters; ++i)
            (Maximise ? reference.cell(k, i) : reference.cell(i, k)) = coefficients[i];
        (Maximise ? reference.rightHandSide(k) : reference.objective()[k]) = Maximise ? bound : -bound;
    }
}

template <bool Maximise>
void CompareStepByStep(VoRandom& random)
{
    const auto parameters = static_cast<std::size_t>(random.integer(1, 9));
    const auto constraints = Maximise ? static_cast<std::size_t>(random.integer(1, 9)) : parameters;
    VoSimplexAlgorithm<double, Maximise> solver(parameters, constraints);
    ReferenceSimplex reference(parameters, constraints);
    Fill(random, solver, reference);
    ASSERT_TRUE(SameBits(solver.problemMatrix(), reference));

    VoSimplexAlgorithm<double, Maximise> inOneRun = solver;
    for (std::size_t iteration = 0; iteration < 40; ++iteration) {
        ASSERT_EQ(solver.solutionFound(), reference.found());
        if (reference.found())
            break;
        if (!reference.step()) {
            EXPECT_THROW_MSG(solver.run(1), VoInvalidCallException, "No pivot row can be found");
            ASSERT_TRUE(SameBits(solver.problemMatrix(), reference)) << "after the failure";
            EXPECT_THROW(inOneRun.run(40), VoInvalidCallException);
            break;
        }
        ASSERT_EQ(solver.run(1), MakeVoPair(reference.found(), std::size_t(1)));
        ASSERT_TRUE(SameBits(solver.problemMatrix(), reference)) << "after iteration " << iteration + 1;
    }
    try {
        inOneRun.run(40);
    } catch (const VoInvalidCallException&) {
    }
    ASSERT_TRUE(SameBits(inOneRun.problemMatrix(), reference)) << "run in one go";
    EXPECT_EQ(inOneRun.zeroRatioPassedOver(), reference.zeroRatioPassedOver());
}

TEST(Simplex, AgreesBitForBitWithThePlainVersionOnRandomProblems)
{
    VoRandom random(20240501);
    for (int i = 0; i < 3000 && !HasFatalFailure(); ++i) {
        SCOPED_TRACE(i);
        CompareStepByStep<true>(random);
        CompareStepByStep<false>(random);
    }
}

// Rows long enough for every width of vector instructions, with rests of every length behind them; and larger tableaux,
// which are worked on without their unit columns as long as that changes nothing.
TEST(Simplex, AgreesBitForBitOnLongRowsAndLargeProblems)
{
    VoRandom random(19);
    for (std::size_t i = 0; i < 77 && !HasFatalFailure(); ++i) {
        const bool large = i >= 17;
        const auto parameters = large ? static_cast<std::size_t>(random.integer(95, 115)) : 60 + i;
        const auto constraints = large ? static_cast<std::size_t>(random.integer(95, 115)) : 5;
        SCOPED_TRACE(std::to_string(parameters) + " x " + std::to_string(constraints));
        Largest solver(parameters, constraints);
        ReferenceSimplex reference(parameters, constraints);
        Fill(random, solver, reference);
        CompareRun(solver, reference, large ? static_cast<std::size_t>(random.integer(8, 60)) : 6);
    }
}

TEST(Simplex, AgreesBitForBitWhenNumbersOverflow)
{
    Largest solver(110, 90);
    ReferenceSimplex reference(110, 90);
    VoRandom random(20);
    // Ten columns are tame; each other one has a tiny entry, the only one to be chosen, among huge ones.
    Numbers objective(110);
    for (std::size_t i = 0; i < 110; ++i) {
        objective[i] = (i < 10 ? 1 : 100) * random.uniform();
        reference.objective()[i] = -objective[i];
    }
    solver.setObjective(objective);
    for (std::size_t k = 0; k < 90; ++k) {
        Numbers coefficients(110);
        for (std::size_t i = 0; i < 110; ++i) {
            coefficients[i] = i < 10                      ? 0.1 + random.uniform()
                              : i == k + 10               ? 1e-10
                              : random.integer(0, 1) == 0 ? 0.0
                                                          : -1e300 * random.uniform();
            reference.cell(k, i) = coefficients[i];
        }
        reference.rightHandSide(k) = random.uniform();
        solver.addLeqConstraint(coefficients, reference.rightHandSide(k));
    }
    CompareRun(solver, reference, 30);
    const auto& rows = reference.rows();
    EXPECT_TRUE(std::any_of(rows.begin(), rows.end(), [](const ReferenceSimplex::Row& row) {
        return std::any_of(row.begin(), row.end(), [](double number) { return !std::isfinite(number); });
    })) << "this problem no longer tries what it should";
}

// The wrong answers that the ratio rule gives are part of its behaviour; the certificate is there to find them.
TEST(Simplex, KeepsItsRatioRuleOnDegenerateProblems)
{
    Largest wrong(2, 2);
    wrong.setObjective({2, 3});
    wrong.addLeqConstraint({1, 2}, 2);
    wrong.addLeqConstraint({1, 1}, 1);
    EXPECT_TRUE(wrong.run(10).first);
    EXPECT_EQ(wrong.solutionValue(), 4);
    EXPECT_TRUE(wrong.zeroRatioPassedOver());
    EXPECT_FALSE(Sample().zeroRatioPassedOver());

    Largest zeroBound(2, 2);
    zeroBound.setObjective({1, 1});
    zeroBound.addLeqConstraint({1, 0}, 0);
    zeroBound.addLeqConstraint({0, 1}, 1);
    EXPECT_THROW_MSG(zeroBound.run(10), VoInvalidCallException, "No pivot row can be found");

    Largest twins(3, 2);
    twins.setObjective({1, 1, 0});
    twins.addLeqConstraint({1, 1, 0}, 4);
    twins.addLeqConstraint({0, 0, 1}, 9);
    twins.run(10);
    EXPECT_EQ(twins.solutionParameters(), (Numbers{4, 4, 9})) << "equal unit columns are read from the same row";
}

TEST(Simplex, RefusesImpossibleShapes)
{
    EXPECT_THROW_MSG(Largest(0, 0), VoInvalidCallException, "Number of parameters must be greater than zero");
    EXPECT_THROW_MSG(Largest(1, 0), VoInvalidCallException, "Number of constraints must be greater than zero");
    EXPECT_THROW_MSG(Smallest(0, 1), VoInvalidCallException, "Number of parameters must be greater than zero");
    EXPECT_THROW_MSG(Smallest(2, 0), VoInvalidCallException,
                     "Number of parameters must be the same as the number of constraints for minimisation");
    const std::size_t most = std::numeric_limits<std::size_t>::max();
    for (const auto& [parameters, constraints] : {std::pair<std::size_t, std::size_t>{most, 1},
                                                  {1, most},
                                                  {most, most},
                                                  {most - 2, 1},
                                                  {49'999'998, 1},
                                                  {1, 9999}})
        EXPECT_THROW_MSG(Largest(parameters, constraints), VoOverflowException, "Overflow - result too large")
            << parameters << " x " << constraints;
}

TEST(Simplex, RefusesConstraintsOfTheOtherKind)
{
    Largest largest(1, 1);
    Smallest smallest(1, 1);
    EXPECT_THROW_MSG(largest.addGeqConstraint({1}, 1), VoInvalidConstraintTypeException,
                     "Greater than or equal constraints cannot be added to this problem");
    EXPECT_THROW_MSG(smallest.addLeqConstraint({1, 2, 3}, 1), VoInvalidConstraintTypeException,
                     "Less than or equal constraints cannot be added to this problem");
    EXPECT_THROW_MSG(largest.addEqualityConstraint({1}, 1), VoInvalidConstraintTypeException,
                     "Equality constraints cannot be added to this problem");
    EXPECT_THROW_MSG(smallest.addEqualityConstraint({1}, 1), VoInvalidConstraintTypeException,
                     "Equality constraints cannot be added to this problem");
}

TEST(Simplex, ChecksLengthThenNumberThenValuesAndChangesNothing)
{
    Largest problem = Sample();
    const SimplexMatrix before = problem.problemMatrix();
    EXPECT_THROW_MSG(problem.addLeqConstraint({1, 1, 1}, NotANumber), VoInvalidNumberCoefficientsException,
                     "Invalid number of coefficients");
    EXPECT_THROW_MSG(problem.addLeqConstraint({1, NotANumber}, 1), VoTooManyConstraintsException,
                     "Stated number of constraints already added");
    EXPECT_THROW_MSG(problem.setObjective({1}), VoInvalidNumberCoefficientsException, "Invalid number of coefficients");
    EXPECT_THROW_MSG(problem.setObjective({1, -Infinity}), VoInvalidCoefficientException,
                     "Coefficient is not a finite number");
    EXPECT_EQ(problem.problemMatrix(), before);

    Smallest other(1, 1);
    EXPECT_THROW(other.addGeqConstraint({1}, Infinity), VoInvalidCoefficientException);
    EXPECT_THROW(other.addGeqConstraint({NotANumber}, 1), VoInvalidCoefficientException);
    EXPECT_NO_THROW(other.addGeqConstraint({1}, 1)) << "a refused constraint does not count as added";
    EXPECT_THROW(other.addGeqConstraint({1}, 1), VoLinearProblemException);
}

TEST(Simplex, CopiesGoOnAloneAndMovedFromOnesAreEmpty)
{
    Largest problem = Sample();
    Largest copy(1, 1);
    copy = problem;
    problem.run(5);
    EXPECT_FALSE(copy.solutionFound());
    EXPECT_EQ(copy.problemMatrix(), Sample().problemMatrix());

    const Largest moved = std::move(problem);
    EXPECT_EQ(moved.solutionValue(), 12);
    EXPECT_EQ(problem.numberParameters(), 0u);
    EXPECT_EQ(problem.solutionValue(), 0);
    EXPECT_EQ(problem.run(3), MakeVoPair(true, std::size_t(0)));
    EXPECT_THROW(problem.addLeqConstraint({}, 1), VoTooManyConstraintsException);
}

} // namespace
