#pragma once

#include <Maths/VoStatistics.h>
#include <Misc/XMLReport/XMLReportHeader.h>
#include <Misc/XMLReport/XMLReportInfo.h>
#include <Misc/XMLReport/detail/ReportPage.h>

#include <cstddef>
#include <string_view>
#include <vector>

/// @file
/// The sections that the logs of Monte Carlo and worst-case analyses have in common.

namespace vo::detail {

/// One result over all runs.
struct LogColumn
{
    YString name;       ///< Empty where the header names none.
    int digits = 6;     ///< How many significant digits tell its values apart.
    double minimum = 0; ///< The smallest value; NaN when there is none.
    double maximum = 0; ///< The largest value; NaN when there is none.

    /// Whether the values differ, so that some are extremes.
    bool varies() const { return minimum < maximum; }
};

/// How many significant digits tell the values of a sample apart: three more than the middle half of them has in
/// common, at least the six of "%g".
int DigitsFor(const VoStatistics& sample);

/// The table of what is said of the analysis as a whole; each part of it ends with `lineEnd` and begins with
/// `indent`.
void WriteHeaderTable(ReportPage& page, const XMLReportHeader& header, std::string_view indent,
                      std::string_view lineEnd);

/// The page's heading and the table of what is said of the analysis as a whole.
void WriteLogHeader(ReportPage& page, const char* heading, const XMLReportHeader& header);

/// The columns for results: one for each name, and one for each further result of the first case.
std::vector<LogColumn> LogColumns(const YHashTable<XMLReportInfo>& cases, const XMLReportHeader& header);

/// Whether the table of all runs shows which values are the extremes of their column.
enum class Extremes
{
    Plain,
    Marked
};

/// The table of all runs with their results.
void WriteLogResults(ReportPage& page, const YHashTable<XMLReportInfo>& cases, const std::vector<LogColumn>& columns,
                     Extremes extremes);

/// A section for each run, with the parameters that were changed.
void WriteLogRuns(ReportPage& page, const YHashTable<XMLReportInfo>& cases);

} // namespace vo::detail
