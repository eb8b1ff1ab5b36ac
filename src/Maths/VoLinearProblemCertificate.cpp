#include <Maths/VoLinearProblemCertificate.h>

#include <Maths/VoLinearProblem.h>
#include <Maths/VoLinearProblemExceptions.h>
#include <Maths/VoLinearProblemSolution.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double Tolerance = 1e-9;       // of the numbers that a residual is the difference of
constexpr double NoiseTolerance = 1e-11; // of the largest number about: what is left where all of those are noise

double LargestMagnitude(const VoVector<double>& values)
{
    double largest = 0;
    for (double value : values)
        largest = std::max(largest, std::fabs(value));
    return largest;
}

bool AllFinite(const VoVector<double>& values)
{
    return std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
}

double Largest(const VoVector<double>& values)
{
    return values.isEmpty() ? 0.0 : *std::max_element(values.begin(), values.end());
}

// A sum of products, with what its rounding is to be measured against.
struct Sum
{
    double value = 0;
    double magnitude = 0; // of the terms, added up
    double largestCoefficient = 0;

    void add(double coefficient, double unknown)
    {
        value += coefficient * unknown;
        magnitude += std::fabs(coefficient * unknown);
        largestCoefficient = std::max(largestCoefficient, std::fabs(coefficient));
    }
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

    // How far the sum lies above its bound.
    void addExcess(const Sum& sum, double bound, double sign, double largestUnknown)
    {
        add(sign * (sum.value - bound),
            Tolerance * (std::fabs(bound) + sum.magnitude) + NoiseTolerance * sum.largestCoefficient * largestUnknown);
    }

    void addSigns(const VoVector<double>& unknowns, double largestUnknown)
    {
        for (double unknown : unknowns)
            add(-unknown, NoiseTolerance * largestUnknown);
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

Residuals PrimalResiduals(const VoLinearProblem& problem, const VoVector<double>& parameters)
{
    Residuals residuals;
    const double largest = LargestMagnitude(parameters);
    for (std::size_t i = 0; i < problem.numberConstraints(); ++i)
        residuals.addExcess(Product(problem.coefficients(i), parameters), problem.bound(i), BreakingDirection(problem),
                            largest);
    residuals.addSigns(parameters, largest);
    return residuals;
}

// For a problem to be made largest, multipliers prove a bound when for each parameter they add up to at least its
// coefficient in the objective; for one to be made smallest, at most.
Residuals DualResiduals(const VoLinearProblem& problem, const VoVector<double>& multipliers)
{
    VoVector<Sum> sums(problem.numberParameters());
    for (std::size_t i = 0; i < problem.numberConstraints(); ++i) {
        const VoVector<double>& coefficients = problem.coefficients(i);
        for (std::size_t j = 0; j < sums.size(); ++j)
            sums.data()[j].add(coefficients.data()[j], multipliers.data()[i]);
    }

    Residuals residuals;
    const double largest = LargestMagnitude(multipliers);
    for (std::size_t j = 0; j < sums.size(); ++j)
        residuals.addExcess(sums.data()[j], problem.objective().data()[j], -BreakingDirection(problem), largest);
    residuals.addSigns(multipliers, largest);
    return residuals;
}

} // namespace

VoLinearProblemCertificate::VoLinearProblemCertificate(const VoLinearProblem& problem,
                                                       const VoLinearProblemSolution& solution)
{
    const VoVector<double> unknown(problem.numberConstraints());
    const VoVector<double>& multipliers = solution.multipliers.isEmpty() ? unknown : solution.multipliers;
    if (solution.parameters.size() != problem.numberParameters() || multipliers.size() != problem.numberConstraints())
        throw VoInvalidNumberCoefficientsException();

    d = std::make_unique<Private>();
    d->zeroRatioPassedOver = solution.zeroRatioPassedOver;
    d->primal = PrimalResiduals(problem, solution.parameters);
    d->dual = DualResiduals(problem, multipliers);

    const Sum objective = Product(problem.objective(), solution.parameters);
    Sum limit;
    for (std::size_t i = 0; i < problem.numberConstraints(); ++i)
        limit.add(problem.bound(i), multipliers.data()[i]);
    d->gap = BreakingDirection(problem) * (limit.value - objective.value);
    d->valueError = solution.value - objective.value;

    const double tolerance = Tolerance * (objective.magnitude + limit.magnitude);
    const bool valueIsObjective = std::fabs(d->valueError) <= tolerance;
    const bool gapIsClosed = std::fabs(d->gap) <= tolerance;
    if (d->primal.significant || !AllFinite(solution.parameters) || !std::isfinite(solution.value))
        d->verdict = Verdict::Infeasible;
    else if (d->dual.significant || !AllFinite(multipliers) || !gapIsClosed || !valueIsObjective)
        d->verdict = Verdict::Feasible;
    else
        d->verdict = Verdict::Optimal;
}

VoLinearProblemCertificate::VoLinearProblemCertificate(const VoLinearProblemCertificate& other)
    : d(std::make_unique<Private>(other.state()))
{
}

VoLinearProblemCertificate::VoLinearProblemCertificate(VoLinearProblemCertificate&& other) noexcept = default;

VoLinearProblemCertificate& VoLinearProblemCertificate::operator=(const VoLinearProblemCertificate& other)
{
    d = std::make_unique<Private>(other.state());
    return *this;
}

VoLinearProblemCertificate&
VoLinearProblemCertificate::operator=(VoLinearProblemCertificate&& other) noexcept = default;

VoLinearProblemCertificate::~VoLinearProblemCertificate() = default;

const VoLinearProblemCertificate::Private& VoLinearProblemCertificate::state() const
{
    static const Private movedFrom;
    return d ? *d : movedFrom;
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
