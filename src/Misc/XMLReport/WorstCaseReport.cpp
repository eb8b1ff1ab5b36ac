#include <Misc/XMLReport/LogPage.h>
#include <Misc/XMLReport/ReportPages.h>

bool sp_BuildWorstCaseHTMLReport(const YString& file, const YString& styleFile, const YHashTable<XMLReportInfo>& cases,
                                 const XMLReportHeader& header)
{
    using namespace vo::detail;
    return WriteReportPage(file, styleFile, "Worst Case Log", [&](ReportPage& page) {
        WriteLogHeader(page, "Worst Case Log", header);
        page << "\t<h2>Results</h2>\n";
        WriteLogResults(page, cases, header);
        WriteLogRuns(page, cases);
    });
}
