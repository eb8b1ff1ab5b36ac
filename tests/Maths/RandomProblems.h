#pragma once

#include <Core/VoString.h>
#include <Maths/VoLinearProblem.h>
#include <Maths/VoRandom.h>

#include <cstdio>
#include <string>

namespace vo::test {

/// Coefficients and bounds all above zero, of three orders of magnitude.
inline VoLinearProblem PositiveProblem(VoRandom& random, VoLinearProblem::Sense sense, std::size_t parameters,
                                       std::size_t constraints)
{
    const auto number = [&] { return (0.01 + random.uniform()) * (random.integer(0, 3) == 0 ? 10 : 1); };
    const auto numbers = [&](std::size_t count) {
        VoVector<double> values;
        for (std::size_t i = 0; i < count; ++i)
            values.pushBack(number());
        return values;
    };
    VoLinearProblem problem(sense, numbers(parameters));
    for (std::size_t i = 0; i < constraints; ++i)
        problem.addConstraint(numbers(parameters), number());
    return problem;
}

/// The problem as text, every number exactly.
inline std::string ProblemText(const VoLinearProblem& problem)
{
    const bool maximise = problem.sense() == VoLinearProblem::Sense::Maximise;
    const auto number = [](double value) {
        char text[40];
        std::snprintf(text, sizeof text, "%+.17g", value);
        return std::string(text);
    };
    const auto terms = [&](const VoVector<double>& coefficients) {
        std::string text;
        for (std::size_t i = 0; i < coefficients.size(); ++i)
            text += " " + number(coefficients[i]) + " x" + std::to_string(i) + (i % 5 == 4 ? "\n" : "");
        return text;
    };
    std::string text = std::string(maximise ? "maximize" : "minimize") + "\n obj:" + terms(problem.objective());
    text += "\nsubject to\n";
    for (std::size_t i = 0; i < problem.numberConstraints(); ++i)
        text += " r" + std::to_string(i) + ":" + terms(problem.coefficients(i)) + (maximise ? " <= " : " >= ") +
                number(problem.bound(i)) + "\n";
    return text + "end\n";
}

} // namespace vo::test
