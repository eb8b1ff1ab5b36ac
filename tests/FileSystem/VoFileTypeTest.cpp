#include "FileSystemFixture.h"

#include <Core/VoDeque.h>
#include <FileSystem/VoFileType.h>

namespace {

class VoFileTypeOnDisk : public vo::test::FileSystemFixture
{
};

} // namespace

TEST(VoFileType, NamesAndFiltersAreThoseThatSettingsHold)
{
    struct
    {
        int type;
        const char* name;
        const char* icon;
        const char* filter;
    } const rows[] = {
        {0, "Undefined", "", "All Files (*)"},
        {1, "Directory", "", "All Files (*)"},
        {5, "RVWReport", ":/RVWReport.png", "RVWReport (*.log.html)"},
        {9, "Image", "", "Image (*.bmp *.jpg *.png *.JPG *.jpeg)"},
        {17, "Text", ":/TextFileIcon.png", "Text (*.voslb *.slb)"},
        {22, "Spreadsheet (XLSX)", "", "Spreadsheet (XLSX) (*.xslx)"},
        {23, "Zip", "", "Zip (*.zip *.ZIP)"},
        {24, "Undefined", "", "All Files (*)"},
        {-1, "Undefined", "", "All Files (*)"},
    };
    for (const auto& row : rows) {
        const VoFileType type(static_cast<VoFileType::Type>(row.type));
        EXPECT_EQ(VoFileType::ToString(type).toStdString(), row.name) << row.type;
        EXPECT_EQ(type.icon().toStdString(), row.icon) << row.type;
        EXPECT_EQ(type.filter().toStdString(), row.filter) << row.type;
    }
}

TEST(VoFileType, IsFoundByItsNameWhateverTheCase)
{
    for (int number = VoFileType::AEExamples; number <= VoFileType::Zip; ++number) {
        const auto type = static_cast<VoFileType::Type>(number);
        EXPECT_EQ(VoFileType::FromName(VoFileType::ToString(type)), type);
    }
    EXPECT_EQ(VoFileType::FromName("gRAPH"), VoFileType::Graph);
    for (const char* unknown : {"", "Graph ", "Undefined", "Directory", "nothing"})
        EXPECT_EQ(VoFileType::FromName(unknown), VoFileType::Undefined) << unknown;
}

TEST(VoFileType, IsFoundByTheLastExtensionAndTheFirstRowWins)
{
    const std::pair<const char*, VoFileType::Type> rows[] = {
        {"a\\x.vogph", VoFileType::Graph},  {"X.VOGPX", VoFileType::Graph},       {"x.cir", VoFileType::Model},
        {"x.vocmp", VoFileType::Component}, {"x.slb", VoFileType::SymbolLibrary}, {"x.log.html", VoFileType::HTML},
        {"x.Jpeg", VoFileType::Image},      {"x.xslx", VoFileType::Spreadsheet},  {"x.xlsx", VoFileType::Undefined},
        {"x", VoFileType::Undefined},       {"x.", VoFileType::Undefined},        {".zip", VoFileType::Undefined},
        {"", VoFileType::Undefined},        {"a.zip\\", VoFileType::Directory},   {"a.zip\\x", VoFileType::Undefined},
    };
    for (const auto& [path, type] : rows)
        EXPECT_EQ(VoFileType(VoFilePath(path)), type) << path;
}

TEST_F(VoFileTypeOnDisk, ADirectoryOnDiskIsOneWhateverItsName)
{
    write("archive.zip\\x");
    EXPECT_EQ(VoFileType::FromPath(at("archive.zip")), VoFileType::Directory);
    write("file.zip");
    EXPECT_EQ(VoFileType::FromPath(at("file.zip")), VoFileType::Zip);
}

TEST(VoFileType, ListsItsExtensionsAndPrintsItsName)
{
    const VoDeque<VoString> extensions = VoFileType(VoFileType::Image).extensions();
    ASSERT_EQ(extensions.size(), 5U);
    EXPECT_EQ(extensions[3].toStdString(), ".JPG");
    EXPECT_TRUE(VoFileType(VoFileType::Directory).extensions().isEmpty());
    std::ostringstream stream;
    stream << VoFileType(VoFileType::Graph);
    EXPECT_EQ(stream.str(), "Graph");
    EXPECT_TRUE(VoFileType(VoFileType::Graph) == VoFileType::Graph);
    EXPECT_TRUE(VoFileType(VoFileType::Graph) != VoFileType(VoFileType::Zip));
}
