#include <Approved.h>
#include <CommaLocale.h>
#include <Core/VoDeque.h>
#include <Core/VoPair.h>
#include <Core/VoVariant.h>
#include <Documents/VoOOXMLWriter.h>
#include <Documents/VoOOXMLWriterSpreadsheet.h>
#include <Documents/VoXMLSpreadsheetWriter.h>
#include <Documents/VoZipArchive.h>
#include <Documents/VoZipFile.h>
#include <FileSizeLimit.h>
#include <IO/VoFileDevice.h>
#include <IO/VoIOException.h>
#include <IO/VoStringDevice.h>
#include <LogCapture.h>
#include <ScopedEnvironment.h>
#include <ScratchFolder.h>
#include <SpecialNumbers.h>
#include <VoTestSupport.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#if defined(__unix__)
#include <sys/stat.h>
#endif

using vo::test::Infinity;

namespace {

/// Texts that programs on the way might change, drop, evaluate or refuse, and what one reads that does not know the
/// notation for control characters.
using NaughtyText = std::pair<VoString, VoString>;

std::vector<NaughtyText> NaughtyTexts()
{
    const std::string longText = std::string(30000, 'a') + std::string(10000, 'b');
    std::string longWide = "\xE2\x82\xAC"; // one character of three bytes, then characters of two units each
    for (int i = 0; i < 20000; ++i)
        longWide += "\xF0\x9F\x98\x80";
    std::vector<NaughtyText> texts = {
        {"two\r\nlines", "two_x000D_\nlines"},
        {"_x0041_", "_x005F_x0041_"},
        {"__x0aF9__x0041", "__x005F_x0aF9__x0041"},
        {VoString("\x01 \x1F \0 end", 9), "_x0001_ _x001F_ _x0000_ end"},
        {"\xEF\xBF\xBE-\xEF\xBF\xBF", "_xFFFE_-_xFFFF_"},
        {"bad \xFF utf \xC3", "bad \xEF\xBF\xBD utf \xEF\xBF\xBD"},
        {longText, longText.substr(0, 32767)},
        {longWide, longWide.substr(0, 3 + 4 * 16383)},
    };
    for (const char* same :
         {"", " outer blanks ", "\ttab\t", "two\nlines", "<a href=\"x\">&amp;</a>", "]]>", "=1+1", "+1", "@SUM(A1)",
          "'quoted", "1,5", "007", "\xC3\x9F \xE2\x82\xAC \xF0\x9F\x98\x80", "a \xEF\xBB\xBF mark"})
        texts.emplace_back(same, same);
    return texts;
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

    vo::test::ScratchFolder m_scratch;
};

} // namespace

TEST_F(Workbook, EveryPartIsAsApproved)
{
    VoOOXMLWriter workbook(file(), VoOOXMLWriter::Spreadsheet);
    {
        const auto sheet = workbook.addSheet("One"); // cells flow around what is merged
        sheet->startRow();
        sheet->addCell(1);
        sheet->addCell(2, 3, 1);
        EXPECT_EQ(sheet->nextColumn(), 5U);
        sheet->addCell(3, 0, 2);
        sheet->startRow();
        sheet->addCell(true, 9, 1); // would run over E1:E2
        EXPECT_EQ(sheet->nextColumn(), 6U);
        sheet->startRow();
        sheet->startRow();
        sheet->addCell(4, 1, 2);
        sheet->addCell(" outer blanks");
        sheet->addCell(std::size_t{5});
    }
    workbook.addSheet("Gr\xC3\xB6\xC3\x9F"
                      "e 2");
    workbook.close();
    workbook.close();
    std::string parts;
    VoZipArchive archive(file(), VoZipArchive::Read);
    for (const VoFilePath& path : archive.paths())
        parts += path.path().toStdString() + "\n" + archive.open(path)->readRemaining().toStdString() + "\n";
    vo::test::ExpectApproved(parts, VOCORE_APPROVED "/workbook.txt");
}

TEST_F(Workbook, AnotherLibraryReadsTheSameValuesTypesAndRanges)
{
    VO_SKIP_WITHOUT_SHELL();
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
    for (const auto& [text, read] : NaughtyTexts()) {
        values->startRow();
        values->addCell(text);
        expect("A", ++row, "inlineStr", read.toQString());
    }
    EXPECT_EQ(log.texts("spreadsheet").size(), 1U) << "cutting is reported, but not a million times";
    values->startRow();
    values->addCell("wide", 3, 2);
    expect("A", ++row, "inlineStr", QStringLiteral("wide"));
    workbook.addSheet("Second")->addCell("x");
    workbook.close();
    m_scratch.write("expected.json", QJsonDocument(expected).toJson().toStdString());
    EXPECT_EQ(m_scratch.python(VOCORE_SCRIPTS "/compare_workbook.py"), "['All kinds & 100%', 'Second'] ['A37:C38']\n");
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
    const vo::test::CommaLocale comma;
#if defined(__unix__)
    const mode_t oldMask = ::umask(0077);
#endif
    const vo::test::ScopedEnvironment zone("TZ", "Pacific/Kiritimati");
    const std::string after = write();
#if defined(__unix__)
    ::umask(oldMask);
#endif
    EXPECT_TRUE(before == after);
    EXPECT_GT(before.size(), 10000U);
}

TEST_F(Workbook, NamesOfSheetsAreThoseThatProgramsAccept)
{
    VO_SKIP_WITHOUT_SHELL();
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
    EXPECT_EQ(m_scratch.python(VOCORE_SCRIPTS "/count_sheets.py"), "7\n");
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
    vo::test::ExpectApproved(device.content().toStdString(), VOCORE_APPROVED "/spreadsheet.xml");
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
