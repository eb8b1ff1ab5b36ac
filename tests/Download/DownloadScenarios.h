#pragma once

#include <string>
#include <vector>

namespace vo::test {

/// Runs the scenario named by the second argument in this process; prints what happened.
int RunScenario(int argc, char** argv);

/// Runs a scenario in a process of its own and gives what it printed; "timeout" when it does not end.
std::string OutcomeOf(const std::vector<std::string>& scenario);

} // namespace vo::test
