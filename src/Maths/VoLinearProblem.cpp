#include <Maths/VoLinearProblem.h>

#include <Core/VoString.h>
#include <Maths/VoLinearProblemExceptions.h>
#include <Maths/detail/ProblemLimits.h>

#include <algorithm>
#include <cmath>

using vo::detail::RequireFinite;

struct VoLinearProblem::Private
{
    Sense sense = Sense::Maximise;
    VoVector<double> objective;
    VoVector<VoVector<double>> coefficients; // a row for each constraint
    VoVector<double> bounds;
};

VoLinearProblem::VoLinearProblem()
    : VoLinearProblem(Sense::Maximise, {})
{
}

VoLinearProblem::VoLinearProblem(Sense sense, const VoVector<double>& objective)
{
    std::for_each(objective.begin(), objective.end(), RequireFinite);
    m_private = std::make_unique<Private>();
    m_private->sense = sense;
    m_private->objective = objective;
}

VoLinearProblem::VoLinearProblem(const VoLinearProblem& other)
    : m_private(std::make_unique<Private>(other.state()))
{
}

VoLinearProblem::VoLinearProblem(VoLinearProblem&& other) noexcept = default;

VoLinearProblem& VoLinearProblem::operator=(const VoLinearProblem& other)
{
    m_private = std::make_unique<Private>(other.state());
    return *this;
}

VoLinearProblem& VoLinearProblem::operator=(VoLinearProblem&& other) noexcept = default;

VoLinearProblem::~VoLinearProblem() = default;

const VoLinearProblem::Private& VoLinearProblem::state() const
{
    static const auto& movedFrom = *new Private; // outlives all static objects
    return m_private ? *m_private : movedFrom;
}

void VoLinearProblem::addConstraint(const VoVector<double>& coefficients, double bound)
{
    if (coefficients.size() != numberParameters())
        throw VoInvalidNumberCoefficientsException();
    std::for_each(coefficients.begin(), coefficients.end(), RequireFinite);
    RequireFinite(bound);
    if (!m_private)
        m_private = std::make_unique<Private>();
    m_private->bounds.reserve(m_private->bounds.size() + 1);
    m_private->coefficients.pushBack(coefficients);
    m_private->bounds.pushBack(bound);
}

VoLinearProblem::Sense VoLinearProblem::sense() const
{
    return state().sense;
}

std::size_t VoLinearProblem::numberParameters() const
{
    return state().objective.size();
}

std::size_t VoLinearProblem::numberConstraints() const
{
    return state().bounds.size();
}

const VoVector<double>& VoLinearProblem::objective() const
{
    return state().objective;
}

const VoVector<double>& VoLinearProblem::coefficients(std::size_t constraint) const
{
    return state().coefficients.at(constraint);
}

double VoLinearProblem::bound(std::size_t constraint) const
{
    return state().bounds.at(constraint);
}
