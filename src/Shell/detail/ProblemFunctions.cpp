#include <FileSystem/VoFilePath.h>
#include <Maths/VoLinearProblemCertificate.h>
#include <Maths/VoLinearProblemSolution.h>
#include <Maths/VoLinearProblemText.h>
#include <Shell/VoFunctionRegistry.h>
#include <Shell/detail/LibraryFunctions.h>
#include <Shell/detail/TableMaker.h>

namespace vo::detail {
namespace {

constexpr std::size_t MostIterations = 1'000'000;

const char* VerdictText(VoLinearProblemCertificate::Verdict verdict)
{
    switch (verdict) {
    case VoLinearProblemCertificate::Verdict::Optimal:
        return "optimal";
    case VoLinearProblemCertificate::Verdict::Feasible:
        return "feasible";
    case VoLinearProblemCertificate::Verdict::Infeasible:
        return "infeasible";
    }
    return "";
}

VoShellValue Solve(const VoFunctionCall& call)
{
    const VoLinearProblemText read = VoLinearProblemText::Read(call.value("file").asFilePath());
    const VoLinearProblemSolution solution =
        VoLinearProblemSolution::Solve(read.problem, call.value("iterations").asSize());
    TableMaker table({"name", "value"});
    table.add({"verdict", VerdictText(VoLinearProblemCertificate(read.problem, solution).verdict())});
    table.add({read.objectiveName, solution.value});
    for (std::size_t i = 0; i < solution.parameters.size(); ++i)
        table.add({read.parameterNames.at(i), solution.parameters.at(i)});
    return table.finish();
}

} // namespace

void AddProblemFunctions(VoFunctionRegistry& registry)
{
    registry.add(
        {"lp.solve",
         "Solves a linear problem in the common text format, and checks the answer. Gives a table: the verdict, "
         "the objective, each parameter.",
         {{"file", VoVariant::FilePath, "the problem"},
          {"iterations", VoVariant::Size, "of the solver, at most", VoShellValue::Form::Single,
           VoShellValue(MostIterations)}},
         Solve});
}

} // namespace vo::detail
