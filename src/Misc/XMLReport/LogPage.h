#pragma once

#include <Misc/XMLReport/ReportPage.h>
#include <Misc/XMLReport/XMLReportHeader.h>
#include <Misc/XMLReport/XMLReportInfo.h>

#include <cstddef>

/// @file
/// The sections that the logs of Monte Carlo and worst-case analyses have in common.

namespace vo::detail {

/// The page's heading and the table of what is said of the analysis as a whole.
void WriteLogHeader(ReportPage& page, const char* heading, const XMLReportHeader& header);

/// The number of columns for results: one for each name, and one for each further result of the first case.
std::size_t NumberOfLogColumns(const YHashTable<XMLReportInfo>& cases, const XMLReportHeader& header);

/// The table of all runs with their results.
void WriteLogResults(ReportPage& page, const YHashTable<XMLReportInfo>& cases, const XMLReportHeader& header);

/// A section for each run, with the parameters that were changed.
void WriteLogRuns(ReportPage& page, const YHashTable<XMLReportInfo>& cases);

} // namespace vo::detail
