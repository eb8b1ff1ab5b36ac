#pragma once

#include <Core/VoExport.h>
#include <Core/VoVector.h>

#include <memory>

class VoLinearProblem;
struct VoLinearProblemSolution;

/// A check of an answer to a linear problem that trusts nobody: from the problem's own numbers it finds out whether the
/// answer keeps the constraints and whether the multipliers that come with it prove that nothing better does.
///
/// Ask for one after VoSimplexAlgorithm whenever the problem may be degenerate, which includes every problem with a
/// bound of 0, with coefficients that are zero or negative, or with more constraints meeting in a point than it takes:
/// there the solver can give a wrong answer with every sign of success. Asking costs a few passes over the problem's
/// numbers, whatever the number of steps that solving it took. An answer that is Verdict::Optimal is right whatever
/// gave it.
///
///     const auto solution = VoLinearProblemSolution::Solve(problem, 10000);
///     const VoLinearProblemCertificate certificate(problem, solution);
///     if (certificate.verdict() != VoLinearProblemCertificate::Verdict::Optimal)
///         refuse();
///
/// Rounding is allowed for: a residual counts from 1e-9 of the terms that it is the sum of, its bound and each product.
/// For Verdict::Optimal what is left in all constraints must besides be worth no more than 1e-9 of the objective, so
/// that no answer passes because it is large. A value.
class VOCORE_EXPORT VoLinearProblemCertificate
{
public:
    /// What the check found.
    enum class Verdict
    {
        Optimal,   ///< All constraints are kept and nothing better exists: proven.
        Feasible,  ///< All constraints are kept, but the optimum may be elsewhere, or the value is not the objective's.
        Infeasible ///< A constraint is broken, a parameter is negative, or a number is infinite or NaN.
    };

    /// Checks an answer.
    /// @throws VoInvalidNumberCoefficientsException when there is not one value for each parameter, or neither one
    /// multiplier for each constraint nor none at all
    VoLinearProblemCertificate(const VoLinearProblem& problem, const VoLinearProblemSolution& solution);
    VoLinearProblemCertificate(const VoLinearProblemCertificate& other);                ///< The same findings.
    VoLinearProblemCertificate(VoLinearProblemCertificate&& other) noexcept;            ///< Takes the findings over.
    VoLinearProblemCertificate& operator=(const VoLinearProblemCertificate& other);     ///< The same findings.
    VoLinearProblemCertificate& operator=(VoLinearProblemCertificate&& other) noexcept; ///< Takes the findings over.
    ~VoLinearProblemCertificate();

    Verdict verdict() const; ///< The judgement; Infeasible for a moved-from certificate.

    /// How far each constraint is broken, then how far each parameter is below zero; 0 where it is not.
    const VoVector<double>& primalResiduals() const;
    /// How much the multipliers pay too little for each parameter, then how far each multiplier is below zero; 0 where
    /// not.
    const VoVector<double>& dualResiduals() const;
    double largestPrimalResidual() const; ///< The largest of primalResiduals().
    double largestDualResidual() const;   ///< The largest of dualResiduals().

    /// The most that a better answer could gain, as far as the multipliers show: the distance between the objective at
    /// the parameters and the bound that the multipliers set.
    double gap() const;
    /// The claimed value less the objective at the parameters.
    double valueError() const;
    /// Whether the solver passed over a row that allowed no step at all: the usual cause of a wrong answer.
    bool zeroRatioPassedOver() const;

private:
    struct Private;

    const Private& state() const;

    std::unique_ptr<Private> m_private; // null when moved from
};
