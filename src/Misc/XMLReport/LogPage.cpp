#include <Misc/XMLReport/LogPage.h>

#include <algorithm>

namespace vo::detail {

namespace {

// The sections of runs far from the window are not laid out, which keeps pages with thousands of them quick.
constexpr std::string_view Refinements =
    ".datatable td:nth-child(2),.datatable th:nth-child(2){text-align:left}"
    ".seeds td:nth-child(2),.seeds th:nth-child(2),.parameters td:nth-child(2),.parameters th:nth-child(2)"
    "{text-align:right}"
    ".parameters td:first-child,.parameters th:first-child{text-align:left}"
    ".run{content-visibility:auto;contain-intrinsic-size:auto 160px}"
    ".distributions{display:flex;flex-wrap:wrap;gap:16px;margin-bottom:24px;font:14px 'Open Sans',sans-serif}"
    ".distribution{width:600px;display:flex;flex-wrap:wrap;gap:0 16px;align-items:center;margin:0;padding:8px 12px;"
    "border:1px solid #ddd;max-width:100%;box-sizing:border-box}"
    ".distribution figcaption{flex-basis:100%;font-weight:bold;overflow-wrap:anywhere}"
    ".distribution svg{max-width:100%;height:auto}"
    ".statistics{font-size:inherit}"
    ".statistics th{text-align:left;font-weight:normal;color:#555;padding-right:12px}"
    ".statistics td{text-align:right;font-variant-numeric:tabular-nums}";

void WriteHeaderRow(ReportPage& page, const char* label, const YString& text)
{
    page << "\t\t<tr><td>" << label << "</td><td>";
    page.text(text) << "</td></tr>\n";
}

void WriteParameters(ReportPage& page, const XMLReportInfo& info)
{
    page << "\t<table class=\"datatable parameters\">\n"
         << "\t\t<tr><th>Reference</th><th>Nominal</th><th>Value</th></tr>\n";
    for (const XMLReportInfo::LotItem& item : info.lotItems) {
        page << "\t\t<tr><td>";
        page.text(item.description) << "</td><td>";
        page.number(item.nominal) << "</td><td>";
        page.number(item.value) << "</td></tr>\n";
    }
    page << "\t</table>\n";
}

} // namespace

void WriteLogHeader(ReportPage& page, const char* heading, const XMLReportHeader& header)
{
    page << "\t<h1>" << heading << "</h1>\n\t";
    page.refinements(Refinements) << "\n\t<table class=\"headertable\">\n";
    WriteHeaderRow(page, "Date:", header.date);
    WriteHeaderRow(page, "Analysis card:", header.card);
    WriteHeaderRow(page, "Title:", header.title);
    page << "\t\t<tr><td>Num Cores:</td><td>";
    page.integer(header.cores) << "</td></tr>\n\t</table>\n";
}

std::size_t NumberOfLogColumns(const YHashTable<XMLReportInfo>& cases, const XMLReportHeader& header)
{
    const std::size_t first = cases.isEmpty() ? 0 : cases.begin()->second.results.size();
    return std::max(header.resultNames.size(), first);
}

void WriteLogResults(ReportPage& page, const YHashTable<XMLReportInfo>& cases, const XMLReportHeader& header)
{
    const std::size_t columns = NumberOfLogColumns(cases, header);
    page << "\t<table class=\"datatable\">\n\t\t<tr><th>Run #</th><th>Description</th>";
    for (std::size_t i = 0; i < columns; ++i) {
        page << "<th>";
        page.text(i < header.resultNames.size() ? header.resultNames.data()[i] : YString()) << "</th>";
    }
    page << "</tr>\n";
    for (const auto& [number, info] : cases) {
        page << "\t\t<tr><td>";
        page.integer(number) << "</td><td>";
        page.text(info.referenceText()) << "</td>";
        for (std::size_t i = 0; i < columns; ++i) {
            page << "<td>";
            if (i < info.results.size())
                page.number(info.results.data()[i].reference);
            page << "</td>";
        }
        page << "</tr>\n";
    }
    page << "\t</table>\n";
}

void WriteLogRuns(ReportPage& page, const YHashTable<XMLReportInfo>& cases)
{
    for (const auto& [number, info] : cases) {
        page << "\t<section class=\"run\">\n\t<h2>Run ";
        page.integer(number) << "</h2>\n";
        if (info.lotItems.isEmpty())
            page << "\t<p>No parameter was changed.</p>\n";
        else
            WriteParameters(page, info);
        page << "\t</section>\n";
    }
}

} // namespace vo::detail
