#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>

#include <Core/VoException.h>
#include <Maths/VoLinearProblemCertificate.h>
#include <Maths/VoLinearProblemSolution.h>
#include <Maths/VoLinearProblemText.h>

#include <limits>

namespace vo::tool {
namespace {

using Verdict = VoLinearProblemCertificate::Verdict;

constexpr std::int64_t DefaultIterations = 1'000'000;

VoString Text(double value)
{
    return VoString(QString::number(value, 'g', 12));
}

VoString VerdictText(Verdict verdict)
{
    switch (verdict) {
    case Verdict::Optimal:
        return "optimal";
    case Verdict::Feasible:
        return "feasible, not proven optimal";
    case Verdict::Infeasible:
        return "infeasible";
    }
    return VoString();
}

VoLinearProblemText Read(Session& session)
{
    return Doing(session.arguments, "read", session.arguments.argument(0),
                 [&] { return VoLinearProblemText::Read(session.arguments.fileArgument(0)); });
}

VoLinearProblemSolution Solve(Session& session, const VoLinearProblem& problem, std::int64_t mostIterations)
{
    try {
        return VoLinearProblemSolution::Solve(problem, static_cast<std::size_t>(mostIterations));
    } catch (const VoInvalidCallException& exception) {
        throw Failure("cannot solve " + session.arguments.argument(0) + ": " + exception.message() +
                      ": the problem has no finite optimum, or too many bounds of zero");
    }
}

void ShowSolution(Console& console, const VoLinearProblemText& read, const VoLinearProblemSolution& solution)
{
    console.fact("value", "value", Text(solution.value), solution.value);
    console.list("parameters");
    for (std::size_t i = 0; i < solution.parameters.size(); ++i) {
        const VoString& name = read.parameterNames.at(i);
        const double value = solution.parameters.at(i);
        console.row("parameters", "  " + Printable(name) + " = " + Text(value),
                    JsonRecord()("name", name)("value", value));
    }
    console.fact("iterations", "iterations", solution.iterations);
    console.member("found", solution.found);
}

void ShowCertificate(Console& console, const VoLinearProblemCertificate& certificate)
{
    const auto figure = [&console](const char* key, const char* label, double value) {
        console.fact(key, label, Text(value), value);
    };
    const VoString verdict = VerdictText(certificate.verdict());
    console.fact("verdict", "verdict", verdict, verdict);
    figure("primalResidual", "primal residual", certificate.largestPrimalResidual());
    figure("dualResidual", "dual residual", certificate.largestDualResidual());
    figure("gap", "gap", certificate.gap());
    figure("valueError", "value error", certificate.valueError());
    console.member("zeroRatioPassedOver", certificate.zeroRatioPassedOver());
    if (certificate.zeroRatioPassedOver())
        console.note("a constraint that allowed no step was passed over: the answer may be wrong");
}

ExitCode Run(Session& session)
{
    const std::int64_t mostIterations =
        session.arguments.integer("iterations", DefaultIterations, 0, std::numeric_limits<std::int64_t>::max());
    const VoLinearProblemText problem = Read(session);
    const VoLinearProblemSolution solution = Solve(session, problem.problem, mostIterations);
    const VoLinearProblemCertificate certificate(problem.problem, solution);
    ShowSolution(session.console, problem, solution);
    ShowCertificate(session.console, certificate);
    if (!solution.found)
        session.console.note("stopped after " + VoString(solution.iterations) + " iterations without a solution");
    return certificate.verdict() == Verdict::Optimal ? ExitCode::Done : ExitCode::NotProven;
}

} // namespace

Command LpCommand()
{
    return {
        "lp",
        "PROBLEM",
        "solve a linear problem and check the answer",
        "Solves a linear problem in the common text format: one objective, \"<=\" constraints with bounds that are\n"
        "not negative when maximizing; as many \">=\" constraints as variables when minimizing. Bounds may only say\n"
        "what holds anyhow: \"x >= 0\", \"x <= +inf\". Anything else is refused with the number of the line. The\n"
        "answer is checked apart from the solver, and the exit code is 7 unless it is proven optimal.\n",
        {{"iterations", "N", "make at most N iterations, instead of 1000000"}},
        1,
        1,
        Run};
}

} // namespace vo::tool
