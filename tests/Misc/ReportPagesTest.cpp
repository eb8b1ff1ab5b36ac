#include "ReportFixture.h"

#include <Approved.h>
#include <CommaLocale.h>
#include <FileSizeLimit.h>
#include <Misc/XMLReport/ReportPages.h>
#include <SpecialNumbers.h>

#include <regex>

#if defined(__unix__)
#include <sys/stat.h>
#endif

using vo::test::Infinity;
using vo::test::NotANumber;

namespace {

using vo::test::Case;
using vo::test::Cases;
using vo::test::LotItem;
using vo::test::Result;
using vo::test::Table;

XMLReportHeader Header()
{
    XMLReportHeader header;
    header.date = "2024-05-01 12:00";
    header.card = ".SENS V(out) <all> & \"more\"";
    header.title = "100%s of R1 < 10k & \xc2\xb5"
                   "A";
    header.cores = 4;
    header.resultNames = {"Gain <dB>", "Noise & %d"};
    return header;
}

XMLReportInfo Named(XMLReportInfo info, const char* reference)
{
    info.reference = reference;
    return info;
}

XMLReportInfo Seeded(XMLReportInfo info, std::int64_t seed)
{
    info.seed = seed;
    return info;
}

Cases SampleCases()
{
    return Table({
        Case(1, {Result(10, 0), Result(1e-9, 0)}, {}),
        Case(2, {Result(10, 1), Result(0, 2)}, {LotItem("R1 < 10k & \"x\" %s %n", 4, 5)}),
        Case(3, {Result(-20, 1.5), Result(1e-9, -1e-10)},
             {LotItem("C1", 4.7e-12, 5e-12), LotItem("C2 \xc2\xb5\xff\x01", 1, 2), LotItem("", -0.0, Infinity)}),
        Named(Case(5, {Result(123456789, 0.1)}, {}), "no item, one result"),
        Case(7, {Result(1, 1), Result(2, 2), Result(3, 3)}, {LotItem("L", 1, 2), LotItem("L2", 2, 5)}),
    });
}

class ReportPages : public vo::test::ReportTest
{
protected:
    void expectApproved(const char* name) const
    {
        vo::test::ExpectApproved(m_folder.read(name), std::string(VOCORE_APPROVED "/") + name);
    }

    // The case numbers in the order in which the page shows them.
    std::vector<int> order(const Cases& cases, int sortColumn)
    {
        EXPECT_TRUE(sp_BuildHTMLSensitivityReport(path("order.html"), "", cases, Header(), sortColumn));
        const std::string page = m_folder.read("order.html");
        const std::regex caseNumber("\t<tr><td rowspan=\"\\d+\">(\\d+)<");
        std::vector<int> numbers;
        for (auto i = std::sregex_iterator(page.begin(), page.end(), caseNumber); i != std::sregex_iterator(); ++i)
            numbers.push_back(std::stoi((*i)[1]));
        return numbers;
    }
};

TEST_F(ReportPages, AreAsApproved)
{
    Cases cases = SampleCases();
    XMLReportHeader header = Header();
    ASSERT_TRUE(sp_BuildHTMLSensitivityReport(path("sensitivity.html"), "", cases, header, 0));
    expectApproved("sensitivity.html");

    m_folder.write("style.css", "h1 { content: '%d%s</style>\r\n\xff\"'; }");
    ASSERT_TRUE(sp_BuildHTMLSensitivityReport(path("empty-styled.html"), path("style.css"), {}, {}, 0));
    expectApproved("empty-styled.html");

    ASSERT_TRUE(sp_BuildWorstCaseHTMLReport(path("worstcase.html"), "", cases, header));
    expectApproved("worstcase.html");

    // Integers, values near each other, one far from all others; more changed than a cell has room for.
    Cases runs = Table({Seeded(Case(1, {Result(10, 0), Result(1e9, 0), Result(0.5, 0)}, {}), -5)});
    for (int i = 2; i <= 12; ++i)
        runs.insert(i, Seeded(Case(i,
                                   {Result(6 + i * i % 7, 0), Result(i == 4 ? NotANumber : 1e9 + i / 8.0, 0),
                                    Result(i == 5 ? 1e6 : i / 16.0, 0)},
                                   {LotItem("R1 < 10k", 10, 9 + i / 10.0), LotItem("R2", 1, 2), LotItem("R3", 1, 2),
                                    LotItem("R4", 1, 2), LotItem("R5", 1, 2)}),
                              i == 2 ? std::numeric_limits<std::int64_t>::max() : i));
    ASSERT_TRUE(sp_BuildMonteCarloHTMLReport(path("montecarlo.html"), "", runs, header));
    expectApproved("montecarlo.html");
}

TEST_F(ReportPages, CountBarsInRoundSteps)
{
    const std::pair<int, const char*> rows[] = {{4, "1"},  {5, "2"},   {9, "2"},   {10, "5"},
                                                {24, "5"}, {25, "10"}, {50, "20"}, {100, "50"}};
    for (const auto& [highest, step] : rows) {
        Cases runs = Table({Case(1, {Result(2, 0), Result(3, 0)}, {}), Case(2, {Result(2, 0), Result(3, 0)}, {})});
        for (int i = 0; i < highest; ++i)
            runs.insert(i + 3, Case(i + 3, {Result(1, 0), Result(3, 0)}, {}));
        ASSERT_TRUE(sp_BuildMonteCarloHTMLReport(path("bars.html"), "", runs, Header()));
        const std::string page = m_folder.read("bars.html");
        std::smatch counts;
        ASSERT_TRUE(std::regex_search(page, counts, std::regex(">0</text><path[^>]*/><text[^>]*>(\\d+)</text>")));
        EXPECT_EQ(counts[1], step) << highest;
        EXPECT_NE(page.find("<text x=\"194\" y=\"132\" text-anchor=\"middle\" font-size=\"12\">3</text>"),
                  std::string::npos)
            << "what all runs have stands below the middle";
    }
}

TEST_F(ReportPages, SortCasesByEveryColumn)
{
    const auto named = [](std::int32_t id, const char* name, double reference, double delta, double sensitivity) {
        XMLReportInfo info = Named(Case(id, {Result(0, 0), Result(reference, delta)}, {}), name);
        info.results[1].sensitivity = sensitivity;
        return info;
    };
    const Cases cases = Table({
        named(1, "m", 1, NotANumber, 0),
        named(2, "b", -7, NotANumber, 2),
        named(3, "A", 7, -3, -Infinity),
        named(4, "a", NotANumber, 3, -2),
        named(5, "B", 0.5, -0.0, NotANumber),
        Named(Case(6, {}, {}), "Z"),
    });
    using Order = std::vector<int>;
    const Order byNumber = {1, 2, 3, 4, 5, 6};
    const std::pair<int, Order> rows[] = {
        {0, byNumber},
        {-1, byNumber},
        {std::numeric_limits<int>::min(), byNumber},
        {1, {3, 4, 2, 5, 1, 6}},
        {2, byNumber}, // all equal
        {5, {2, 3, 1, 5, 6, 4}},
        {6, {3, 4, 5, 6, 1, 2}},
        {7, {3, 2, 4, 1, 6, 5}},
        {8, byNumber}, // one behind the last one: names nothing
        {9, {3, 2, 4, 1, 6, 5}},
        {1000, {3, 2, 4, 1, 6, 5}},
        {std::numeric_limits<int>::max(), {3, 2, 4, 1, 6, 5}},
    };
    for (const auto& [column, expected] : rows)
        EXPECT_EQ(order(cases, column), expected) << column;

    Cases withoutNominal = cases;
    withoutNominal.remove(1);
    EXPECT_EQ(order(withoutNominal, 2), (Order{2, 3, 4, 5, 6})) << "names nothing";
    EXPECT_EQ(order(withoutNominal, 3), (Order{3, 4, 2, 5, 6})) << "the reference text";
}

// A comparison with NaN that is no order makes sorting algorithms run wild on larger tables.
TEST_F(ReportPages, SortManyCasesWithNotANumber)
{
    Cases cases = Table({Case(1, {Result(0, 0)}, {})});
    for (int i = 2; i <= 2000; ++i)
        cases.insert(i, Case(i, {Result(i % 3 == 0 ? NotANumber : (i * 37 % 101) - 50, 0)}, {}));
    const std::vector<int> sorted = order(cases, 2);
    ASSERT_EQ(sorted.size(), 2000u);
    for (std::size_t i = 1; i < sorted.size(); ++i) {
        const double a = std::fabs(cases[sorted[i - 1]].results[0].reference);
        const double b = std::fabs(cases[sorted[i]].results[0].reference);
        ASSERT_TRUE(a > b || (std::isnan(b) && !std::isnan(a)) ||
                    ((a == b || (std::isnan(a) && std::isnan(b))) && sorted[i - 1] < sorted[i]))
            << i;
    }
}

TEST_F(ReportPages, UseTheBuiltInStyleWhenTheFileIsNone)
{
    ASSERT_TRUE(sp_BuildWorstCaseHTMLReport(path("plain.html"), "", {}, {}));
    const std::string plain = m_folder.read("plain.html");
    EXPECT_NE(plain.find("width: 100%;"), std::string::npos);
#if defined(__unix__)
    ASSERT_EQ(mkfifo(m_folder.native("pipe").c_str(), 0600), 0);
#endif
    for (const YString& style :
         {path("missing.css"), path(""), path("pipe"), YString("/dev/zero"), YString("a\0b", 3), YString("/")}) {
        ASSERT_TRUE(sp_BuildWorstCaseHTMLReport(path("page.html"), style, {}, {}));
        EXPECT_EQ(m_folder.read("page.html"), plain) << style;
    }
}

TEST_F(ReportPages, RefuseWhatCannotBeOpenedForWriting)
{
    std::filesystem::create_directory(m_folder.native("directory"));
    for (const YString& file : {path("missing/page.html"), path("directory"), YString(""), YString("a\0b", 3)})
        EXPECT_FALSE(sp_BuildHTMLSensitivityReport(file, "", SampleCases(), Header(), 0)) << file;
#if defined(__unix__)
    // Not a device of the machine's own, which would be gone with the first fault in this.
    ASSERT_EQ(mkfifo(m_folder.native("pipe").c_str(), 0600), 0);
    EXPECT_FALSE(sp_BuildHTMLSensitivityReport(path("pipe"), "", SampleCases(), Header(), 0));
    EXPECT_TRUE(std::filesystem::is_fifo(m_folder.native("pipe"))) << "it is not replaced by a file";
#endif
}

#if defined(__unix__)
TEST_F(ReportPages, LeaveTheOldPageWhenTheDiskIsFull)
{
    m_folder.write("page.html", "old");
    Cases cases;
    for (int i = 1; i < 5000; ++i)
        cases.insert(i, Case(i, {}, {LotItem("R1", 1, 2)}));
    {
        const vo::test::FileSizeLimit limit(100000);
        EXPECT_FALSE(sp_BuildMonteCarloHTMLReport(path("page.html"), "", cases, Header()));
    }
    EXPECT_EQ(m_folder.tree(""), (vo::test::Tree{{"page.html", "old"}}));
    EXPECT_TRUE(sp_BuildMonteCarloHTMLReport(path("page.html"), "", cases, Header()));
}
#endif

// Numbers keep their point where the user's locale has a comma, in the C library as well as in the streams.
TEST_F(ReportPages, WriteNumbersTheSameInEveryLocale)
{
    ASSERT_TRUE(sp_BuildMonteCarloHTMLReport(path("a.html"), "", SampleCases(), Header()));
    const vo::test::CommaLocale comma;
    ASSERT_TRUE(sp_BuildMonteCarloHTMLReport(path("b.html"), "", SampleCases(), Header()));
    EXPECT_EQ(m_folder.read("a.html"), m_folder.read("b.html"));
}

} // namespace
