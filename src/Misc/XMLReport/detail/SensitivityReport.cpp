#include <Misc/XMLReport/ReportPages.h>
#include <Misc/XMLReport/XMLReportHeader.h>
#include <Misc/XMLReport/XMLReportInfo.h>
#include <Misc/XMLReport/detail/LogPage.h>
#include <Misc/XMLReport/detail/ReportPage.h>

#include <Core/VoString.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace {

using Cases = YHashTable<XMLReportInfo>;
using CaseOrder = std::vector<const XMLReportInfo*>;
using vo::detail::ReportPage;

// The one place of this page that is not fixed is a line behind the table. The legend, which gives the two marks that
// stand for values a meaning, stands there, what is said of the analysis, which the built-in style shows above the
// table, and what is more than the built-in style's.
constexpr std::string_view Legend = "<p>* inconsistent between lot items, !DIV0 division by zero</p>";
constexpr std::string_view Refinements =
    "body{display:flex;flex-direction:column;align-items:flex-start}.analysis{order:-1;max-width:100%}"
    ".datatable tr:first-child th{text-align:left;border-left:1px solid #fff}"
    ".datatable td[rowspan]:first-child,.datatable tr:nth-child(-n+2) th:first-child{left:0;z-index:3}"
    ".datatable td[rowspan]:first-child,.datatable tr:nth-child(2) th:first-child{width:72px;"
    "min-width:72px;max-width:72px;box-sizing:border-box}"
    ".datatable td[rowspan]:nth-child(2),.datatable tr:nth-child(2) th:nth-child(2){left:72px;"
    "z-index:3;min-width:160px;max-width:300px;white-space:normal;overflow-wrap:anywhere}"
    ".datatable td[rowspan]:nth-child(-n+2){position:sticky;z-index:1}"
    "@media(max-width:900px){.datatable td[rowspan]:nth-child(2),"
    ".datatable tr:nth-child(2) th:nth-child(2){min-width:140px;max-width:200px}}"
    ".datatable tr:nth-child(2) th{top:28px}"
    ".datatable td:nth-child(2):not(:nth-last-child(2)),.datatable tr:nth-child(2) th:nth-child(2),"
    ".datatable td:nth-last-child(3),.datatable tr:nth-child(2) th:nth-last-child(3){text-align:left}"
    ".datatable td[rowspan],.datatable td[rowspan]~td{border-top:1px solid #888}";

std::size_t NumberOfResults(const Cases& cases)
{
    const XMLReportInfo* nominal = cases.find(XMLReportInfo::NominalCase);
    return nominal ? nominal->results.size() : 0;
}

// What a column beyond a case's results holds.
const XMLReportInfo::Result& ResultOf(const XMLReportInfo& info, std::size_t index)
{
    static const auto& none = *new XMLReportInfo::Result; // outlives all static objects
    return index < info.results.size() ? info.results.data()[index] : none;
}

double FieldOf(const XMLReportInfo& info, std::size_t column)
{
    const XMLReportInfo::Result& result = ResultOf(info, column / 3);
    return column % 3 == 0 ? result.reference : column % 3 == 1 ? result.delta : result.sensitivity;
}

template <typename Key, typename Before>
void SortBy(CaseOrder& order, Key keyOf, Before before)
{
    using Record = std::pair<decltype(keyOf(*order.front())), const XMLReportInfo*>;
    std::vector<Record> records;
    records.reserve(order.size());
    for (const XMLReportInfo* info : order)
        records.emplace_back(keyOf(*info), info);
    std::stable_sort(records.begin(), records.end(),
                     [&before](const Record& a, const Record& b) { return before(a.first, b.first); });
    std::transform(records.begin(), records.end(), order.begin(), [](const Record& record) { return record.second; });
}

// NaN is before nothing, so it goes behind everything else: comparing it in the usual way would not be an order.
bool LargerMagnitude(double a, double b)
{
    if (std::isnan(a) || std::isnan(b))
        return !std::isnan(a) && std::isnan(b);
    return std::fabs(a) > std::fabs(b);
}

CaseOrder Sorted(const Cases& cases, int sortColumn)
{
    CaseOrder order;
    order.reserve(cases.size());
    for (const auto& entry : cases)
        order.push_back(&entry.second);
    SortBy(
        order, [](const XMLReportInfo& info) { return info.caseID; }, std::less<std::int32_t>());

    const auto last = 3 * static_cast<std::int64_t>(NumberOfResults(cases)) + 2;
    const std::int64_t column = sortColumn > last ? last - 1 : sortColumn;
    if (column == 1)
        SortBy(
            order, [](const XMLReportInfo& info) { return VoString(info.referenceText()); },
            [](const VoString& a, const VoString& b) { return a.lessThan(b, VoString::CaseInsensitive); });
    else if (column >= 2)
        SortBy(
            order, [column](const XMLReportInfo& info) { return FieldOf(info, static_cast<std::size_t>(column - 2)); },
            LargerMagnitude);
    return order;
}

void WriteHeading(ReportPage& page, const XMLReportHeader& header, std::size_t results)
{
    page << "\t<table  class=\"datatable\">\n"
         << "\t\t<tr><th colspan=\"2\">Run ID</th>"
         << "<th colspan=\"";
    page.integer(3 * static_cast<long long>(results)) << "\">Results</th>"
                                                      << "<th colspan=\"3\">Perturbation</th></tr>\n"
                                                      << "\t\t<tr><th>Case #</th>"
                                                      << "<th>Reference</th>";
    for (const YString& name : header.resultNames) {
        page << "<th>";
        page.text(name) << "</th><th>Delta</th><th>Norm</th>";
    }
    page << "<th>Lot item</th><th>Nominal</th><th>Value</th></tr>\n";
}

void WriteLotItem(ReportPage& page, const XMLReportInfo::LotItem& item)
{
    page << "<td>";
    page.text(item.description) << "</td><td>";
    page.number(item.nominal) << "</td><td>";
    page.number(item.value) << "</td>";
}

// Writes the cells that span all rows of one case.
class SpanningCells
{
public:
    SpanningCells(ReportPage& page, std::size_t rows)
        : m_page(page)
        , m_start("<td rowspan=\"" + std::to_string(rows) + "\">")
        , m_markStart(rows > 1 ? m_start : "<td>")
    {
    }

    void number(double value)
    {
        m_page << m_start;
        m_page.number(value) << "</td>";
    }

    void heading(const XMLReportInfo& info)
    {
        m_page << m_start;
        m_page.integer(info.caseID) << "</td>" << m_start;
        m_page.text(info.referenceText()) << "</td>";
    }

    void result(const XMLReportInfo::Result& result)
    {
        number(result.reference);
        number(result.delta);
        if (result.sensitivityState == XMLReportInfo::Inconsistent)
            mark("*");
        else if (result.sensitivityState == XMLReportInfo::DivideByZero)
            mark("!DIV0");
        else
            number(result.sensitivity);
    }

private:
    void mark(const char* text) { m_page << m_markStart << text << "</td>"; }

    ReportPage& m_page;
    const std::string m_start;
    const std::string m_markStart;
};

void WriteCase(ReportPage& page, const XMLReportInfo& info, std::size_t results)
{
    SpanningCells cells(page, std::max<std::size_t>(info.lotItems.size(), 1));
    page << "\t\t<tr>";
    cells.heading(info);
    for (std::size_t i = 0; i < results; ++i)
        cells.result(ResultOf(info, i));
    if (info.lotItems.isEmpty())
        page << "<td></td><td></td><td></td>";
    for (std::size_t i = 0; i < info.lotItems.size(); ++i) {
        if (i > 0)
            page << "</tr>\n\t\t<tr>";
        WriteLotItem(page, info.lotItems.data()[i]);
    }
    page << "</tr>\n";
}

} // namespace

bool sp_BuildHTMLSensitivityReport(const YString& file, const YString& styleFile, const Cases& cases,
                                   const XMLReportHeader& header, int sortColumn)
{
    return vo::detail::WriteReportPage(file, styleFile, "Sensitivity Analysis Report", [&](ReportPage& page) {
        const std::size_t results = NumberOfResults(cases);
        WriteHeading(page, header, results);
        for (const XMLReportInfo* info : Sorted(cases, sortColumn))
            WriteCase(page, *info, results);
        page << "</table>\t" << Legend
             << "<div class=\"analysis\"><h1>Sensitivity Analysis Report</h1><table class=\"headertable\">";
        vo::detail::WriteHeaderTable(page, header, "", "");
        page << "</table></div>";
        page.refinements(Refinements) << "\n";
    });
}
