#include <Misc/XMLReport/ReportPages.h>
#include <Misc/XMLReport/detail/LogPage.h>

#include <cmath>

namespace {

using Cases = YHashTable<XMLReportInfo>;
using vo::detail::LogColumn;
using vo::detail::ReportPage;

// The value and the first run that has it.
void WriteExtreme(ReportPage& page, const Cases& cases, std::size_t result, double extreme, int digits)
{
    for (const auto& [number, info] : cases) {
        if (result >= info.results.size() || info.results.data()[result].reference != extreme)
            continue;
        page << "<td>";
        page.number(extreme, digits) << "</td><td>";
        page.integer(number) << "</td>";
        return;
    }
    page << "<td></td><td></td>"; // no run has a number
}

void WriteExtremes(ReportPage& page, const Cases& cases, const std::vector<LogColumn>& columns)
{
    page << "\t<h2>Extremes</h2>\n\t<table class=\"datatable extremes\">\n\t\t<tr><th>Result</th><th>Nominal</th>"
            "<th>&#9660; Minimum</th><th>Run #</th><th>&#9650; Maximum</th><th>Run #</th></tr>\n";
    const XMLReportInfo* nominal = cases.find(XMLReportInfo::NominalCase);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        page << "\t\t<tr><td>";
        page.text(columns[i].name) << "</td><td>";
        if (nominal && i < nominal->results.size())
            page.number(nominal->results.data()[i].reference, columns[i].digits);
        page << "</td>";
        WriteExtreme(page, cases, i, columns[i].minimum, columns[i].digits);
        WriteExtreme(page, cases, i, columns[i].maximum, columns[i].digits);
        page << "</tr>\n";
    }
    page << "\t</table>\n";
}

} // namespace

bool sp_BuildWorstCaseHTMLReport(const YString& file, const YString& styleFile, const Cases& cases,
                                 const XMLReportHeader& header)
{
    using namespace vo::detail;
    return WriteReportPage(file, styleFile, "Worst Case Log", [&](ReportPage& page) {
        const std::vector<LogColumn> columns = LogColumns(cases, header);
        WriteLogHeader(page, "Worst Case Log", header);
        if (!columns.empty())
            WriteExtremes(page, cases, columns);
        page << "\t<h2>Results</h2>\n";
        WriteLogResults(page, cases, columns, Extremes::Marked);
        WriteLogRuns(page, cases);
    });
}
