#pragma once

#include <Core/VoExport.h>
#include <Core/VoHostTypes.h>

class XMLReportInfo;
struct XMLReportHeader;

/// @file
/// The pages that show the results of an analysis in a browser.
///
/// Each function writes one HTML page and replaces the file as a whole: an older page stays as it was unless the new
/// one is complete. The answer is false when the file could not be opened for writing, or not written to its end (a
/// full disk); it is never a device or a pipe. File names are UTF-8.
///
/// A style file that can be read takes the place of the built-in style, byte by byte; else the built-in one serves,
/// with a few rules more that align numbers, keep the heading in sight and fit narrow windows.
///
/// Texts are shown as they are, whatever characters they hold, and numbers with six significant digits in the same form
/// everywhere, results in the logs with as many more as it takes to tell them apart. Lines end with a line feed on
/// every platform. A page is written while it is made: memory does not grow with it, but for a few numbers a case.

/// Writes the page "Sensitivity Analysis Report": a table of all cases with their results and perturbed parameters.
///
/// `sortColumn` says what the cases are sorted by: 0 the number, 1 the reference text without regard to case, 2 + 3k
/// the value, 3 + 3k the change and 4 + 3k the sensitivity of result k, these by magnitude, the largest first. Equal
/// cases stay in the order of their numbers; what is no number comes last. A column beyond the last one stands for the
/// last result's sensitivity, but for the one directly behind it, by which nothing is sorted; a negative one for 0.
/// The number of results is that of the nominal case, 0 without one.
VOCORE_EXPORT bool sp_BuildHTMLSensitivityReport(const YString& file, const YString& styleFile,
                                                 const YHashTable<XMLReportInfo>& cases, const XMLReportHeader& header,
                                                 int sortColumn);

/// Writes the page "Monte Carlo Log": how each result is distributed over the runs (the nominal one left out), the
/// results of all runs, their seeds and their parameters. A value that lies farther from the middle half of the others
/// than three times their width is counted beside the distribution, so that it does not flatten it.
VOCORE_EXPORT bool sp_BuildMonteCarloHTMLReport(const YString& file, const YString& styleFile,
                                                const YHashTable<XMLReportInfo>& cases, const XMLReportHeader& header);

/// Writes the page "Worst Case Log": the extremes of each result, the results of all runs with the extremes marked, and
/// the runs' parameters.
VOCORE_EXPORT bool sp_BuildWorstCaseHTMLReport(const YString& file, const YString& styleFile,
                                               const YHashTable<XMLReportInfo>& cases, const XMLReportHeader& header);

/// Fills a table of cases and a header from a results file (see ReportDataFile), and computes the sensitivities of
/// every case. False, with both as they were, when the file is missing, damaged or of another kind, or when one of the
/// two is null. ReportDataFile::Read() tells the reason.
VOCORE_EXPORT bool sp_CompileSensReportData(const YString& file, YHashTable<XMLReportInfo>* cases,
                                            XMLReportHeader* header);
