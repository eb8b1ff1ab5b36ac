#include <vo/Session.h>
#include <vo/line/CommandError.h>
#include <vo/line/Failures.h>
#include <vo/line/Paths.h>

#include <FileSystem/VoFileSystem.h>
#include <Misc/XMLReport/ReportDataFile.h>
#include <Misc/XMLReport/ReportPageFailure.h>
#include <Misc/XMLReport/ReportPages.h>

#include <limits>

namespace vo::tool {
namespace {

using Analysis = XMLReportHeader::Analysis;

struct Kind
{
    Analysis analysis;
    const char* name;
};

constexpr Kind Kinds[] = {
    {Analysis::Sensitivity, "sensitivity"}, {Analysis::MonteCarlo, "montecarlo"}, {Analysis::WorstCase, "worstcase"}};

VoString NameOf(Analysis analysis)
{
    for (const Kind& kind : Kinds)
        if (kind.analysis == analysis)
            return kind.name;
    return VoString();
}

Analysis AnalysisOf(const VoString& name)
{
    for (const Kind& kind : Kinds)
        if (name.equal(kind.name, VoString::CaseSensitive))
            return kind.analysis;
    throw UsageError("\"" + name + "\" is no kind of report: sensitivity, montecarlo or worstcase");
}

int SortColumn(const Arguments& arguments, Analysis analysis)
{
    if (analysis != Analysis::Sensitivity && arguments.has("sort"))
        throw UsageError("option --sort: only sensitivity reports are sorted");
    return static_cast<int>(arguments.integer("sort", 0, 0, std::numeric_limits<int>::max()));
}

VoString StyleFile(Session& session)
{
    const auto style = session.arguments.file("style");
    if (!style)
        return VoString();
    if (!VoFileSystem::Exists(*style))
        session.console.note("style file not found, the built-in style serves: " + PathText(*style));
    return style->toString();
}

ReportDataFile Read(const Session& session, const VoFilePath& results)
{
    try {
        return Doing(session.arguments, "read", session.arguments.argument(1),
                     [&] { return ReportDataFile::Read(results); });
    } catch (const CommandError& failure) {
        // What is wrong in a results file can do no harm.
        throw failure.code == ExitCode::Unsafe ? Failure(failure.text) : failure;
    }
}

bool Write(const ReportDataFile& data, const VoFilePath& page, const VoString& style, int column)
{
    switch (data.header.analysis) {
    case Analysis::Sensitivity:
        return sp_BuildHTMLSensitivityReport(page.toString(), style, data.cases, data.header, column);
    case Analysis::MonteCarlo:
        return sp_BuildMonteCarloHTMLReport(page.toString(), style, data.cases, data.header);
    case Analysis::WorstCase:
        return sp_BuildWorstCaseHTMLReport(page.toString(), style, data.cases, data.header);
    }
    return false;
}

ExitCode Run(Session& session)
{
    const Arguments& arguments = session.arguments;
    const Analysis analysis = AnalysisOf(arguments.argument(0));
    const int column = SortColumn(arguments, analysis);
    const VoFilePath results = arguments.fileArgument(1);
    const VoFilePath page = arguments.fileArgument(2);

    const ReportDataFile data = Read(session, results);
    if (data.header.analysis != analysis)
        throw Failure(arguments.argument(1) +
                      " holds the results of another analysis: " + NameOf(data.header.analysis));
    const VoString style = StyleFile(session);
    Doing(arguments, "write", arguments.argument(2), [&] {
        const ReportPageFailure failure;
        if (!Write(data, page, style, column))
            failure.rethrow();
    });

    session.console.fact("page", "page", PathText(page), PathText(page));
    session.console.fact("cases", "cases", data.cases.size());
    session.console.fact("results", "results", data.header.resultNames.size());
    return ExitCode::Done;
}

} // namespace

Command ReportCommand()
{
    return {"report",
            "sensitivity|montecarlo|worstcase RESULTS.xml OUT.html",
            "write the results of an analysis as a page for the browser",
            "Reads the results file of an analysis and writes its HTML page.\n"
            "Columns to sort by: 0 the case number, 1 the reference; then value, delta and norm of each result, by\n"
            "magnitude, the largest first.\n",
            {{"style", "FILE", "put the rules of FILE in the place of the built-in style"},
             {"sort", "COLUMN", "sort a sensitivity report by that column, instead of 0"}},
            3,
            3,
            Run};
}

} // namespace vo::tool
