#include "VoProgram.h"

#include <Core/VoString.h>
#include <FileSystem/VoFilePath.h>
#include <Misc/XMLReport/ReportDataFile.h>

#include <QtCore/QJsonArray>

namespace {

class AnalysisCommands : public VoProgram
{
protected:
    void writeResults(const char* name, XMLReportHeader::Analysis analysis) const
    {
        XMLReportHeader header;
        header.analysis = analysis;
        header.resultNames = {"Gain"};
        YHashTable<XMLReportInfo> cases;
        for (int i = 1; i <= 3; ++i) {
            XMLReportInfo info;
            info.caseID = i;
            info.results.pushBack({});
            info.results[0].reference = i;
            cases.insert(i, info);
        }
        ReportDataFile::Write(VoFilePath(VoString(text(name))), cases, header);
    }
};

TEST_F(AnalysisCommands, LpPrintsTheAnswerAndItsProof)
{
    write("sample.lp", "maximize 3 x + 2 y subject to a: x + y <= 4 b: x + 3 y <= 6 end");
    const Outcome run = vo("lp @sample.lp");
    EXPECT_EQ(run.code, 0) << run;
    EXPECT_NE(run.out.find("  x = 4\n  y = 0\n"), std::string::npos) << run;
    const QJsonObject answer = voJson("lp @sample.lp");
    EXPECT_EQ(answer[QStringLiteral("value")].toDouble(), 12);
    EXPECT_EQ(answer[QStringLiteral("iterations")].toInt(), 1);
    EXPECT_EQ(answer[QStringLiteral("verdict")].toString(), QStringLiteral("optimal"));
    EXPECT_EQ(answer[QStringLiteral("parameters")].toArray().size(), 2);
}

TEST_F(AnalysisCommands, LpEndsWithACodeOfItsOwnUnlessTheAnswerIsProven)
{
    write("degenerate.lp", "max 2x + 3y st x + 2y <= 2 x + y <= 1 end");
    const QJsonObject wrong = voJson("lp @degenerate.lp", 7);
    EXPECT_EQ(wrong[QStringLiteral("verdict")].toString(), QStringLiteral("infeasible"));
    EXPECT_TRUE(wrong[QStringLiteral("zeroRatioPassedOver")].toBool());
    write("sample.lp", "max 3x + 2y st x + y <= 4 x + 3y <= 6 end");
    EXPECT_FALSE(voJson("lp @sample.lp --iterations 0", 7)[QStringLiteral("found")].toBool());
}

TEST_F(AnalysisCommands, ReportWritesThePageOfEachKind)
{
    using Analysis = XMLReportHeader::Analysis;
    for (const auto& [analysis, kind, title] :
         {std::tuple{Analysis::Sensitivity, "sensitivity", "Sensitivity Analysis Report"},
          std::tuple{Analysis::MonteCarlo, "montecarlo", "Monte Carlo Log"},
          std::tuple{Analysis::WorstCase, "worstcase", "Worst Case Log"}}) {
        writeResults("results.xml", analysis);
        const QJsonObject done = voJson(std::string("report ") + kind + " @results.xml @page.html");
        EXPECT_EQ(done[QStringLiteral("cases")].toInt(), 3);
        EXPECT_TRUE(read("page.html").contains((std::string("<title>") + title + "</title>").c_str())) << kind;
    }
    EXPECT_EQ(vo("report sensitivity @results.xml @other.html").err,
              "vo: " + text("results.xml") + " holds the results of another analysis: worstcase\n");
    EXPECT_FALSE(exists("other.html"));
    write("own.css", "td { color: red }");
    writeResults("results.xml", Analysis::Sensitivity);
    EXPECT_EQ(vo("report sensitivity @results.xml @page.html --style @own.css --sort 2").code, 0);
    const QByteArray page = read("page.html");
    EXPECT_TRUE(page.contains("<style>\ntd { color: red }</style>"));
    EXPECT_LT(page.indexOf("<td rowspan=\"1\">3</td>"), page.indexOf("<td rowspan=\"1\">Nominal</td>"));
}

} // namespace
