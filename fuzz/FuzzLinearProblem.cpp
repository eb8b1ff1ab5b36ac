#include "Fuzz.h"

#include <Maths/VoLinearProblemCertificate.h>
#include <Maths/VoLinearProblemSolution.h>
#include <Maths/VoLinearProblemText.h>

#include <cmath>
#include <string>

using namespace vo::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const VoString text(std::string(reinterpret_cast<const char*>(data), size));
    Allow([&] {
        const VoLinearProblemText read = VoLinearProblemText::Parse(text);
        const VoLinearProblem& problem = read.problem;
        Require(read.parameterNames.size() == problem.numberParameters(), "every parameter has a name");
        Require(read.constraintNames.size() == problem.numberConstraints(), "every constraint has a name");
        const VoLinearProblemSolution solution = VoLinearProblemSolution::Solve(problem, 1000);
        Require(solution.iterations <= 1000, "the limit of the iterations is kept");
        Require(solution.parameters.size() == problem.numberParameters(), "every parameter has a value");
        const VoLinearProblemCertificate certificate(problem, solution);
        Require(certificate.verdict() != VoLinearProblemCertificate::Verdict::Optimal || std::isfinite(certificate.gap()),
                "an answer that counts as optimal has a finite gap");
    });
    return 0;
}
