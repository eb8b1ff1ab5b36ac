// Linear problems with their proofs, samples with their statistics, and time.

#include <Core/VoString.h>
#include <Core/VoVector.h>
#include <Maths/VoLinearProblemCertificate.h>
#include <Maths/VoLinearProblemSolution.h>
#include <Maths/VoLinearProblemText.h>
#include <Maths/VoRandom.h>
#include <Maths/VoStatistics.h>
#include <Time/VoDateTime.h>
#include <Time/VoTimeDuration.h>
#include <Time/VoTimeZone.h>

#include <iostream>

namespace {

void optimise()
{
    //! [solve]
    const auto text = VoLinearProblemText::Parse("maximize profit: 3 x + 2 y\n"
                                                 "subject to\n"
                                                 "  hours: x + y <= 4\n"
                                                 "  steel: x + 3 y <= 6\n"
                                                 "end\n");
    const auto solution = VoLinearProblemSolution::Solve(text.problem, 100); // at most 100 steps
    for (std::size_t i = 0; i < text.parameterNames.size(); ++i)
        std::cout << text.parameterNames.at(i) << " = " << solution.parameters.at(i) << ", ";
    const VoLinearProblemCertificate certificate(text.problem, solution); // judged apart from how it was found
    std::cout << text.objectiveName << " = " << solution.value
              << (certificate.verdict() == VoLinearProblemCertificate::Verdict::Optimal ? ", proven\n"
                                                                                        : ", unproven\n");
    //! [solve]
}

void sample()
{
    //! [sample]
    VoRandom random(1); // the same seed gives the same numbers on every platform
    VoStatistics resistance;
    for (int i = 0; i < 10000; ++i)
        resistance.add(random.truncatedNormal(4700, 47, 4500, 4900)); // ohms
    std::cout << resistance.count() << ' ' << (resistance.mean() > 4690 && resistance.mean() < 4710) << ' '
              << (resistance.yield(4606, 4794) > 0.9) << '\n';
    //! [sample]
}

void time()
{
    //! [time]
    const VoDateTime start = VoDateTime::FromZone({2026, 3, 28, 12}, VoTimeZone("Europe/Berlin"));
    std::cout << start.addDays(1) - start << '\n';      // the clocks change in that night
    std::cout << (start + VoHours(24)).toUtc() << '\n'; // a day of hours, told by another zone
    std::cout << VoTimeDuration(VoMilliseconds(90500)) << '\n';
    //! [time]
}

} // namespace

int main()
{
    optimise();
    sample();
    time();
}

/* Prints:
x = 4, y = 0, profit = 12, proven
10000 1 1
23 h
2026-03-29T11:00:00.000000000Z
1.508 min
*/
