#include <Misc/XMLReport/ReportPages.h>
#include <Misc/XMLReport/detail/LogPage.h>

#include <Core/VoColour.h>
#include <Core/VoString.h>
#include <Maths/VoHistogram.h>
#include <Maths/VoStatistics.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace {

using Cases = YHashTable<XMLReportInfo>;
using vo::detail::ReportPage;

// Sizes of the drawing, in its own units, which are pixels where there is room.
constexpr int Left = 44; // of the bars; the counts are before them
constexpr int PlotWidth = 300;
constexpr int Top = 8;
constexpr int PlotHeight = 108; // the labels are below
constexpr int Width = Left + PlotWidth + 8;
constexpr int Base = Top + PlotHeight;
constexpr std::size_t MostBars = 64;

// One result over all runs.
struct Sample
{
    VoVector<double> values; // finite ones; the nominal run is no random draw and is left out
    VoStatistics statistics;
    std::size_t notFinite = 0;
    std::optional<double> nominal;
    int digits = 6; // as many as the table of runs shows
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

bool AllIntegers(const VoVector<double>& values)
{
    constexpr double mostWithHalves = 0x1p50;
    return std::all_of(values.begin(), values.end(),
                       [](double value) { return value == std::trunc(value) && std::fabs(value) < mostWithHalves; });
}

// Bins for the values between two others. With integers each bin holds equally many of them: there are no gaps that the
// sample does not have.
VoHistogram BinsBetween(const VoVector<double>& values, double low, double high)
{
    VoVector<double> inside;
    for (double value : values)
        if (value >= low && value <= high)
            inside.pushBack(value);
    VoHistogram automatic = VoHistogram::FromData(inside);
    const std::size_t bins = std::min(automatic.bins(), MostBars);
    if (inside.isEmpty() || !AllIntegers(inside))
        return bins == automatic.bins() ? automatic : VoHistogram::FromData(inside, bins);
    const VoStatistics integers(inside);
    const double count = integers.max() - integers.min() + 1;
    const double width = std::ceil(count / static_cast<double>(count <= MostBars ? MostBars : bins));
    const double needed = std::ceil(count / width);
    const double first = integers.min() - 0.5;
    return VoHistogram(first, first + needed * width, static_cast<std::size_t>(needed));
}

// The range of a sample, without values that lie so far out that all others would be one bar.
VoHistogram HistogramOf(const Sample& sample)
{
    const VoStatistics& statistics = sample.statistics;
    const double lower = statistics.quantile(0.25);
    const double upper = statistics.quantile(0.75);
    const double reach = 3 * (upper - lower);
    double low = std::max(statistics.min(), lower - reach);
    double high = std::min(statistics.max(), upper + reach);
    if (!(reach > 0) || statistics.max() / 3 - statistics.min() / 3 < high / 2 - low / 2) {
        low = statistics.min();
        high = statistics.max();
    }
    const VoHistogram range = BinsBetween(sample.values, low, high);
    VoHistogram histogram(range.edges()[0], range.edges()[range.bins()], range.bins());
    for (double value : sample.values)
        histogram.add(value);
    return histogram;
}

// A text below the bars.
void WriteLabel(ReportPage& page, int x, int line, const char* anchor)
{
    page << "<text x=\"" << std::to_string(x) << "\" y=\"" << std::to_string(Base + 16 * line) << "\" text-anchor=\""
         << anchor << "\" font-size=\"12\">";
}

// The counts beside the bars: at most four above zero, at round numbers.
void WriteCounts(ReportPage& page, std::uint64_t highest)
{
    std::uint64_t step = 1;
    for (std::size_t i = 0; highest / step > 4; ++i)
        step = i % 3 == 1 ? step / 2 * 5 : step * 2; // 1, 2, 5, 10, 20, 50 ...
    for (std::uint64_t count = 0; count <= highest; count += step) {
        const double y = Base - PlotHeight * static_cast<double>(count) / static_cast<double>(highest);
        page << "<path stroke=\"#ddd\" d=\"M" << std::to_string(Left) << " ";
        page.number(y) << "h" << std::to_string(PlotWidth) << "\"/><text x=\"" << std::to_string(Left - 6) << "\" y=\"";
        page.number(y + 4) << "\" text-anchor=\"end\" font-size=\"11\" fill=\"#555\">";
        page.integer(static_cast<long long>(count)) << "</text>";
    }
}

std::string SeriesColour(std::size_t series)
{
    return VoSeriesColour(series).toString().toStdString();
}

// All bars as one outline.
void WriteBars(ReportPage& page, const VoHistogram& histogram)
{
    const auto highest = static_cast<double>(histogram.count(histogram.mode()));
    const double width = static_cast<double>(PlotWidth) / static_cast<double>(histogram.bins());
    page << "<path fill=\"" << SeriesColour(0) << "\" stroke=\"#fff\" stroke-width=\"0.5\" d=\"";
    for (std::size_t i = 0; i < histogram.bins(); ++i) {
        if (histogram.count(i) == 0)
            continue;
        const double height = PlotHeight * static_cast<double>(histogram.count(i)) / highest;
        page << "M";
        page.number(Left + width * static_cast<double>(i)) << " " << std::to_string(Base) << "v-";
        page.number(height) << "h";
        page.number(width) << "v";
        page.number(height) << "z";
    }
    page << "\"/><path stroke=\"#555\" d=\"M" << std::to_string(Left) << " " << std::to_string(Base) << "h"
         << std::to_string(PlotWidth) << "\"/>";
}

void WriteNominalMark(ReportPage& page, const VoHistogram& histogram, double nominal)
{
    const double low = histogram.edges()[0];
    const double high = histogram.edges()[histogram.bins()];
    if (!(nominal >= low && nominal <= high))
        return;
    page << "<path stroke=\"" << SeriesColour(1) << "\" stroke-width=\"1.5\" stroke-dasharray=\"4 3\" d=\"M";
    page.number(Left + PlotWidth * (nominal / 2 - low / 2) / (high / 2 - low / 2))
        << " " << std::to_string(Top) << "v" << std::to_string(PlotHeight) << "\"><title>Nominal</title></path>";
}

// The values at both ends, and how many lie beyond them.
void WriteRange(ReportPage& page, const VoHistogram& histogram, const Sample& sample)
{
    const int right = Left + PlotWidth;
    if (sample.statistics.min() == sample.statistics.max()) {
        WriteLabel(page, (Left + right) / 2, 1, "middle");
        page.number(sample.statistics.min(), sample.digits) << "</text>";
        return;
    }
    WriteLabel(page, Left, 1, "start");
    page.number(std::max(histogram.edges()[0], sample.statistics.min()), sample.digits) << "</text>";
    WriteLabel(page, right, 1, "end");
    page.number(std::min(histogram.edges()[histogram.bins()], sample.statistics.max()), sample.digits) << "</text>";
    if (histogram.below() > 0) {
        WriteLabel(page, Left, 2, "start");
        page << "&#9668; ";
        page.integer(static_cast<long long>(histogram.below())) << " below</text>";
    }
    if (histogram.above() > 0) {
        WriteLabel(page, right, 2, "end");
        page.integer(static_cast<long long>(histogram.above())) << " above &#9658;</text>";
    }
}

void WriteHistogram(ReportPage& page, const YString& name, const Sample& sample)
{
    const VoHistogram histogram = HistogramOf(sample);
    const bool hasOutliers = histogram.below() + histogram.above() > 0;
    const std::string height = std::to_string(Base + (hasOutliers ? 40 : 24));
    page << "<svg width=\"" << std::to_string(Width) << "\" height=\"" << height << "\" viewBox=\"0 0 "
         << std::to_string(Width) << " " << height << "\" role=\"img\" aria-label=\"Distribution of ";
    page.text(name) << "\">";
    WriteCounts(page, histogram.count(histogram.mode()));
    WriteBars(page, histogram);
    if (sample.nominal)
        WriteNominalMark(page, histogram, *sample.nominal);
    WriteRange(page, histogram, sample);
    page << "</svg>";
}

void WriteStatistic(ReportPage& page, const char* label, double value, int digits)
{
    page << "<tr><th>" << label << "</th><td>";
    if (std::isnan(value))
        page << "&#8211;"; // the sample is too small for this figure
    else
        page.number(value, digits);
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
    WriteStatistic(page, "Mean", statistics.mean(), sample.digits);
    WriteStatistic(page, "Standard deviation", statistics.standardDeviation(), 6);
    WriteStatistic(page, "Minimum", statistics.min(), sample.digits);
    WriteStatistic(page, "Median", statistics.median(), sample.digits);
    WriteStatistic(page, "Maximum", statistics.max(), sample.digits);
    if (sample.nominal)
        WriteStatistic(page, "Nominal", *sample.nominal, sample.digits);
    if (sample.notFinite > 0)
        WriteCount(page, "Not finite", sample.notFinite);
    page << "</table>";
}

void WriteDistributions(ReportPage& page, const Cases& cases, const std::vector<vo::detail::LogColumn>& columns)
{
    page << "\t<div class=\"distributions\">\n";
    for (std::size_t i = 0; i < columns.size(); ++i) {
        Sample sample = SampleOf(cases, i);
        sample.digits = columns[i].digits;
        page << "\t<figure class=\"distribution\"><figcaption>";
        page.text(columns[i].name) << "</figcaption>";
        if (!sample.values.isEmpty())
            WriteHistogram(page, columns[i].name, sample);
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
        const auto columns = vo::detail::LogColumns(cases, header);
        WriteDistributions(page, cases, columns);
        vo::detail::WriteLogResults(page, cases, columns, vo::detail::Extremes::Plain);
        WriteSeeds(page, cases);
        vo::detail::WriteLogRuns(page, cases);
    });
}
