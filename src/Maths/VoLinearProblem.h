#pragma once

#include <Core/VoExport.h>
#include <Core/VoVector.h>

#include <cstddef>
#include <memory>

/// A linear problem as data: an objective to be made largest subject to constraints "<=", or smallest subject to
/// constraints ">=", over parameters that are not negative.
///
/// It solves nothing: VoLinearProblemSolution::Solve() does, and VoLinearProblemCertificate judges an answer. A value;
/// a moved-from problem has no parameters and no constraints.
class VOCORE_EXPORT VoLinearProblem
{
public:
    /// What is asked of the objective.
    enum class Sense
    {
        Maximise, ///< Constraints are "coefficients * parameters <= bound".
        Minimise  ///< Constraints are "coefficients * parameters >= bound".
    };

    VoLinearProblem(); ///< Nothing to be maximised.
    /// A problem without constraints, with one parameter for each coefficient of the objective.
    /// @throws VoInvalidCoefficientException when a coefficient is infinite or not a number
    VoLinearProblem(Sense sense, const VoVector<double>& objective);
    VoLinearProblem(const VoLinearProblem& other);                ///< The same problem.
    VoLinearProblem(VoLinearProblem&& other) noexcept;            ///< Takes the problem over.
    VoLinearProblem& operator=(const VoLinearProblem& other);     ///< The same problem.
    VoLinearProblem& operator=(VoLinearProblem&& other) noexcept; ///< Takes the problem over.
    ~VoLinearProblem();

    /// Adds a constraint of the kind that goes with the sense.
    /// @throws VoInvalidNumberCoefficientsException when there is not one coefficient for each parameter
    /// @throws VoInvalidCoefficientException when a coefficient or the bound is infinite or not a number
    void addConstraint(const VoVector<double>& coefficients, double bound);

    Sense sense() const;                       ///< What is asked of the objective.
    std::size_t numberParameters() const;      ///< Coefficients in the objective and in each constraint.
    std::size_t numberConstraints() const;     ///< Constraints added so far.
    const VoVector<double>& objective() const; ///< The objective's coefficients.
    /// The coefficients of a constraint.
    /// @throws VoIndexOutOfBoundsException
    const VoVector<double>& coefficients(std::size_t constraint) const;
    /// The bound of a constraint.
    /// @throws VoIndexOutOfBoundsException
    double bound(std::size_t constraint) const;

private:
    struct Private;

    const Private& state() const;

    std::unique_ptr<Private> m_private; // null when moved from
};
