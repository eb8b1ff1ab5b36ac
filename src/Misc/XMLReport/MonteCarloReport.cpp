#include <Misc/XMLReport/LogPage.h>
#include <Misc/XMLReport/ReportPages.h>

#include <Core/NumberText.h>
#include <Maths/VoHistogram.h>
#include <Maths/VoStatistics.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

using Cases = YHashTable<XMLReportInfo>;
using vo::detail::ReportPage;

// Sizes of the drawing, in its own units, which are pixels where there is room.
constexpr int Width = 320;
constexpr int Height = 132;
constexpr int PlotHeight = 108; // the labels are below
constexpr std::size_t MostBars = 64;

// One result over all runs.
struct Sample
{
    VoVector<double> values; // finite ones; the nominal run is no random draw and is left out
    VoStatistics statistics;
    std::size_t notFinite = 0;
    std::optional<double> nominal;
};

Sample SampleOf(const Cases& cases, std::size_t result)
{
    Sample sample;
    for (const auto& [number, info] : cases) {
        if (result >= info.results.size())
            continue;
        const double value = info.results.data()[result].reference;
        if (number == XMLReportInfo::NominalCase)
            sample.nominal = value;
        else if (!std::isfinite(value))
            ++sample.notFinite;
        else
            sample.values.pushBack(value);
    }
    sample.statistics = VoStatistics(sample.values);
    return sample;
}

VoHistogram HistogramOf(const Sample& sample)
{
    VoHistogram histogram = VoHistogram::FromData(sample.values);
    return histogram.bins() <= MostBars ? histogram : VoHistogram::FromData(sample.values, MostBars);
}

void WriteLabel(ReportPage& page, const char* place, double value)
{
    page << "<text y=\"" << std::to_string(Height - 4) << "\" " << place << " font-size=\"12\">";
    page.number(value) << "</text>";
}

// All bars as one outline.
void WriteBars(ReportPage& page, const VoHistogram& histogram)
{
    const auto highest = static_cast<double>(histogram.count(histogram.mode()));
    const double width = static_cast<double>(Width) / static_cast<double>(histogram.bins());
    page << "<path fill=\"#4CAF50\" stroke=\"#fff\" stroke-width=\"0.5\" d=\"";
    for (std::size_t i = 0; i < histogram.bins(); ++i) {
        if (histogram.count(i) == 0)
            continue;
        const double height = PlotHeight * static_cast<double>(histogram.count(i)) / highest;
        page << "M";
        page.number(width * static_cast<double>(i)) << " " << std::to_string(PlotHeight) << "v-";
        page.number(height) << "h";
        page.number(width) << "v";
        page.number(height) << "z";
    }
    page << "\"/>";
}

void WriteNominalMark(ReportPage& page, const VoHistogram& histogram, double nominal)
{
    const double low = histogram.edges()[0];
    const double high = histogram.edges()[histogram.bins()];
    if (!(nominal >= low && nominal <= high))
        return;
    page << "<path stroke=\"#b71c1c\" stroke-width=\"1.5\" stroke-dasharray=\"4 3\" d=\"M";
    page.number(Width * (nominal / 2 - low / 2) / (high / 2 - low / 2))
        << " 0v" << std::to_string(PlotHeight) << "\"><title>Nominal</title></path>";
}

void WriteHistogram(ReportPage& page, const YString& name, const Sample& sample)
{
    const VoHistogram histogram = HistogramOf(sample);
    page << "<svg width=\"" << std::to_string(Width) << "\" height=\"" << std::to_string(Height) << "\" viewBox=\"0 0 "
         << std::to_string(Width) << " " << std::to_string(Height) << "\" role=\"img\" aria-label=\"Distribution of ";
    page.text(name) << "\">";
    WriteBars(page, histogram);
    page << "<path stroke=\"#555\" d=\"M0 " << std::to_string(PlotHeight) << "h" << std::to_string(Width) << "\"/>";
    if (sample.nominal)
        WriteNominalMark(page, histogram, *sample.nominal);
    if (sample.statistics.min() == sample.statistics.max()) {
        WriteLabel(page, "x=\"160\" text-anchor=\"middle\"", sample.statistics.min());
    } else {
        WriteLabel(page, "x=\"0\"", histogram.edges()[0]);
        WriteLabel(page, "x=\"320\" text-anchor=\"end\"", histogram.edges()[histogram.bins()]);
    }
    page << "</svg>";
}

void WriteStatistic(ReportPage& page, const char* label, double value)
{
    page << "<tr><th>" << label << "</th><td>";
    if (std::isnan(value))
        page << "&#8211;"; // the sample is too small for this figure
    else
        page.number(value);
    page << "</td></tr>";
}

void WriteCount(ReportPage& page, const char* label, std::size_t count)
{
    page << "<tr><th>" << label << "</th><td>";
    page.integer(static_cast<long long>(count)) << "</td></tr>";
}

void WriteStatistics(ReportPage& page, const Sample& sample)
{
    const VoStatistics& statistics = sample.statistics;
    page << "<table class=\"statistics\">";
    WriteCount(page, "Count", statistics.count());
    WriteStatistic(page, "Mean", statistics.mean());
    WriteStatistic(page, "Standard deviation", statistics.standardDeviation());
    WriteStatistic(page, "Minimum", statistics.min());
    WriteStatistic(page, "Median", statistics.median());
    WriteStatistic(page, "Maximum", statistics.max());
    if (sample.nominal)
        WriteStatistic(page, "Nominal", *sample.nominal);
    if (sample.notFinite > 0)
        WriteCount(page, "Not finite", sample.notFinite);
    page << "</table>";
}

void WriteDistributions(ReportPage& page, const Cases& cases, const XMLReportHeader& header)
{
    page << "\t<div class=\"distributions\">\n";
    for (std::size_t i = 0; i < vo::detail::NumberOfLogColumns(cases, header); ++i) {
        const YString name = i < header.resultNames.size() ? header.resultNames.data()[i] : YString();
        const Sample sample = SampleOf(cases, i);
        page << "\t<figure class=\"distribution\"><figcaption>";
        page.text(name) << "</figcaption>";
        if (!sample.values.isEmpty())
            WriteHistogram(page, name, sample);
        WriteStatistics(page, sample);
        page << "</figure>\n";
    }
    page << "\t</div>\n";
}

void WriteSeeds(ReportPage& page, const Cases& cases)
{
    page << "\t<h2>Seed Table</h2>\n\t<table class=\"datatable seeds\">\n\t\t<tr><th>Run #</th><th>Seed</th></tr>\n";
    for (const auto& [number, info] : cases) {
        page << "\t\t<tr><td>";
        page.integer(number) << "</td><td>";
        page.integer(info.seed) << "</td></tr>\n";
    }
    page << "\t</table>\n";
}

} // namespace

bool sp_BuildMonteCarloHTMLReport(const YString& file, const YString& styleFile, const Cases& cases,
                                  const XMLReportHeader& header)
{
    return vo::detail::WriteReportPage(file, styleFile, "Monte Carlo Log", [&](ReportPage& page) {
        vo::detail::WriteLogHeader(page, "Monte Carlo Log", header);
        page << "\t<h2>Results</h2>\n";
        WriteDistributions(page, cases, header);
        vo::detail::WriteLogResults(page, cases, header);
        WriteSeeds(page, cases);
        vo::detail::WriteLogRuns(page, cases);
    });
}
