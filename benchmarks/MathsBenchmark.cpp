#include "InterleavedTiming.h"
#include "ProcessTiming.h"
#include "ResultRow.h"

#include <Maths/VoLinearProblem.h>
#include <Maths/VoLinearProblemCertificate.h>
#include <Maths/VoLinearProblemSolution.h>
#include <Maths/VoRandom.h>
#include <Maths/VoSimplexAlgorithm.h>

#ifdef VOCORE_HAS_GLPK
#include <glpk.h>
#endif

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iomanip>
#include <vector>

/// @file
/// The simplex solver beside the same steps through checked access to the matrix, and beside another library's primal
/// method where that is installed. Loading the problem counts on all sides. The floor is the checked access; the
/// ratio is the other library's time over ours. Last, whole programs that read a problem's text, solve it and answer.

namespace {

VoLinearProblem Problem(std::size_t size, double filled)
{
    VoRandom random(size);
    const auto number = [&] { return 0.05 + random.uniform(); };
    VoVector<double> objective(size);
    for (double& coefficient : objective)
        coefficient = number();
    VoLinearProblem problem(VoLinearProblem::Sense::Maximise, objective);
    for (std::size_t i = 0; i < size; ++i) {
        VoVector<double> coefficients(size);
        for (std::size_t j = 0; j < size; ++j)
            if (filled >= 1 || i == j || random.uniform() < filled)
                coefficients[j] = number();
        problem.addConstraint(coefficients, number());
    }
    return problem;
}

// The same method with every access to the matrix checked.
double Checked(const VoLinearProblem& problem)
{
    const std::size_t n = problem.numberParameters();
    const std::size_t m = problem.numberConstraints();
    SimplexMatrix tableau(m + 1, n + m + 2);
    for (std::size_t r = 0; r < m; ++r) {
        for (std::size_t c = 0; c < n; ++c)
            tableau.at(r, c) = problem.coefficients(r)[c];
        tableau.at(r, n + m + 1) = problem.bound(r);
    }
    for (std::size_t r = 0; r <= m; ++r)
        tableau.at(r, n + r) = 1;
    for (std::size_t c = 0; c < n; ++c)
        tableau.at(m, c) = -problem.objective()[c];
    for (;;) {
        std::size_t column = 0;
        for (std::size_t c = 1; c < n + m; ++c)
            if (tableau.at(m, c) < tableau.at(m, column))
                column = c;
        if (!(tableau.at(m, column) < 0))
            return tableau.at(m, n + m + 1);
        std::size_t row = m + 1;
        double smallest = 0;
        for (std::size_t r = 0; r <= m; ++r) {
            const double entry = tableau.at(r, column);
            const double ratio = tableau.at(r, n + m + 1) / entry;
            if (entry != 0 && ratio > 0 && (row > m || ratio < smallest)) {
                row = r;
                smallest = ratio;
            }
        }
        const double pivot = tableau.at(row, column);
        for (std::size_t c = 0; c < n + m + 2; ++c)
            tableau.at(row, c) /= pivot;
        for (std::size_t r = 0; r <= m; ++r) {
            const double factor = tableau.at(r, column);
            for (std::size_t c = 0; r != row && c < n + m + 2; ++c)
                tableau.at(r, c) -= factor * tableau.at(row, c);
        }
    }
}

double Ours(const VoLinearProblem& problem)
{
    return VoLinearProblemSolution::Solve(problem, 1000000).value;
}

#ifdef VOCORE_HAS_GLPK
double Other(const VoLinearProblem& problem)
{
    const int n = static_cast<int>(problem.numberParameters());
    const int m = static_cast<int>(problem.numberConstraints());
    std::vector<int> rows(1), columns(1);
    std::vector<double> values(1);
    glp_prob* other = glp_create_prob();
    glp_set_obj_dir(other, GLP_MAX);
    glp_add_rows(other, m);
    glp_add_cols(other, n);
    for (int j = 0; j < n; ++j) {
        glp_set_col_bnds(other, j + 1, GLP_LO, 0, 0);
        glp_set_obj_coef(other, j + 1, problem.objective()[static_cast<std::size_t>(j)]);
    }
    for (int i = 0; i < m; ++i) {
        const auto& coefficients = problem.coefficients(static_cast<std::size_t>(i));
        glp_set_row_bnds(other, i + 1, GLP_UP, 0, problem.bound(static_cast<std::size_t>(i)));
        for (int j = 0; j < n; ++j) {
            const double value = coefficients[static_cast<std::size_t>(j)];
            if (value == 0)
                continue;
            rows.push_back(i + 1);
            columns.push_back(j + 1);
            values.push_back(value);
        }
    }
    glp_load_matrix(other, static_cast<int>(values.size()) - 1, rows.data(), columns.data(), values.data());
    glp_smcp parameters;
    glp_init_smcp(&parameters);
    parameters.msg_lev = GLP_MSG_OFF;
    parameters.meth = GLP_PRIMAL;
    glp_simplex(other, &parameters);
    const double value = glp_get_obj_val(other);
    glp_delete_prob(other);
    return value;
}
#endif

void Measure(std::size_t size, double filled, double goal)
{
    const VoLinearProblem problem = Problem(size, filled);
    double sink = 0;
    std::vector<std::function<void()>> ways = {[&] { sink += Ours(problem); }, [&] { sink += Checked(problem); }};
#ifdef VOCORE_HAS_GLPK
    if (std::fabs(Ours(problem) / Other(problem) - 1) > 1e-9) {
        std::printf("simplex %zu: the two solvers disagree\n", size);
        std::exit(1);
    }
    ways.push_back([&] { sink += Other(problem); });
#endif
    const std::vector<double> times = IsSmokeRun() ? InterleavedTiming(ways, 1, 0) : InterleavedTiming(ways);
    char job[48];
    std::snprintf(job, sizeof job, "simplex %s %zu (%zu steps)", filled < 1 ? "10% filled" : "dense", size,
                  VoLinearProblemSolution::Solve(problem, 1000000).iterations);
    ResultRow row;
    row.job = job;
    row.ours = Milliseconds(times[0]);
    row.floor = Milliseconds(times[1]) + " checked";
    row.atLeast = goal;
    if (times.size() > 2) {
        row.peer = Milliseconds(times[2]) + " glpk";
        row.ratio = times[2] / times[0];
    }
    PrintRow(row);
    if (sink == 0)
        std::printf("\n");
}

void Write(const VoLinearProblem& problem, const std::string& path)
{
    std::ofstream text(path);
    text << std::setprecision(17);
    const auto sum = [&](const VoVector<double>& coefficients) {
        for (std::size_t j = 0; j < coefficients.size(); ++j)
            if (coefficients[j] != 0)
                text << " + " << coefficients[j] << " x" << j << '\n';
    };
    text << "maximize\n";
    sum(problem.objective());
    text << "subject to\n";
    for (std::size_t i = 0; i < problem.numberConstraints(); ++i) {
        sum(problem.coefficients(i));
        text << " <= " << problem.bound(i) << '\n';
    }
    text << "end\n";
}

void MeasurePrograms(std::size_t size)
{
    const char* const build = std::getenv("VOCORE_BUILD");
    if (build == nullptr || !HasProgram("glpsol")) {
        std::printf("No other program that solves: its row is missing.\n");
        return;
    }
    const BenchmarkFolder folder;
    const std::string path = folder / "problem.lp";
    Write(Problem(size, 1), path);
    const std::string answer = " " + path + " > " + folder / "answer";
    const auto costs = TakeTurns({Program(build + std::string("/tools/vo/vo lp -q") + answer),
                                  Program("glpsol --primal --output " + (folder / "solution") + " --lp" + answer)},
                                 IsSmokeRun() ? 1 : 7);
    ResultRow row;
    row.job = "vo lp, dense " + std::to_string(size) + ", the text read and the answer judged";
    row.ours = Milliseconds(costs[0].processor);
    row.peer = Milliseconds(costs[1].processor) + " glpsol";
    row.ratio = costs[1].processor / costs[0].processor;
    PrintRow(row);
}

} // namespace

int main()
{
    for (std::size_t size : {50, 200, 500})
        Measure(size, 1, 5);
    Measure(50, 0.1, 2);
    Measure(200, 0.1, 1 / 1.3);
    Measure(500, 0.1, 1 / 3.5);
    MeasurePrograms(300);
    return 0;
}
