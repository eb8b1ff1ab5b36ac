#include "../FileSystem/FileSystemFixture.h"

#include <Core/VoDeque.h>
#include <Core/VoFileException.h>
#include <Core/VoPair.h>
#include <Core/VoVariant.h>
#include <Core/VoXMLException.h>
#include <Documents/VoOOXMLWriter.h>
#include <Documents/VoOOXMLWriterSpreadsheet.h>
#include <Documents/VoXMLSpreadsheetWriter.h>
#include <Documents/VoZipArchive.h>
#include <Documents/VoZipFile.h>
#include <IO/VoFileDevice.h>
#include <IO/VoIOException.h>
#include <IO/VoStringDevice.h>
#include <LogCapture.h>
#include <ScratchFolder.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamWriter.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale>
#include <random>

#if defined(__unix__)
#include <sys/stat.h>
#endif

namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();

VoString Bytes(const char* data, std::size_t size)
{
    return VoString(data, size);
}

/// Texts that programs on the way might change, drop, evaluate or refuse, and how the cell's text must look in XML
/// after the notation for control characters was applied.
struct NaughtyText
{
    VoString text;
    VoString written;
    VoString read; ///< As a program that does not know that notation shows it; mostly the same as written.
};

std::vector<NaughtyText> NaughtyTexts()
{
    std::string longText;
    for (int i = 0; i < 40000; ++i)
        longText += static_cast<char>('a' + i % 26);
    std::string longWide; // one character of three bytes, then characters of two units each
    longWide += "\xE2\x82\xAC";
    for (int i = 0; i < 20000; ++i)
        longWide += "\xF0\x9F\x98\x80";
    const auto same = [](const VoString& text) { return NaughtyText{text, text, text}; };
    return {
        same(""),
        same(" outer blanks "),
        same("\ttab\t"),
        same("two\nlines"),
        {"two\r\nlines", "two_x000D_\nlines", "two_x000D_\nlines"},
        same("<a href=\"x\">&amp;</a>"),
        same("]]>"),
        same("=1+1"),
        same("+1"),
        same("@SUM(A1)"),
        same("'quoted"),
        same("1,5"),
        same("007"),
        same("Gr\xC3\xB6\xC3\x9F"
             "e \xE2\x82\xAC \xF0\x9F\x98\x80"),
        {"_x0041_", "_x005F_x0041_", "_x005F_x0041_"},
        {"__x0aF9__x0041", "__x005F_x0aF9__x0041", "__x005F_x0aF9__x0041"},
        {Bytes("\x01 \x1F \0 end", 9), "_x0001_ _x001F_ _x0000_ end", "_x0001_ _x001F_ _x0000_ end"},
        {"\xEF\xBF\xBE"
         "a"
         "\xEF\xBF\xBF",
         "_xFFFE_a_xFFFF_", "_xFFFE_a_xFFFF_"},
        same("a \xEF\xBB\xBF"
             "mark"),
        {"bad \xFF utf \xC3", "bad \xEF\xBF\xBD utf \xEF\xBF\xBD", "bad \xEF\xBF\xBD utf \xEF\xBF\xBD"},
        {longText, longText.substr(0, 32767), longText.substr(0, 32767)},
        {longWide, longWide.substr(0, 3 + 4 * 16383), longWide.substr(0, 3 + 4 * 16383)},
    };
}

class Workbook : public testing::Test
{
protected:
    VoFilePath file() const { return m_scratch.path("book.xlsx"); }

    std::string part(const char* name) const
    {
        VoZipArchive archive(file(), VoZipArchive::Read);
        return archive.open(name)->readRemaining().toStdString();
    }

    /// The rows of a worksheet that some calls write, as they stand in its XML.
    template <typename Write>
    std::string sheetData(Write write) const
    {
        VoOOXMLWriter workbook(file(), VoOOXMLWriter::Spreadsheet);
        write(*workbook.addSheet("Sheet"));
        workbook.close();
        const std::string xml = part("xl/worksheets/Sheet.xml");
        const std::size_t start = xml.find("<sheetData");
        return xml.substr(start, xml.find("</worksheet>") - start);
    }

    vo::test::ScratchFolder m_scratch;
};

/// A locale that writes 1.5 as 1,5 and 1000 as 1.000, without one being installed.
class GermanNumbers : public std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

} // namespace

TEST_F(Workbook, EveryPartIsWhatProgramsExpect)
{
    {
        VoOOXMLWriter workbook(file(), VoOOXMLWriter::Spreadsheet);
        workbook.addSheet("One")->addCell(1);
        workbook.addSheet("Gr\xC3\xB6\xC3\x9F"
                          "e 2");
        workbook.close();
        workbook.close();
    }
    const VoDeque<VoFilePath> expected = {"xl\\worksheets\\One.xml",
                                          "xl\\worksheets\\Gr%C3%B6%C3%9F"
                                          "e%202.xml",
                                          "[Content_Types].xml",
                                          "_rels\\.rels",
                                          "xl\\_rels\\workbook.xml.rels",
                                          "xl\\workbook.xml"};
    EXPECT_EQ(VoZipArchive(file(), VoZipArchive::Read).paths(), expected);
    const std::string declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    const std::string sheetNamespace = "xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"";
    const std::string office = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
    const std::string packageType = "application/vnd.openxmlformats-";
    const std::string sheetType = packageType + "officedocument.spreadsheetml.";
    const std::pair<const char*, std::string> parts[] = {
        {"xl/worksheets/One.xml",
         "<worksheet " + sheetNamespace + "><sheetData><row><c r=\"A1\"><v>1</v></c></row></sheetData></worksheet>"},
        {"xl/worksheets/Gr%C3%B6%C3%9F"
         "e%202.xml",
         "<worksheet " + sheetNamespace + "><sheetData/></worksheet>"},
        {"[Content_Types].xml", "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
                                "<Default Extension=\"rels\" ContentType=\"" +
                                    packageType +
                                    "package.relationships+xml\"/>"
                                    "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
                                    "<Override PartName=\"/xl/workbook.xml\" ContentType=\"" +
                                    sheetType +
                                    "sheet.main+xml\"/>"
                                    "<Override PartName=\"/xl/worksheets/One.xml\" ContentType=\"" +
                                    sheetType +
                                    "worksheet+xml\"/>"
                                    "<Override PartName=\"/xl/worksheets/Gr%C3%B6%C3%9F"
                                    "e%202.xml\" ContentType=\"" +
                                    sheetType + "worksheet+xml\"/></Types>"},
        {"_rels/.rels", "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
                        "<Relationship Target=\"xl/workbook.xml\" Id=\"rId1\" Type=\"" +
                            office + "/officeDocument\"/></Relationships>"},
        {"xl/_rels/workbook.xml.rels",
         "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
         "<Relationship Target=\"worksheets/One.xml\" Id=\"rId1\" Type=\"" +
             office +
             "/worksheet\"/>"
             "<Relationship Target=\"worksheets/Gr%C3%B6%C3%9F"
             "e%202.xml\" Id=\"rId2\" Type=\"" +
             office + "/worksheet\"/></Relationships>"},
        {"xl/workbook.xml", "<workbook " + sheetNamespace + " xmlns:r=\"" + office +
                                "\"><sheets><sheet name=\"One\" sheetId=\"1\" r:id=\"rId1\"/>"
                                "<sheet name=\"Gr\xC3\xB6\xC3\x9F"
                                "e 2\" sheetId=\"2\" r:id=\"rId2\"/></sheets></workbook>"},
    };
    for (const auto& [name, content] : parts)
        EXPECT_EQ(part(name), declaration + content + "\n") << name;
}

TEST_F(Workbook, CellsFlowAroundWhatIsMerged)
{
    const std::string empty = sheetData([](VoOOXMLWriterSpreadsheet& sheet) {
        sheet.startRow();
        sheet.addCell(1);
        sheet.addCell(2, 3, 1);
        EXPECT_EQ(sheet.nextColumn(), 5U);
        sheet.addCell(3, 0, 2);
        sheet.startRow();
        sheet.addCell(true, 9, 1); // would run over E1:E2
        EXPECT_EQ(sheet.nextColumn(), 6U);
        sheet.startRow();
        sheet.startRow();
        sheet.addCell(4, 1, 2);
    });
    EXPECT_EQ(empty, "<sheetData><row><c r=\"A1\"><v>1</v></c><c r=\"B1\"><v>2</v></c><c r=\"C1\"/><c r=\"D1\"/>"
                     "<c r=\"E1\"><v>3</v></c></row>"
                     "<row><c r=\"A2\" t=\"b\"><v>1</v></c><c r=\"B2\"/><c r=\"C2\"/><c r=\"D2\"/><c r=\"E2\"/></row>"
                     "<row/><row><c r=\"A4\"><v>4</v></c></row><row><c r=\"A5\"/></row></sheetData>"
                     "<mergeCells count=\"4\"><mergeCell ref=\"B1:D1\"/><mergeCell ref=\"E1:E2\"/>"
                     "<mergeCell ref=\"A2:D2\"/><mergeCell ref=\"A4:A5\"/></mergeCells>");
}

TEST_F(Workbook, TheShortWayWritesWhatTheXmlWriterWouldWrite)
{
    std::mt19937 random(7);
    const auto texts = NaughtyTexts();
    const vo::test::LogCapture log;
    // The same cells through elements and attributes, with each text's notation known beforehand.
    VoStringDevice device;
    VoXMLStreamWriter xml(device);
    auto root = xml.createElement("sheetData");
    const std::string fast = sheetData([&](VoOOXMLWriterSpreadsheet& sheet) {
        for (int row = 1; row <= 200; ++row) {
            sheet.startRow();
            auto rowElement = root->createElement("row");
            const int cells = static_cast<int>(random() % 30);
            for (int column = 1; column <= cells; ++column) {
                auto c = rowElement->createElement("c");
                c->writeAttribute("r",
                                  VoOOXMLWriterSpreadsheet::NumberToLetterString(static_cast<std::size_t>(column)) +
                                      VoString(row));
                const auto text = [&](const VoString& written, bool preserve) {
                    c->writeAttribute("t", "inlineStr");
                    auto is = c->createElement("is");
                    auto t = is->createElement("t");
                    if (preserve)
                        t->writeAttribute("xml:space", "preserve");
                    t->writeText(written);
                };
                VoVariant value;
                switch (random() % 6) {
                case 0:
                    break;
                case 1:
                    value = random() % 2 == 0;
                    c->writeAttribute("t", "b");
                    c->createElement("v")->writeText(value.asBoolean() ? "1" : "0");
                    break;
                case 2:
                    value = static_cast<int>(random());
                    c->createElement("v")->writeText(value.toString());
                    break;
                case 3:
                    value = std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 200) - 100);
                    c->createElement("v")->writeText(value.toString());
                    break;
                case 4:
                    value = std::size_t(random());
                    text(value.toString(), false);
                    break;
                default: {
                    const NaughtyText& naughty = texts[random() % texts.size()];
                    if (naughty.text.size() > 1000 && random() % 20 != 0) {
                        value = "short";
                        text("short", false);
                        break;
                    }
                    value = naughty.text;
                    const std::string& raw = naughty.text.toStdString();
                    const std::string blanks = " \t\r\n";
                    text(naughty.written, !raw.empty() && (raw.find_first_of("\r\n") != std::string::npos ||
                                                           blanks.find(raw.front()) != std::string::npos ||
                                                           blanks.find(raw.back()) != std::string::npos));
                }
                }
                sheet.addCell(value);
            }
        }
    });
    root.reset();
    xml.finishDocument();
    EXPECT_TRUE(fast + "\n" == device.content().toStdString());
    EXPECT_EQ(log.texts("spreadsheet").size(), 1U) << "cutting is reported, but not a million times";
}

TEST_F(Workbook, AnotherLibraryReadsTheSameValuesTypesAndRanges)
{
    const vo::test::LogCapture log;
    QJsonArray expected; // coordinate, type, value
    const auto expect = [&expected](const char* at, int row, const char* type, const QJsonValue& value) {
        expected.append(QJsonArray{QString::fromLatin1(at) + QString::number(row), QString::fromLatin1(type), value});
    };
    VoOOXMLWriter workbook(file(), VoOOXMLWriter::Spreadsheet);
    const auto values = workbook.addSheet("All kinds & 100%");
    const std::pair<VoVariant, std::pair<const char*, QJsonValue>> kinds[] = {
        {VoVariant(), {"n", QJsonValue()}},
        {true, {"b", true}},
        {false, {"b", false}},
        {-2147483647 - 1, {"n", -2147483648.0}},
        {1.5, {"n", 1.5}},
        {-0.0, {"n", 0}},
        {1e300, {"n", 1e300}},
        {1.0 / 3, {"n", 0.333333}},
        {std::nan(""), {"inlineStr", QStringLiteral("nan")}},
        {-Infinity, {"inlineStr", QStringLiteral("-inf")}},
        {std::numeric_limits<std::size_t>::max(), {"inlineStr", QStringLiteral("18446744073709551615")}},
        {VoFilePath("a/b"), {"inlineStr", QStringLiteral("a\\b")}},
        {VoPair<VoString, VoString>{"a", "b"}, {"inlineStr", QStringLiteral("[a,b]")}},
        {VoPair<VoFilePath, VoFilePath>{"a/b", "c"}, {"inlineStr", QStringLiteral("[a\\b,c]")}},
    };
    int row = 0;
    for (const auto& [value, seen] : kinds) {
        values->startRow();
        values->addCell(value);
        expect("A", ++row, seen.first, seen.second);
    }
    for (const NaughtyText& naughty : NaughtyTexts()) {
        values->startRow();
        values->addCell(naughty.text);
        expect("A", ++row, "inlineStr", naughty.read.toQString());
    }
    values->startRow();
    values->addCell("wide", 3, 2);
    expect("A", ++row, "inlineStr", QStringLiteral("wide"));
    workbook.addSheet("Second")->addCell("x");
    workbook.close();
    m_scratch.write("expected.json", QJsonDocument(expected).toJson().toStdString());
    EXPECT_EQ(m_scratch.python(R"(
import json, openpyxl, zipfile, xml.dom.minidom
for name in zipfile.ZipFile("book.xlsx").namelist():
    xml.dom.minidom.parseString(zipfile.ZipFile("book.xlsx").read(name))
book = openpyxl.load_workbook("book.xlsx")
print(book.sheetnames, [str(r) for r in book.worksheets[0].merged_cells.ranges])
for at, kind, value in json.load(open("expected.json")):
    cell = book.worksheets[0][at]
    seen = cell.value if cell.value is not None or kind == "n" else ""
    right_type = {"n": (int, float, type(None)), "b": bool, "inlineStr": str}[kind]
    if seen != value or not isinstance(seen, right_type) or cell.data_type not in (kind, "s"):
        print(at, kind, repr(value)[:80], cell.data_type, repr(seen)[:80])
)"),
              "['All kinds & 100%', 'Second'] ['A37:C38']\n");
}

TEST_F(Workbook, NeitherDayNorLocaleNorUmaskChangesAByte)
{
    const auto write = [this] {
        VoOOXMLWriter workbook(file(), VoOOXMLWriter::Spreadsheet);
        const auto sheet = workbook.addSheet("Numbers");
        for (int row = 0; row < 3000; ++row) {
            sheet->startRow();
            for (int column = 0; column < 20; ++column)
                sheet->addCell(column % 2 == 0 ? VoVariant(row * 1000.125) : VoVariant(row * 1000));
        }
        workbook.close();
        return m_scratch.read("book.xlsx");
    };
    const std::string before = write();
    const std::locale old = std::locale::global(std::locale(std::locale(), new GermanNumbers));
    ::setenv("TZ", "Pacific/Kiritimati", 1);
    const mode_t oldMask = ::umask(0077);
    const std::string after = write();
    ::umask(oldMask);
    ::unsetenv("TZ");
    std::locale::global(old);
    EXPECT_TRUE(before == after);
    EXPECT_GT(before.size(), 10000U);
}

TEST_F(Workbook, NamesOfSheetsAreThoseThatProgramsAccept)
{
    VoOOXMLWriter workbook(file(), VoOOXMLWriter::Spreadsheet);
    const auto first = workbook.addSheet("First");
    EXPECT_THROW_MSG(workbook.addSheet("FIRST"), VoInvalidParameterException,
                     "Document with the given name already exists: FIRST");
    for (const char* name : {"", "  ", "a/b", "..\\x", "a:b", "a?", "*", "[a", "a]", "'a", "a'", "a\nb",
                             "thirty-two characters is too long"})
        EXPECT_THROW_MSG(workbook.addSheet(name), VoInvalidParameterException,
                         "Invalid document name: " + VoString(name));
    EXPECT_TRUE(first->isAlive());
    for (const char* name : {"thirty-one characters is at most",
                             "\xC3\x84\xC3\x84\xC3\x84\xC3\x84\xC3\x84\xC3\x84\xC3\x84\xC3\x84"
                             "\xC3\x84\xC3\x84\xC3\x84\xC3\x84\xC3\x84\xC3\x84\xC3\x84\xC3\x84",
                             "%41", "A", "it's", "$ & <>\""})
        EXPECT_NO_THROW(workbook.addSheet(VoString(name).substring(0, 31).toString())) << name;
    workbook.close();
    EXPECT_EQ(m_scratch.python("import openpyxl\nprint(len(openpyxl.load_workbook('book.xlsx').sheetnames))"), "7\n");
}

TEST_F(Workbook, WhatIsClosedOrCannotBeCompletedSaysSo)
{
    {
        VoOOXMLWriter workbook(file(), VoOOXMLWriter::Spreadsheet);
        EXPECT_THROW_MSG(workbook.close(), VoFileSaveException,
                         "Cannot save [Cannot save document as not content provided]");
        EXPECT_NO_THROW(workbook.close());
    }
    {
        VoOOXMLWriter workbook(file(), static_cast<VoOOXMLWriter::FileType>(1));
        workbook.addSheet("a");
        EXPECT_THROW_MSG(workbook.close(), VoFileSaveException, "Cannot save [Unknown document type]");
    }
    VoSharedPtr<VoOOXMLWriterSpreadsheet> second;
    {
        VoOOXMLWriter workbook(file(), VoOOXMLWriter::Spreadsheet);
        const auto first = workbook.addSheet("a");
        EXPECT_TRUE(first->isAlive());
        second = workbook.addSheet("b");
        EXPECT_FALSE(first->isAlive());
        constexpr const char* closed = "Spreadsheet cannot be written to as has been closed";
        EXPECT_THROW_MSG(first->startRow(), VoInvalidCallException, closed);
        EXPECT_THROW_MSG(first->addCell(1), VoInvalidCallException, closed);
        EXPECT_NO_THROW(first->close());
        second->addCell(1);
        VoOOXMLWriterSpreadsheet copy = *second;
        copy.addCell(2);
        const VoOOXMLWriterSpreadsheet moved = std::move(copy);
        EXPECT_THROW_MSG(copy.startRow(), VoInvalidCallException, "Cannot write row as no document");
        EXPECT_FALSE(copy.isAlive());
        EXPECT_EQ(moved.nextColumn(), 3U) << "copies share the worksheet";
    }
    EXPECT_FALSE(second->isAlive());
    EXPECT_NE(part("xl/worksheets/b.xml").find("<c r=\"B1\"><v>2</v></c>"), std::string::npos);
}

TEST_F(Workbook, AWorksheetOutlivesItsDeviceInPeace)
{
    auto device = VoSharedPtr<VoStringDevice>::Make();
    VoOOXMLWriterSpreadsheet sheet{VoWeakPtr<VoIODevice>(device)};
    sheet.addCell(1);
    device.reset();
    EXPECT_FALSE(sheet.isAlive());
    EXPECT_THROW_MSG(sheet.addCell(2), VoInvalidCallException, "Spreadsheet cannot be written to as has been closed");
    EXPECT_NO_THROW(sheet.close());
    EXPECT_THROW_MSG(VoOOXMLWriterSpreadsheet{VoWeakPtr<VoIODevice>()}, VoInvalidCallException,
                     "Document writer has no valid device");
}

#if defined(__unix__)
TEST_F(Workbook, AFullDiskIsReportedAtTheLatestByTheClose)
{
    for (const int rows : {1, 30000}) {
        const vo::test::LogCapture log; // the destructors' words on it
        const vo::test::FileSizeLimit limit(500);
        VoOOXMLWriter workbook(file(), VoOOXMLWriter::Spreadsheet);
        EXPECT_THROW(
            {
                const auto sheet = workbook.addSheet("a");
                for (int row = 0; row < rows; ++row) {
                    sheet->startRow();
                    for (int column = 0; column < 10; ++column)
                        sheet->addCell(row * column);
                }
                workbook.close();
            },
            VoInvalidCallException)
            << rows;
    }
}
#endif

TEST(WorkbookColumns, HaveLettersCountedFromA)
{
    const std::pair<std::size_t, const char*> rows[] = {{0, ""},    {1, "A"},    {26, "Z"},    {27, "AA"},
                                                        {28, "AB"}, {702, "ZZ"}, {703, "AAA"}, {16384, "XFD"}};
    for (const auto& [column, letters] : rows)
        EXPECT_EQ(VoOOXMLWriterSpreadsheet::NumberToLetterString(column).toStdString(), letters);
}

TEST(XmlSpreadsheet, WritesTheFormatOfOneFile)
{
    VoStringDevice device;
    VoXMLSpreadsheetWriter writer(device);
    writer.addCell(1, 2, 3);
    writer.addCell(2.5, 0, 1);
    writer.startRow();
    writer.addCell(true);
    writer.addCell(VoVariant());
    writer.addCell("<\x01_x0041_>");
    writer.addCell(Infinity);
    writer.startRow();
    writer.finish();
    EXPECT_EQ(device.content().toStdString(),
              "<?mso-application progid=\"Excel.Sheet\"?>\r\n"
              "<Workbook xmlns=\"urn:schemas-microsoft-com:office:spreadsheet\" "
              "xmlns:ss=\"urn:schemas-microsoft-com:office:spreadsheet\"><Worksheet ss:Name=\"Sheet1\"><Table>"
              "<Row><Cell ss:MergeAcross=\"1\" ss:MergeDown=\"2\"><Data ss:Type=\"Number\">1</Data></Cell>"
              "<Cell><Data ss:Type=\"Number\">2.5</Data></Cell></Row>"
              "<Row><Cell><Data ss:Type=\"String\">true</Data></Cell>"
              "<Cell><Data ss:Type=\"String\">null</Data></Cell>"
              "<Cell><Data ss:Type=\"String\">&lt;_x0001__x0041_&gt;</Data></Cell>"
              "<Cell><Data ss:Type=\"String\">inf</Data></Cell></Row><Row/></Table></Worksheet></Workbook>\n");
    EXPECT_NO_THROW(writer.finish());
    EXPECT_THROW_MSG(writer.addCell(1), VoInvalidXMLOperation, "Invalid attempt to start element");
}

TEST_F(Workbook, AnXmlSpreadsheetIsNotWrittenToADeviceForReading)
{
    m_scratch.write("in", "text");
    VoFileDevice device(m_scratch.path("in"));
    device.open(VoIODevice::Read);
    EXPECT_THROW_MSG(VoXMLSpreadsheetWriter{device}, VoIOInvalidWriteException,
                     "Device is in read mode, cannot write to it");
}
