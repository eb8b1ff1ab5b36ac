#include "ReportFixture.h"

#include <Approved.h>

#include <FileSystem/VoFilePath.h>
#include <IO/VoStringDevice.h>
#include <Maths/VoRandom.h>
#include <Misc/XMLReport/ReportDataFile.h>
#include <Misc/XMLReport/ReportPages.h>
#include <XML/VoXMLValidator.h>

#include <fstream>

namespace {

using vo::test::Cases;

// A case as text, its numbers exactly.
std::string Shown(const XMLReportInfo& info)
{
    std::ostringstream text;
    text << std::hexfloat << info.caseID << ' ' << info.reference << ' ' << info.seed;
    for (const auto& result : info.results)
        text << "\nresult " << result.reference << ' ' << result.delta << ' ' << result.sensitivity << ' '
             << result.sensitivityState;
    for (const auto& item : info.lotItems)
        text << "\nitem " << item.description << '|' << item.parameter.description() << '|' << item.nominal << ' '
             << item.value;
    return text.str();
}

Cases RandomCases(VoRandom& random, std::size_t results)
{
    const auto number = [&] {
        const double odd[] = {0.0, -0.0, std::nan(""), std::numeric_limits<double>::infinity(), 5e-324};
        return random.integer(0, 4) == 0 ? odd[random.integer(0, 4)] : random.normal(0, 1e3);
    };
    const auto text = [&] {
        const char* texts[] = {"", "R1", "a <b> & \"c\" %s", "\xc2\xb5\xe2\x82\xac", "x  y", " \t\r\n"};
        return YString(texts[random.integer(0, 5)]);
    };
    Cases cases;
    for (int i = 0; i < 12; ++i) {
        XMLReportInfo info;
        info.caseID = static_cast<std::int32_t>(random.integer(-3, 20));
        info.reference = text();
        info.seed = random.integer(std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max());
        for (std::int64_t j = random.integer(0, static_cast<std::int64_t>(results)); j > 0; --j)
            info.results.pushBack(vo::test::Result(number(), number()));
        for (std::int64_t j = random.integer(0, 3); j > 0; --j) {
            XMLReportInfo::LotItem item;
            item.parameter = {text(), text(), text(), text(), text(), text(), text()};
            item.description = random.integer(0, 1) == 0 ? text() : item.parameter.description();
            item.nominal = number();
            item.value = number();
            info.lotItems.pushBack(item);
        }
        info.buildNormalisedSensitivity();
        cases.insert(info.caseID, info);
    }
    return cases;
}

class ReportDataFiles : public vo::test::ReportTest
{
protected:
    VoFilePath file() const { return m_folder.path("results.xml"); }

    VoXMLValidator schema() const
    {
        return VoXMLValidator(m_folder.write("results.xsd", ReportDataFile::Schema().toStdString()));
    }

    // What was written is valid; where it says that the schema is found is nowhere to be reached from here.
    void expectValid() const
    {
        std::string text = m_folder.read("results.xml");
        const std::size_t place = text.find(" xsi:schemaLocation=");
        ASSERT_NE(place, std::string::npos);
        text.erase(place, text.find('>', place) - place);
        VoStringDevice device{VoString(text)};
        EXPECT_NO_THROW(schema().validate(device)) << text;
    }
};

TEST_F(ReportDataFiles, GiveBackWhatWasWritten)
{
    VoRandom random(41);
    XMLReportHeader header;
    header.date = "2024-05-01";
    header.card = ".MC 10";
    header.title = "R1 < 10k & \"so\" on";
    header.cores = -1;
    header.resultNames = {"Gain", "", "%s <b>"};
    for (auto analysis : {XMLReportHeader::Analysis::Sensitivity, XMLReportHeader::Analysis::MonteCarlo,
                          XMLReportHeader::Analysis::WorstCase}) {
        header.analysis = analysis;
        const Cases cases = RandomCases(random, header.resultNames.size());
        ReportDataFile::Write(file(), cases, header);
        expectValid();
        Cases readCases;
        XMLReportHeader readHeader;
        ASSERT_TRUE(sp_CompileSensReportData(path("results.xml"), &readCases, &readHeader));
        ASSERT_EQ(readCases.size(), cases.size());
        for (const auto& [number, info] : cases) {
            ASSERT_TRUE(readCases.find(number));
            EXPECT_EQ(Shown(readCases[number]), Shown(info));
        }
        EXPECT_EQ(readHeader.analysis, analysis);
        EXPECT_EQ(readHeader.date, header.date);
        EXPECT_EQ(readHeader.card, header.card);
        EXPECT_EQ(readHeader.title, header.title);
        EXPECT_EQ(readHeader.cores, header.cores);
        EXPECT_EQ(readHeader.resultNames, header.resultNames);
    }
}

TEST_F(ReportDataFiles, AreWrittenAsDescribed)
{
    XMLReportHeader header;
    header.resultNames = {"Gain"};
    XMLReportInfo info = vo::test::Case(2, {vo::test::Result(1, -0.0)}, {vo::test::LotItem("Refdes R1", 1, 1)});
    info.lotItems[0].parameter.refdes = "R1";
    Cases cases;
    cases.insert(2, info);
    ReportDataFile::Write(file(), cases, header);
    vo::test::ExpectApproved(m_folder.read("results.xml"), VOCORE_APPROVED "/results.xml");
}

TEST_F(ReportDataFiles, ThatAreNotSoundAreRefusedAndNothingChanges)
{
    const VoXMLValidator validator = schema();
    std::ifstream lines(VOCORE_APPROVED "/refused-results.txt"); // a document, and what the reader says of it
    int documents = 0;
    for (std::string text, message; std::getline(lines, text) && std::getline(lines, message); ++documents) {
        SCOPED_TRACE(text);
        if (const auto place = text.find("{ns}"); place != std::string::npos)
            text.replace(place, 4, "https://schemas.example.org/schemas/application/msw/");
        m_folder.write("results.xml", text);
        Cases cases = vo::test::Table({vo::test::Case(9, {}, {})});
        XMLReportHeader header;
        header.title = "before";
        EXPECT_FALSE(sp_CompileSensReportData(path("results.xml"), &cases, &header));
        EXPECT_TRUE(cases.size() == 1 && cases.find(9));
        EXPECT_EQ(header.title, YString("before"));
        EXPECT_EQ(validator.isValid(file()), message.rfind("(reader only)", 0) == 0) << "what a schema cannot say";
        message.erase(0, message.find("=> ") + 3);
        if (message != "*") {
            EXPECT_THROW_MSG(ReportDataFile::Read(file()), VoValidationException, message);
        }
    }
    EXPECT_GT(documents, 20);
}

TEST_F(ReportDataFiles, ThatAreCutAnywhereAreRefused)
{
    VoRandom random(43);
    XMLReportHeader header;
    header.resultNames = {"Gain"};
    ReportDataFile::Write(file(), RandomCases(random, 1), header);
    std::string whole = m_folder.read("results.xml");
    whole.resize(whole.rfind('>') + 1);
    for (std::size_t length = 0; length < whole.size(); length += length < 600 ? 1 : 37) {
        m_folder.write("results.xml", whole.substr(0, length));
        Cases cases;
        ASSERT_FALSE(sp_CompileSensReportData(path("results.xml"), &cases, &header)) << length;
    }
}

TEST_F(ReportDataFiles, ThatAreMissingOrNoFilesAreRefused)
{
    Cases cases;
    XMLReportHeader header;
    EXPECT_FALSE(sp_CompileSensReportData(path("missing.xml"), &cases, &header));
    EXPECT_FALSE(sp_CompileSensReportData("", &cases, &header));
    EXPECT_FALSE(sp_CompileSensReportData("/dev/zero", &cases, &header));
    EXPECT_FALSE(sp_CompileSensReportData(path("results.xml"), nullptr, &header));
    EXPECT_FALSE(sp_CompileSensReportData(path("results.xml"), &cases, nullptr));
    EXPECT_THROW(ReportDataFile::Read(file()), VoFileNotFoundException);
    EXPECT_THROW(ReportDataFile::Read(VoFilePath(VoString("/"))), VoException);
}

TEST_F(ReportDataFiles, KeepTheOldOneWhenTheyCannotBeWritten)
{
    m_folder.write("results.xml", "old");
    XMLReportHeader header;
    const Cases cases = vo::test::Table({vo::test::Case(7, {vo::test::Result(1, 0)}, {})});
    EXPECT_THROW_MSG(ReportDataFile::Write(file(), cases, header), VoValidationException,
                     "Case 7: more results than the header names");
    header.analysis = static_cast<XMLReportHeader::Analysis>(3);
    EXPECT_THROW_MSG(ReportDataFile::Write(file(), {}, header), VoValidationException, "Invalid analysis");
    header.analysis = XMLReportHeader::Analysis::WorstCase;
    header.title = "\x01";
    EXPECT_THROW_MSG(ReportDataFile::Write(file(), {}, header), VoInvalidXMLOperation, "Character not allowed in XML");
    EXPECT_EQ(m_folder.read("results.xml"), "old");
}

// Steps of one case continue one another, and what is not known is left alone.
TEST_F(ReportDataFiles, ReadStepsInTheirOrder)
{
    const ReportDataFile data = ReportDataFile::Read(VoFilePath(VOCORE_APPROVED "/results-of-steps.xml"));
    const XMLReportInfo* info = data.cases.find(4);
    ASSERT_TRUE(info);
    ASSERT_EQ(info->lotItems.size(), 2u);
    EXPECT_EQ(info->lotItems[1].description, YString("Var: v"));
    ASSERT_EQ(info->results.size(), 2u);
    EXPECT_EQ(info->results[1].sensitivityState, 1) << "computed on reading";
}

} // namespace
