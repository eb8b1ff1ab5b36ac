#include <Misc/XMLReport/detail/LogPage.h>

#include <Core/VoColour.h>
#include <Core/VoString.h>
#include <Core/detail/NumberText.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace vo::detail {

namespace {

// The sections of runs far from the window are not laid out, which keeps pages with thousands of them quick.
constexpr std::string_view Refinements =
    ".runs td:nth-child(2),.runs th:nth-child(2),.extremes td:first-child,.extremes th:first-child{text-align:left}"
    ".runs td:first-child,.runs th:first-child{position:sticky;left:0;width:72px;min-width:72px;max-width:72px;"
    "box-sizing:border-box}"
    ".runs td:nth-child(2),.runs th:nth-child(2){position:sticky;left:72px;min-width:200px;max-width:340px;"
    "white-space:normal;overflow-wrap:anywhere}"
    ".runs td:nth-child(-n+2){z-index:1}.runs th:nth-child(-n+2){z-index:3}"
    ".minimum,.maximum{font-weight:bold}"
    "@media(max-width:900px){.runs td:nth-child(2),.runs th:nth-child(2){min-width:150px;max-width:200px}}"
    ".seeds td:nth-child(2),.seeds th:nth-child(2),.parameters td:nth-child(2),.parameters th:nth-child(2)"
    "{text-align:right}"
    ".parameters td:first-child,.parameters th:first-child{text-align:left}"
    ".run{content-visibility:auto;contain-intrinsic-size:auto 160px}"
    ".distributions{display:flex;flex-wrap:wrap;gap:16px;margin-bottom:24px;font:14px 'Open Sans',sans-serif}"
    ".distribution{width:648px;display:flex;flex-wrap:wrap;gap:0 "
    "16px;align-items:center;align-content:start;margin:0;padding:8px 12px;"
    "border:1px solid #ddd;max-width:100%;box-sizing:border-box}"
    ".distribution figcaption{flex-basis:100%;font-weight:bold;overflow-wrap:anywhere}"
    ".distribution svg{max-width:100%;height:auto}"
    ".statistics{font-size:inherit}"
    ".statistics th{text-align:left;font-weight:normal;color:#555;padding-right:12px}"
    ".statistics td{text-align:right;font-variant-numeric:tabular-nums}";

// Texts in the colours of the chart's series.
std::string ExtremeRules()
{
    constexpr VoColour paper(255, 255, 255);
    const auto rule = [paper](const char* name, std::size_t series) {
        return std::string(name) + "{color:" + VoSeriesColour(series).readableOn(paper).toString().toStdString() + "}";
    };
    return rule(".minimum", 0) + rule(".maximum", 1);
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

constexpr std::size_t MostItemsDescribed = 3; // each run's own section has them all

// What a run changed, in one cell.
void WriteDescription(ReportPage& page, const XMLReportInfo& info)
{
    const std::size_t items = info.lotItems.size();
    if (items < 2 || !info.reference.isEmpty() || info.caseID == XMLReportInfo::NominalCase) {
        page.text(info.referenceText());
        return;
    }
    const char* separator = "";
    for (std::size_t i = 0; i < std::min(items, MostItemsDescribed); ++i) {
        if (info.lotItems.data()[i].description.isEmpty())
            continue;
        page << separator;
        page.text(info.lotItems.data()[i].description);
        separator = ", ";
    }
    if (items > MostItemsDescribed)
        page << " and " << IntegerText(static_cast<long long>(items - MostItemsDescribed)) << " more";
}

void WriteResult(ReportPage& page, double value, const LogColumn& column, Extremes extremes)
{
    const bool marked = extremes == Extremes::Marked && column.varies();
    if (marked && value == column.minimum)
        page << "<td class=\"minimum\" title=\"Minimum\">&#9660; ";
    else if (marked && value == column.maximum)
        page << "<td class=\"maximum\" title=\"Maximum\">&#9650; ";
    else
        page << "<td>";
    page.number(value, column.digits) << "</td>";
}

} // namespace

int DigitsFor(const VoStatistics& sample)
{
    constexpr int fewest = 6;
    if (sample.count() == 0)
        return fewest;
    double low = sample.quantile(0.25);
    double high = sample.quantile(0.75);
    if (!(low < high)) {
        low = sample.min();
        high = sample.max();
    }
    const double shared = std::log10(std::max(std::fabs(low), std::fabs(high))) - std::log10(high - low);
    if (!std::isfinite(shared)) // all are equal, or too far apart for a double
        return fewest;
    return std::clamp(static_cast<int>(std::ceil(shared)) + 3, fewest, std::numeric_limits<double>::max_digits10);
}

void WriteHeaderTable(ReportPage& page, const XMLReportHeader& header, std::string_view indent,
                      std::string_view lineEnd)
{
    const auto row = [&](const char* label, const YString& text) {
        page << indent << "<tr><td>" << label << "</td><td>";
        page.text(text) << "</td></tr>" << lineEnd;
    };
    row("Date:", header.date);
    row("Analysis card:", header.card);
    row("Title:", header.title);
    row("Num Cores:", YString(IntegerText(header.cores).c_str()));
}

void WriteLogHeader(ReportPage& page, const char* heading, const XMLReportHeader& header)
{
    page << "\t<h1>" << heading << "</h1>\n\t";
    page.refinements(std::string(Refinements) + ExtremeRules()) << "\n\t<table class=\"headertable\">\n";
    WriteHeaderTable(page, header, "\t\t", "\n");
    page << "\t</table>\n";
}

std::vector<LogColumn> LogColumns(const YHashTable<XMLReportInfo>& cases, const XMLReportHeader& header)
{
    const std::size_t first = cases.isEmpty() ? 0 : cases.begin()->second.results.size();
    std::vector<LogColumn> columns(std::max(header.resultNames.size(), first));
    for (std::size_t i = 0; i < columns.size(); ++i) {
        VoStatistics sample;
        VoStatistics finite;
        for (const auto& [number, info] : cases) {
            if (i >= info.results.size())
                continue;
            const double value = info.results.data()[i].reference;
            sample.add(value);
            if (std::isfinite(value))
                finite.add(value);
        }
        columns[i] = {i < header.resultNames.size() ? header.resultNames.data()[i] : YString(), DigitsFor(finite),
                      sample.min(), sample.max()};
    }
    return columns;
}

void WriteLogResults(ReportPage& page, const YHashTable<XMLReportInfo>& cases, const std::vector<LogColumn>& columns,
                     Extremes extremes)
{
    page << "\t<table class=\"datatable runs\">\n\t\t<tr><th>Run #</th><th>Description</th>";
    for (const LogColumn& column : columns) {
        page << "<th>";
        page.text(column.name) << "</th>";
    }
    page << "</tr>\n";
    for (const auto& [number, info] : cases) {
        page << "\t\t<tr><td>";
        page.integer(number) << "</td><td>";
        WriteDescription(page, info);
        page << "</td>";
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (i < info.results.size())
                WriteResult(page, info.results.data()[i].reference, columns[i], extremes);
            else
                page << "<td></td>";
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
