#include <Maths/VoLinearProblemCertificate.h>

#include <Maths/VoLinearProblem.h>
#include <Maths/VoLinearProblemExceptions.h>
#include <Maths/VoLinearProblemSolution.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double Tolerance = 1e-9; // of the terms that a figure is the sum of
constexpr double GoodPart = 1e-3;  // of a bound

bool AllFinite(const VoVector<double>& values)
{
    return std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
}

double Largest(const VoVector<double>& values)
{
    return values.isEmpty() ? 0.0 : *std::max_element(values.begin(), values.end());
}

// A sum of products as if with twice the digits, so that what is left of terms that cancel each other is that of the
// numbers and not of the adding, and the size of its terms.
class Sum
{
public:
    void add(double a, double b)
    {
        if (a == 0 || b == 0)
            return;
        const double product = a * b;
        const double sum = m_high + product;
        const double added = sum - m_high;
        m_low += ((m_high - (sum - added)) + (product - added)) + std::fma(a, b, -product);
        m_high = sum;
        m_magnitude += std::fabs(product);
    }

    double value() const { return m_high + m_low; }
    double magnitude() const { return m_magnitude; } // of the terms, added up
    double tolerance() const { return Tolerance * m_magnitude; }

private:
    double m_high = 0;
    double m_low = 0;
    double m_magnitude = 0;
};

// Collects residuals and whether one of them counts.
struct Residuals
{
    VoVector<double> values;
    bool significant = false;

    void add(double residual, double tolerance)
    {
        values.pushBack(residual <= 0 ? 0.0 : residual);
        if (!(residual <= tolerance)) // NaN counts
            significant = true;
    }

    // What is below zero only by rounding may be taken for 0 without changing any of the sums that it is in.
    template <typename CoefficientIn>
    void addSign(double unknown, const VoVector<Sum>& sums, CoefficientIn coefficientIn, double weight,
                 const Sum& total)
    {
        bool matters = unknown != unknown;
        bool occurs = weight != 0;
        if (unknown < 0) {
            matters = std::fabs(weight * unknown) > total.tolerance();
            for (std::size_t i = 0; i < sums.size() && !matters; ++i) {
                const double coefficient = coefficientIn(i);
                occurs = occurs || coefficient != 0;
                matters = std::fabs(coefficient * unknown) > sums.data()[i].tolerance();
            }
        }
        add(-unknown, matters || !occurs ? 0.0 : std::numeric_limits<double>::infinity());
    }
};

Sum Product(const VoVector<double>& coefficients, const VoVector<double>& unknowns)
{
    Sum sum;
    for (std::size_t i = 0; i < coefficients.size(); ++i)
        sum.add(coefficients.data()[i], unknowns.data()[i]);
    return sum;
}

} // namespace

struct VoLinearProblemCertificate::Private
{
    Verdict verdict = Verdict::Infeasible;
    Residuals primal;
    Residuals dual;
    double gap = 0;
    double valueError = 0;
    bool zeroRatioPassedOver = false;
};

namespace {

// Constraints "<=" are broken upwards, constraints ">=" downwards.
double BreakingDirection(const VoLinearProblem& problem)
{
    return problem.sense() == VoLinearProblem::Sense::Maximise ? 1.0 : -1.0;
}

// How far each constraint's sum is above its bound.
VoVector<Sum> PrimalBalances(const VoLinearProblem& problem, const VoVector<double>& parameters)
{
    VoVector<Sum> balances(problem.numberConstraints());
    for (std::size_t i = 0; i < balances.size(); ++i) {
        balances.data()[i] = Product(problem.coefficients(i), parameters);
        balances.data()[i].add(problem.bound(i), -1);
    }
    return balances;
}

// How much more the multipliers pay for each parameter than its coefficient in the objective. For a problem to be made
// largest they prove a bound when that is nowhere below zero; for one to be made smallest, nowhere above.
VoVector<Sum> DualBalances(const VoLinearProblem& problem, const VoVector<double>& multipliers)
{
    VoVector<Sum> balances(problem.numberParameters());
    for (std::size_t i = 0; i < problem.numberConstraints(); ++i) {
        const VoVector<double>& coefficients = problem.coefficients(i);
        for (std::size_t j = 0; j < balances.size(); ++j)
            balances.data()[j].add(coefficients.data()[j], multipliers.data()[i]);
    }
    for (std::size_t j = 0; j < balances.size(); ++j)
        balances.data()[j].add(problem.objective().data()[j], -1);
    return balances;
}

// What all that is left in the inequalities is worth in the objective.
double Worth(const VoVector<Sum>& balances, const VoVector<double>& prices)
{
    double worth = 0;
    for (std::size_t i = 0; i < balances.size(); ++i)
        worth += std::fabs(balances.data()[i].value() * prices.data()[i]);
    return worth;
}

// Whether a constraint is broken by a good part of its bound, or of the largest one where it has none, however large
// the terms that cancel each other in it.
bool BreaksABound(const VoLinearProblem& problem, const VoVector<Sum>& balances)
{
    double largest = 0;
    for (std::size_t i = 0; i < balances.size(); ++i)
        largest = std::max(largest, std::fabs(problem.bound(i)));
    for (std::size_t i = 0; i < balances.size(); ++i) {
        const double bound = problem.bound(i) == 0 ? largest : std::fabs(problem.bound(i));
        if (bound > 0 && BreakingDirection(problem) * balances.data()[i].value() > GoodPart * bound)
            return true;
    }
    return false;
}

} // namespace

VoLinearProblemCertificate::VoLinearProblemCertificate(const VoLinearProblem& problem,
                                                       const VoLinearProblemSolution& solution)
{
    const VoVector<double> unknown(problem.numberConstraints());
    const VoVector<double>& parameters = solution.parameters;
    const VoVector<double>& multipliers = solution.multipliers.isEmpty() ? unknown : solution.multipliers;
    if (parameters.size() != problem.numberParameters() || multipliers.size() != problem.numberConstraints())
        throw VoInvalidNumberCoefficientsException();

    m_private = std::make_unique<Private>();
    m_private->zeroRatioPassedOver = solution.zeroRatioPassedOver;
    const double breaking = BreakingDirection(problem);
    const VoVector<Sum> primal = PrimalBalances(problem, parameters);
    const VoVector<Sum> dual = DualBalances(problem, multipliers);
    const Sum objective = Product(problem.objective(), parameters);
    Sum limit;
    for (std::size_t i = 0; i < primal.size(); ++i)
        limit.add(problem.bound(i), multipliers.data()[i]);

    for (const Sum& balance : primal)
        m_private->primal.add(breaking * balance.value(), balance.tolerance());
    for (std::size_t j = 0; j < parameters.size(); ++j)
        m_private->primal.addSign(
            parameters.data()[j], primal, [&](std::size_t i) { return problem.coefficients(i).data()[j]; },
            problem.objective().data()[j], objective);
    for (const Sum& balance : dual)
        m_private->dual.add(-breaking * balance.value(), balance.tolerance());
    for (std::size_t i = 0; i < multipliers.size(); ++i)
        m_private->dual.addSign(
            multipliers.data()[i], dual, [&](std::size_t j) { return problem.coefficients(i).data()[j]; },
            problem.bound(i), limit);

    m_private->gap = breaking * (limit.value() - objective.value());
    m_private->valueError = solution.value - objective.value();
    // An answer that runs away on a pivot that is nothing but rounding keeps each constraint within its own large
    // terms. What is left of those terms, at the prices of the other side, is then worth as much as the objective. The
    // smaller sum of the two is the measure: terms that ran away and cancel each other prove nothing of the other one.
    const double tolerance = std::min(objective.tolerance(), limit.tolerance());
    const double left = Worth(primal, multipliers) + Worth(dual, parameters);
    const bool kept = !m_private->primal.significant && AllFinite(parameters) && std::isfinite(solution.value);
    const bool proven = !m_private->dual.significant && AllFinite(multipliers) && left <= tolerance &&
                        std::fabs(m_private->gap) <= tolerance &&
                        std::fabs(m_private->valueError) <= objective.tolerance();
    if (kept && proven)
        m_private->verdict = Verdict::Optimal;
    else
        m_private->verdict = kept && !BreaksABound(problem, primal) ? Verdict::Feasible : Verdict::Infeasible;
}

VoLinearProblemCertificate::VoLinearProblemCertificate(const VoLinearProblemCertificate& other)
    : m_private(std::make_unique<Private>(other.state()))
{
}

VoLinearProblemCertificate::VoLinearProblemCertificate(VoLinearProblemCertificate&& other) noexcept = default;

VoLinearProblemCertificate& VoLinearProblemCertificate::operator=(const VoLinearProblemCertificate& other)
{
    m_private = std::make_unique<Private>(other.state());
    return *this;
}

VoLinearProblemCertificate&
VoLinearProblemCertificate::operator=(VoLinearProblemCertificate&& other) noexcept = default;

VoLinearProblemCertificate::~VoLinearProblemCertificate() = default;

const VoLinearProblemCertificate::Private& VoLinearProblemCertificate::state() const
{
    static const auto& movedFrom = *new Private; // outlives all static objects
    return m_private ? *m_private : movedFrom;
}

VoLinearProblemCertificate::Verdict VoLinearProblemCertificate::verdict() const
{
    return state().verdict;
}

const VoVector<double>& VoLinearProblemCertificate::primalResiduals() const
{
    return state().primal.values;
}

const VoVector<double>& VoLinearProblemCertificate::dualResiduals() const
{
    return state().dual.values;
}

double VoLinearProblemCertificate::largestPrimalResidual() const
{
    return Largest(primalResiduals());
}

double VoLinearProblemCertificate::largestDualResidual() const
{
    return Largest(dualResiduals());
}

double VoLinearProblemCertificate::gap() const
{
    return state().gap;
}

double VoLinearProblemCertificate::valueError() const
{
    return state().valueError;
}

bool VoLinearProblemCertificate::zeroRatioPassedOver() const
{
    return state().zeroRatioPassedOver;
}
