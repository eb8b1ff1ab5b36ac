#include "VoProgram.h"

#include <vo/screen/TableOutput.h>

#include <Documents/VoZipArchive.h>
#include <Documents/VoZipFile.h>
#include <FileSystem/detail/NativePath.h>

#include <QtCore/QJsonArray>

namespace {

class TableTool : public VoProgram
{
protected:
    /// One part of a workbook in the scratch directory.
    std::string part(const std::string& workbook, const char* name) const
    {
        VoZipArchive archive(vo::detail::FromNative(text(workbook)), VoZipArchive::Read);
        return archive.open(VoFilePath(name)).lock()->readAll().toStdString();
    }
};

bool Contains(const std::string& text, const std::string& piece)
{
    return text.find(piece) != std::string::npos;
}

} // namespace

TEST_F(TableTool, CsvIsCleanedWithoutTouchingAField)
{
    write("in.csv", "\xef\xbb\xbfName;Value\n\"a\";1.50\n007;\"5\"\n\"x;y\"; z\n\n\"q\"\"q\";,\"");
    EXPECT_EQ(voJson("table --separator ; @in.csv @out.csv")[QStringLiteral("rows")].toInt(), 6);
    EXPECT_EQ(read("out.csv").toStdString(),
              "Name,Value\r\na,1.50\r\n007,\"5\"\r\nx;y,\" z\"\r\n\r\n\"q\"\"q\",\",\"\"\"\r\n");
    write("comma.csv", QByteArray("\xff\xfe"
                                  "1\0,\0"
                                  "5\0;\0\"\0"
                                  "1\0,\0"
                                  "5\0\"\0;\0\xac\x20",
                                  24));
    EXPECT_EQ(vo("table --decimal-comma --separator ; @comma.csv @out.csv").code, 0);
    EXPECT_EQ(read("out.csv").toStdString(), "1.5,\"1,5\",\xe2\x82\xac\r\n");
    write("texts.csv", "1,,true\n");
    EXPECT_EQ(vo("table --text @texts.csv @out.csv").code, 0);
    EXPECT_EQ(read("out.csv").toStdString(), "\"1\",,\"true\"\r\n");
}

TEST_F(TableTool, SeveralFilesBecomeSheetsOfAWorkbook)
{
    write("one.csv", "Year,2024\nx,1.5\n\"7\",12345678901\n3.1415926535,\n0402,+49,NaN,12345678901234567890,\x80\n");
    write("sub/One.csv", "a\n");
    const QJsonObject done = voJson("table --header 1 --encoding cp1252 @one.csv @sub/One.csv @out.xlsx");
    EXPECT_EQ(done[QStringLiteral("rounded")].toInt(), 1);
    EXPECT_EQ(done[QStringLiteral("keptAsText")].toInt(), 2);
    const std::string workbook = part("out.xlsx", "xl\\workbook.xml");
    EXPECT_TRUE(Contains(workbook, "\"one\"") && Contains(workbook, "\"One (2)\"")) << workbook;
    const std::string sheet = part("out.xlsx", "xl\\worksheets\\one.xml");
    for (const char* piece :
         {"<t>2024</t>", "<v>1.5</v>", "<t>7</t>", "<t>12345678901</t>", "<v>3.14159</v>", "<t>0402</t>", "<t>+49</t>",
          "<t>NaN</t>", "<t>12345678901234567890</t>", "<t>\xe2\x82\xac</t>"})
        EXPECT_TRUE(Contains(sheet, piece)) << piece << " in " << sheet;
}

TEST_F(TableTool, AnXmlSpreadsheetIsWritten)
{
    write("in.csv", "a,,1\n");
    EXPECT_EQ(vo("table @in.csv @out.xml").code, 0);
    const std::string document = read("out.xml").toStdString();
    EXPECT_TRUE(Contains(document, ">a<") && Contains(document, ">1<")) << document;
    EXPECT_FALSE(Contains(document, "null"));
}

TEST_F(TableTool, ShowAlignsColumnsAndHidesControlCharacters)
{
    write("in.csv", "Name,Value\nR1,1.5\n\xc3\xa9t\xc3\xa9,100\nlonger,\nx\x1b,-2\n" + QByteArray(60, 'w') + "\n");
    const Outcome run = vo("table --show --header 1 @in.csv");
    EXPECT_EQ(run.code, 0);
    const std::string blanks(36, ' ');
    EXPECT_EQ(run.out, "Name" + blanks + "  Value\n" + std::string(40, '-') + "  -----\nR1" + blanks + "      1.5\n" +
                           "\xc3\xa9t\xc3\xa9" + blanks + "     100\nlonger\nx\\x1b" + blanks.substr(1) + "     -2\n" +
                           std::string(39, 'w') + "\xe2\x80\xa6\n");
    const QJsonArray rows = voJson("table --show @in.csv")[QStringLiteral("rows")].toArray();
    EXPECT_EQ(rows.at(1).toObject()[QStringLiteral("cells")].toArray().at(1).toString(), QStringLiteral("1.5"));
}

TEST(TableToolNames, AFilesNameBecomesASheetName)
{
    using vo::tool::SheetName;
    for (const auto& [name, sheet] :
         {std::pair("a:b/c[1]'", "a_b_c_1__"), std::pair("", "Sheet"), std::pair(" ", "Sheet"),
          std::pair("0123456789012345678901234567890123", "0123456789012345678901234567890")})
        EXPECT_EQ(SheetName(name, 0).toStdString(), sheet);
    EXPECT_EQ(SheetName("0123456789012345678901234567890123", 1).toStdString(), "012345678901234567890123456 (2)");
}
