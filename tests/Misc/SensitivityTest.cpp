#include "ReportFixture.h"

#include <SpecialNumbers.h>

using vo::test::NotANumber;

namespace {

using vo::test::Case;
using vo::test::LotItem;
using vo::test::Result;

// A lot item of which the sample result (reference 10, delta 1) has that sensitivity: 0.1 * 1 / (value - 1).
XMLReportInfo::LotItem ItemOf(double sensitivity)
{
    return LotItem("", 1, 1 + 0.1 / sensitivity);
}

XMLReportInfo::LotItem Unchanged()
{
    return LotItem("", 5, 5);
}

TEST(Sensitivity, StatesFollowTheLastItemLookedAt)
{
    struct Row
    {
        const char* what;
        std::int32_t id;
        XMLReportInfo::Result result;
        std::vector<XMLReportInfo::LotItem> items;
        std::int32_t state;
        double sensitivity;
    };
    const auto sample = Result(10, 1);
    const Row rows[] = {
        {"one item", 2, sample, {LotItem("", 4, 5)}, 0, 0.4},
        {"a falling parameter", 2, sample, {LotItem("", 4, 3)}, 0, -0.4},
        {"a nominal value of 0", 2, sample, {LotItem("", 0, 3)}, 0, 0},
        {"an unchanged parameter", 2, sample, {Unchanged()}, 1, 0},
        {"a result of 0", 2, Result(0, 1), {LotItem("", 4, 5)}, 1, 0},
        {"a result of -0", 2, Result(-0.0, 1), {LotItem("", 4, 5)}, 1, 0},
        {"no item", 2, sample, {}, 1, 0},
        {"the nominal case", 1, Result(0, 1), {Unchanged()}, 0, 0},
        {"a difference of 2e-7",
         2,
         sample,
         {LotItem("", 4, 5), LotItem("", 4 * (1 + 2e-7), 5 * (1 + 2e-7) - 8e-7)},
         2,
         0},
        {"a difference of 1e-8", 2, sample, {ItemOf(0.5), ItemOf(0.5 * (1 + 1e-8))}, 0, 0.5},
        {"a difference just beyond 1e-7", 2, sample, {ItemOf(0.5), ItemOf(0.5 * (1 + 1.1e-7))}, 2, 0},
        {"a difference just below 1e-7", 2, sample, {ItemOf(-0.5), ItemOf(-0.5 * (1 + 0.9e-7))}, 0, -0.5},
        {"a later division by zero", 2, sample, {ItemOf(0.5), Unchanged()}, 1, 0},
        {"a first division by zero, masked", 2, sample, {Unchanged(), ItemOf(0.5)}, 2, 0},
        {"a first division by zero, masked by a small one", 2, sample, {Unchanged(), LotItem("", 0, 1)}, 0, 0},
        {"divisions by zero only", 2, sample, {Unchanged(), Unchanged()}, 1, 0},
        {"an inconsistent item before a division by zero", 2, sample, {ItemOf(0.5), ItemOf(0.6), Unchanged()}, 2, 0},
        {"a division by zero between two that agree", 2, sample, {ItemOf(0.5), Unchanged(), ItemOf(0.5)}, 1, 0},
    };
    for (const Row& row : rows) {
        const XMLReportInfo info = Case(row.id, {row.result, row.result}, row.items);
        for (const XMLReportInfo::Result& result : info.results) {
            EXPECT_EQ(result.sensitivityState, row.state) << row.what;
            EXPECT_DOUBLE_EQ(result.sensitivity, row.sensitivity) << row.what;
        }
    }
}

TEST(Sensitivity, NotANumberCountsAsConsistent)
{
    const XMLReportInfo info = Case(3, {Result(10, NotANumber)}, {LotItem("", 4, 5), LotItem("", 4, 6)});
    EXPECT_EQ(info.results[0].sensitivityState, 0);
    EXPECT_TRUE(std::isnan(info.results[0].sensitivity));
}

TEST(Sensitivity, IndicesThatNameNothingDivideByZero)
{
    const XMLReportInfo info = Case(2, {Result(10, 1)}, {LotItem("", 4, 5)});
    const int highest = std::numeric_limits<int>::max();
    for (const auto& [lot, result] : {std::pair{-1, 0}, {1, 0}, {0, 1}, {0, -1}, {highest, highest}}) {
        bool flag = false;
        EXPECT_EQ(info.getNormalisedSensitivity(lot, result, &flag), 0.0);
        EXPECT_TRUE(flag) << lot << ' ' << result;
        EXPECT_EQ(info.getNormalisedSensitivity(lot, result, nullptr), 0.0);
    }
    bool flag = true;
    EXPECT_DOUBLE_EQ(info.getNormalisedSensitivity(0, 0, &flag), 0.4);
    EXPECT_FALSE(flag);
}

TEST(Sensitivity, DescribesParametersByWhatIsKnown)
{
    using Parameter = XMLReportInfo::Parameter;
    const std::pair<Parameter, const char*> rows[] = {
        {{}, ""},
        {{"R1", "RES", "3", "R", "5%", "", ""}, "Refdes R1 Param RES Lot: 3 DevParam R (TOL=5%)"},
        {{"Q1", "", "", "", "", "2", ""}, "Ref: Q1 (term 2)"},
        {{"Q1", "", "", "BF", "", "2", ""}, "Refdes Q1 DevParam BF Term 2"},
        {{"", "", "", "", "", "2", ""}, "Term 2"},
        {{"", "", "A", "", "10", "", "temp"}, "Lot: A Var: temp (TOL=10)"},
    };
    for (const auto& [parameter, description] : rows)
        EXPECT_EQ(parameter.description(), YString(description));
}

} // namespace
