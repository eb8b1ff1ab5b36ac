#include "InterleavedTiming.h"
#include "ResultRow.h"

#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>
#include <Misc/XMLReport/ReportDataFile.h>
#include <Misc/XMLReport/ReportPages.h>

#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <cstdio>
#include <fstream>
#include <string>

/// @file
/// Pages of an analysis of 10,000 cases with 20 results and 5 lot items each. The sensitivity page stands beside its
/// floor, the same bytes formatted plainly with fprintf. Memory is the process' highest, taken before and after a job.

namespace {

struct Analysis
{
    YHashTable<XMLReportInfo> cases;
    XMLReportHeader header;
};

Analysis MakeAnalysis(int cases)
{
    Analysis analysis;
    for (int k = 0; k < 20; ++k)
        analysis.header.resultNames.pushBack(YString("Result " + std::to_string(k)));
    for (int i = 1; i <= cases; ++i) {
        XMLReportInfo info;
        info.caseID = i;
        for (int k = 0; k < 20; ++k) {
            XMLReportInfo::Result result;
            result.reference = 1e-6 * i + k / 7.0;
            result.delta = 1e-3 * ((i * 31 + k * 17) % 1009 - 500);
            info.results.pushBack(result);
        }
        for (int k = 0; k < 5; ++k) {
            XMLReportInfo::LotItem item;
            item.parameter.refdes = YString("R" + std::to_string(i % 100 + k));
            item.parameter.param = "RES";
            item.description = item.parameter.description();
            item.nominal = 1000;
            item.value = 1010;
            info.lotItems.pushBack(item);
        }
        info.buildNormalisedSensitivity();
        analysis.cases.insert(i, std::move(info));
    }
    return analysis;
}

void PlainPage(const std::string& name, const Analysis& analysis)
{
    std::FILE* file = std::fopen(name.c_str(), "w");
    for (const auto& [number, info] : analysis.cases) {
        std::fprintf(file, "\t\t<tr><td rowspan=\"%d\">%d</td><td rowspan=\"%d\">%s</td>", 5, number, 5,
                     info.lotItems[0].description.c_str());
        for (const auto& result : info.results)
            std::fprintf(file, "<td rowspan=\"%d\">%g</td><td rowspan=\"%d\">%g</td><td rowspan=\"%d\">%g</td>", 5,
                         result.reference, 5, result.delta, 5, result.sensitivity);
        for (const auto& item : info.lotItems)
            std::fprintf(file, "<td>%s</td><td>%g</td><td>%g</td></tr>\n\t\t<tr>", item.description.c_str(),
                         item.nominal, item.value);
    }
    std::fclose(file);
}

// The highest resident memory so far, in KiB; 0 where the system does not tell.
long HighestMemory()
{
    std::ifstream status("/proc/self/status");
    std::string word;
    long value = 0;
    while (status >> word)
        if (word == "VmHWM:" && status >> value)
            return value;
    return 0;
}

double Once(const std::function<void()>& job)
{
    return InterleavedTiming({job}, 1, 0)[0];
}

} // namespace

int main()
{
    QTemporaryDir directory;
    const auto path = [&](const char* name) { return directory.filePath(QString::fromUtf8(name)).toStdString(); };
    const YString page(path("page.html"));
    const int cases = IsSmokeRun() ? 100 : 10000;
    const int repetitions = IsSmokeRun() ? 1 : 7;
    const Analysis analysis = MakeAnalysis(cases);
    const long before = HighestMemory();
    sp_BuildHTMLSensitivityReport(page, "", analysis.cases, analysis.header, 0);
    const long after = HighestMemory();
    const auto bytes = QFileInfo(directory.filePath(QStringLiteral("page.html"))).size();

    const auto times =
        InterleavedTiming({[&] { sp_BuildHTMLSensitivityReport(page, "", analysis.cases, analysis.header, 1000); },
                           [&] { PlainPage(path("plain.html"), analysis); }},
                          repetitions);
    ResultRow sorted{"sensitivity page, sorted by norm", Milliseconds(times[0]), Milliseconds(times[1]) + " fprintf"};
    sorted.ratio = times[1] / times[0];
    sorted.atLeast = 0.5;
    PrintRow(sorted);
    PrintRow({"memory of it above the data", std::to_string(after - before) + " kB",
              std::to_string(bytes / 1024) + " kB page"});

    const Analysis small = MakeAnalysis(cases / 4);
    const auto growth =
        InterleavedTiming({[&] { sp_BuildHTMLSensitivityReport(page, "", analysis.cases, analysis.header, 1000); },
                           [&] { sp_BuildHTMLSensitivityReport(page, "", small.cases, small.header, 1000); }},
                          repetitions);
    ResultRow fourfold{"the same at 4 n over the same at n", Milliseconds(growth[0]), Milliseconds(growth[1])};
    fourfold.ratio = growth[0] / growth[1];
    PrintRow(fourfold);

    const VoFilePath results{VoString(path("results.xml"))};
    PrintRow({"writing the results file",
              Milliseconds(Once([&] { ReportDataFile::Write(results, analysis.cases, analysis.header); }))});
    PrintRow({"reading it", Milliseconds(Once([&] { ReportDataFile::Read(results); }))});
    PrintRow({"Monte Carlo page",
              Milliseconds(Once([&] { sp_BuildMonteCarloHTMLReport(page, "", analysis.cases, analysis.header); }))});
    return 0;
}
