#include <CommaLocale.h>
#include <Core/VoDeque.h>
#include <Documents/VoCSVReader.h>
#include <Documents/VoCSVWriter.h>
#include <Documents/VoDataTable.h>
#include <Documents/VoVariantTable.h>
#include <IO/VoFileDevice.h>
#include <IO/VoIOException.h>
#include <IO/VoStringDevice.h>
#include <ScratchFolder.h>
#include <VoTestSupport.h>

namespace {

using Rows = std::vector<std::vector<std::string>>;

// Hands out its bytes so many at a time: every place of a text then is, for some size, the end of a block.
class SlowDevice : public VoStringDevice
{
public:
    SlowDevice(const std::string& text, std::size_t step)
        : VoStringDevice(VoString(text))
        , m_step(step)
    {
    }

protected:
    std::size_t onReadInto(char* data, std::size_t count) override
    {
        return VoStringDevice::onReadInto(data, std::min(count, m_step));
    }

private:
    std::size_t m_step;
};

// As RowsOf, but a quoted field is shown in brackets.
Rows RowsOf(const std::string& text, std::size_t step = 1 << 20, const VoCSVFormat& format = {})
{
    SlowDevice device(text, step);
    VoCSVReader reader(device, format);
    Rows rows;
    while (reader.nextRow()) {
        rows.emplace_back();
        for (std::size_t i = 0; i < reader.numberFields(); ++i) {
            const std::string field(reader.field(i));
            rows.back().push_back(reader.isQuoted(i) ? "[" + field + "]" : field);
        }
    }
    EXPECT_EQ(reader.rowNumber(), rows.size());
    EXPECT_EQ(reader.numberFields(), 0u);
    EXPECT_EQ(reader.bytesRead(), text.size());
    return rows;
}

VoCSVFormat Separated(const char* separator)
{
    VoCSVFormat format;
    format.separator = separator;
    return format;
}

std::string TextOf(const VoDeque<VoVariant>& values, const VoCSVFormat& format = {})
{
    VoStringDevice device;
    VoCSVWriter writer(device, format);
    writer.writeRow(values);
    writer.finish();
    return device.content().toStdString();
}

// Texts that must stay texts among them, and what only Unicode has at the end.
std::vector<std::string> NaughtyTexts()
{
    std::istringstream all(
        " ~~a,b~\"~\"\"~a\"b~a\r\nb~\r~\n~ lead~trail\t~1~-0~007~0402~1.5~1,5~+5~+49~1e5~.5~5.~-,5~true"
        "~FALSE~nan~NaN~-inf~INF~infinity~0x10~=1+1~null~\x01~'~1e999~1e-400~3e-324~2147483648~0.1e"
        "~9007199254740993~i~-~;~\t~\xc3\xa9~\xc3\xbf\xc3\xbe~\xe2\x82\xac~\xef\xbb\xbf~\xf0\x9f\x98\x80");
    std::vector<std::string> texts;
    for (std::string text; std::getline(all, text, '~');)
        texts.push_back(text);
    return texts;
}

const std::vector<std::string> Naughty = NaughtyTexts();
const std::size_t TextsInEveryEncoding = Naughty.size() - 3;

using Encoding = VoCSVFormat::Encoding;

bool IsUnicode(Encoding encoding)
{
    return encoding != Encoding::Windows1252 && encoding != Encoding::ISO88591;
}

VoCSVFormat RandomFormat(std::mt19937_64& random)
{
    const char* const separators[] = {";", "\t", "||", "\xc2\xa7", ","};
    const char* const newlines[] = {"\n", "\r\n", "\r"};
    VoCSVFormat format = Separated(separators[random() % 5]);
    format.newline = newlines[random() % 3];
    format.quote = random() % 2 ? '"' : '\'';
    format.byteOrderMark = random() % 2 == 0;
    format.encoding = static_cast<Encoding>(random() % 7);
    format.decimalComma = format.separator != "," && random() % 2 == 0;
    return format;
}

VoVariant RandomValue(std::mt19937_64& random, std::size_t texts)
{
    switch (random() % 6) {
    case 0:
        return VoVariant();
    case 1:
        return random() % 2 == 0;
    case 2:
        return static_cast<int>(random());
    case 3: {
        const double numbers[] = {0.0,
                                  3.0,
                                  -1e15,
                                  1e300,
                                  0.1,
                                  5e-324,
                                  std::numeric_limits<double>::infinity(),
                                  -std::numeric_limits<double>::max()};
        return random() % 2 == 0 ? numbers[random() % std::size(numbers)]
                                 : static_cast<double>(random()) / static_cast<double>(1 + random() % 1000000);
    }
    case 4:
        return VoVariant(VoString(Naughty[random() % texts]));
    default: {
        std::string text(random() % 12, '\0');
        for (char& c : text)
            c = "\",\r\n ab1.-\t\0"[random() % 12];
        return VoVariant(VoString(text));
    }
    }
}

} // namespace

TEST(CsvReader, ReadsRowsWhereverABlockEnds)
{
    struct
    {
        std::string text;
        Rows rows;
    } const rows[] = {
        {"", {}},
        {"\n", {{""}}},
        {"a", {{"a"}}},
        {"a,b\nc,d\n", {{"a", "b"}, {"c", "d"}}},
        {"a\r\nb\rc\nd", {{"a"}, {"b"}, {"c"}, {"d"}}},
        {"a,\n,b", {{"a", ""}, {"", "b"}}},
        {",", {{"", ""}}},
        {"a\n\nb\n\n", {{"a"}, {""}, {"b"}, {""}}},
        {"\"a,\r\n\"\"b\"\"\",\"\"\r\nc", {{"[a,\r\n\"b\"]", "[]"}, {"c"}}},
        {"\"a\"", {{"[a]"}}},
        {"\"\"\"\"", {{"[\"]"}}},
        {"a\"b\", \"c\"", {{"a\"b\"", " \"c\""}}},
        {"\xef\xbb\xbf\"a\",b", {{"[a]", "b"}}},
        {std::string("a\0b,c", 5), {{std::string("a\0b", 3), "c"}}},
    };
    for (const auto& row : rows)
        for (std::size_t step : {1, 2, 3, 5, 1000})
            EXPECT_EQ(RowsOf(row.text, step), row.rows) << row.text << " in steps of " << step;
    EXPECT_EQ(RowsOf("a;;b;c;;\"d\";;", 1, Separated(";;")), (Rows{{"a", "b;c", "[d]", ""}}));
}

TEST(CsvReader, NamesTheRowThatIsNotWellFormedAndStaysThere)
{
    for (const auto& [text, message] :
         {std::pair("a\n\"b\nc", "Unterminated quoted field in CSV at row 2"),
          std::pair("\"", "Unterminated quoted field in CSV at row 1"),
          std::pair("a\nb\n\"c\"d\n", "Unexpected character after quoted field in CSV at row 3"),
          std::pair("\"c\" ,d", "Unexpected character after quoted field in CSV at row 1")}) {
        VoStringDevice device(text);
        VoCSVReader reader(device);
        const auto readAll = [&] {
            while (reader.nextRow()) {
            }
        };
        EXPECT_THROW_MSG(readAll(), VoInvalidParameterException, message);
        EXPECT_THROW_MSG(reader.nextRow(), VoInvalidParameterException, message);
        EXPECT_EQ(reader.numberFields(), 0u);
    }
}

TEST(CsvReader, BoundsWhatAFieldAndARowMayTake)
{
    EXPECT_THROW_MSG(RowsOf(std::string((64 << 20) + 1, 'x')), VoInvalidParameterException,
                     "Field too long in CSV at row 1");
    EXPECT_THROW_MSG(RowsOf("\"" + std::string((64 << 20) + 1, 'x') + "\""), VoInvalidParameterException,
                     "Field too long in CSV at row 1");
    EXPECT_THROW_MSG(RowsOf("a\n" + std::string(1 << 20, ',')), VoInvalidParameterException,
                     "Row too long in CSV at row 2");
    EXPECT_EQ(RowsOf(std::string(300000, 'x') + "," + std::string(300000, 'y')).front().back().size(), 300000u);
}

TEST(Csv, FormatsThatCannotBeReadBackAreRefused)
{
    VoStringDevice device;
    VoCSVFormat sameQuote;
    sameQuote.quote = ',';
    VoCSVFormat sameComma;
    sameComma.decimalComma = true;
    VoCSVFormat foreign = Separated("\xce\xa9");
    foreign.encoding = VoCSVFormat::Encoding::ISO88591;
    for (const VoCSVFormat& format :
         {Separated(""), Separated("\n"), Separated("a\"b"), Separated("\xff"), sameQuote, sameComma, foreign}) {
        EXPECT_THROW_MSG(VoCSVReader(device, format), VoInvalidParameterException, "Invalid CSV format");
        EXPECT_THROW_MSG(VoCSVWriter(device, format), VoInvalidParameterException, "Invalid CSV format");
    }
}

TEST(CsvWriter, QuotesOnlyWhereItMust)
{
    EXPECT_EQ(TextOf({VoVariant(), true, -3, 3.0, 0.1, "a b", "", "3", "x\"y", "a,b", " c", VoVariant(7u)}),
              ",true,-3,3.0,0.1,a b,\"\",\"3\",\"x\"\"y\",\"a,b\",\" c\",7\r\n");
    VoCSVFormat format = Separated("; ");
    format.newline = "\n";
    format.byteOrderMark = true;
    EXPECT_EQ(TextOf({"a,b", "c;d"}, format), "\xef\xbb\xbf"
                                              "a,b; \"c;d\"\n");
    format = VoCSVFormat();
    format.guardFormulas = true;
    EXPECT_EQ(TextOf({"=1+1", "@x", "-5", "-x", -5, "a=b"}, format), "\"'=1+1\",\"'@x\",\"-5\",\"'-x\",-5,a=b\r\n");
}

TEST(CsvWriter, DeviceFailureIsReportedOnceAndByFinish)
{
    struct FullDevice : VoStringDevice
    {
        std::size_t onWriteFrom(const char*, std::size_t) override { throw VoIOException("full"); }
    } device;
    VoCSVWriter writer(device);
    writer.writeRow(VoDeque<VoString>{"a"});
    EXPECT_THROW_MSG(writer.finish(), VoIOException, "full");
    EXPECT_NO_THROW(writer.finish());
}

// Numbers by the thousand are judged by another library below.
TEST(CsvTypes, FieldsWithoutQuotesAreDetected)
{
    struct
    {
        const char* text;
        VoVariant value;
    } const rows[] = {
        {"\"\"", ""},
        {" 5 ", 5},
        {"2147483647", 2147483647},
        {"-0", -0.0},
        {"2147483648", 2147483648.0},
        {"TRUE", true},
        {"-inf", -INFINITY},
        {"\"5\"", "5"},
        {"0x10", "0x10"},
        {"1,", 1},
        {"truest", "truest"},
        {"nano", "nano"},
        {" x ", " x "},
        {"0.10000000000000001", 0.1},
        {"4.9406564584124654e-324", 5e-324},
        {" +1.5", " +1.5"},
        {"NaN", "NaN"},
        {"Infinity", "Infinity"},
        {"+inf", "+inf"},
    };
    for (const auto& row : rows) {
        const VoVariantTable table(VoString(row.text), true);
        EXPECT_EQ(table.at(0, 0).type(), row.value.type()) << row.text;
        EXPECT_EQ(table.at(0, 0), row.value) << row.text;
        EXPECT_EQ(VoVariantTable(VoString(row.text), false).at(0, 0).type(), VoVariant::String) << row.text;
    }
    EXPECT_TRUE(std::isnan(VoVariantTable("nan", true).at(0, 0).asDouble()));
    VoCSVFormat comma = Separated(";");
    comma.decimalComma = true;
    EXPECT_TRUE(VoVariantTable("1,5;,5;1.5;1.234,5;1,5,5", true, comma) ==
                VoVariantTable("1.5,.5,\"1.5\",\"1.234,5\",\"1,5,5\"", true));
    EXPECT_EQ(VoVariantTable(",", true).at(0, 1).type(), VoVariant::Null);
}

TEST(CsvTypes, RaggedRowsAreFilledUpButNotOutOfProportion)
{
    const VoVariantTable table("a\n1,2,3\n\n", true);
    EXPECT_EQ(table.numberRows(), 3u);
    EXPECT_EQ(table.numberColumns(), 3u);
    EXPECT_TRUE(table.at(0, 2).isNull() && table.at(2, 0).isNull());
    std::string hostile(500000, ',');
    hostile += std::string(500000, '\n');
    EXPECT_THROW_MSG(VoVariantTable(VoString(hostile), true), VoInvalidParameterException,
                     "Rows of CSV differ too much in length");
}

TEST(CsvTypes, RandomTablesComeBackInEveryFormat)
{
    std::mt19937_64 random(5);
    const vo::test::CommaLocale comma;
    for (int i = 0; i < 1000; ++i) {
        const VoCSVFormat format = i == 0 ? VoCSVFormat() : RandomFormat(random);
        const std::size_t texts = IsUnicode(format.encoding) ? Naughty.size() : TextsInEveryEncoding;
        VoVariantTable table(random() % 6, random() % 5 + 1);
        table.forEach([&](std::size_t, std::size_t, VoVariant& value) { value = RandomValue(random, texts); });
        VoStringDevice device;
        table.writeCSV(device, format);
        SlowDevice written(device.content().toStdString(), random() % 7 + 1);
        const VoVariantTable back = VoVariantTable::LoadCSV(written, true, format);
        ASSERT_EQ(back.numberRows(), table.numberRows()) << device.content();
        table.forEach([&](std::size_t row, std::size_t column, VoVariant& value) {
            ASSERT_EQ(back.at(row, column).type(), value.type()) << table;
            if (value.type() == VoVariant::String)
                ASSERT_EQ(back.at(row, column).asString().toStdString(), value.asString().toStdString());
            else
                ASSERT_EQ(back.at(row, column), value) << table;
        });
    }
}

TEST(CsvTypes, HeadersFindColumns)
{
    VoStringDevice device("x;2024;\n2024;V;v;V\n1;2,5;007;\n");
    VoCSVFormat format = Separated(";");
    format.decimalComma = true;
    const VoDataTable table = VoDataTable::LoadCSV(device, true, format, 2);
    const VoVariantTable grid("Year,2024,\"y\"\n1,2,3", true);
    EXPECT_EQ(grid.columnNumber("2024") + grid.columnNumber("YEAR"), 1u);
    EXPECT_EQ(table.columnNumber("v"), 2u);
    EXPECT_EQ(table.columnNumber("X"), 0u);
    EXPECT_EQ(table.columnNumber("2024"), 1u);
    EXPECT_EQ(table.value(2, table.columnNumber("V")), VoVariant(2.5));
    EXPECT_EQ(table.value(2, 2), VoVariant("007"));
    EXPECT_TRUE(table.isHeader(1) && !table.isHeader(2) && table.value(0, 2).isNull());
    EXPECT_THROW_MSG(table.columnNumber("007"), VoNotFoundException, "Item not found: 007");
    EXPECT_THROW_MSG(VoVariantTable().columnNumber("a"), VoNotFoundException, "Item not found: a");
}

TEST(CsvEncodings, BytesThatAreNoTextAreAnErrorWithAPlace)
{
    struct
    {
        Encoding encoding;
        std::string bytes;
        std::size_t rowsBefore;
        const char* message;
    } const rows[] = {
        {Encoding::UTF8, "a\xe9", 0, "Invalid UTF-8 in CSV at line 1, column 2"},
        {Encoding::UTF8, "\xef\xbb", 0, "Invalid UTF-8 in CSV at line 1, column 1"},
        {Encoding::UTF8, "a\r\nb\n\xc3\xa9,\"\r\n\xc3\xa9\xff\"", 2, "Invalid UTF-8 in CSV at line 4, column 2"},
        {Encoding::UTF8, "a\r\rb,\xc0\x80", 2, "Invalid UTF-8 in CSV at line 3, column 3"},
        {Encoding::UTF8, "\xed\xa0\x80", 0, "Invalid UTF-8 in CSV at line 1, column 1"},
        {Encoding::UTF8, "\xf4\x90\x80\x80", 0, "Invalid UTF-8 in CSV at line 1, column 1"},
        {Encoding::UTF8, "\xe0\x9f\xbf", 0, "Invalid UTF-8 in CSV at line 1, column 1"},
        {Encoding::Windows1252, "x\n\x80\x81", 1, "Invalid Windows-1252 in CSV at line 2, column 2"},
        {Encoding::UTF8, std::string("\xff\xfe\x3d\xd8\x00\xdez\0\0\xd8y\0", 12), 0,
         "Invalid UTF-16LE in CSV at line 1, column 3"},
        {Encoding::ISO88591, "\xfe\xff\xdc", 0, "Invalid UTF-16BE in CSV at line 1, column 1"},
        {Encoding::UTF32BE, std::string("\0\0\0\n\0\x11\0\0", 8), 1, "Invalid UTF-32BE in CSV at line 2, column 1"},
    };
    for (const auto& row : rows)
        for (std::size_t step : {1, 2, 3, 1000}) {
            SlowDevice device(row.bytes, step);
            VoCSVFormat format;
            format.encoding = row.encoding;
            VoCSVReader reader(device, format);
            for (std::size_t i = 0; i < row.rowsBefore; ++i)
                EXPECT_TRUE(reader.nextRow());
            EXPECT_THROW_MSG(reader.nextRow(), VoInvalidParameterException, row.message);
            EXPECT_THROW_MSG(reader.nextRow(), VoInvalidParameterException, row.message);
        }
}

TEST(CsvEncodings, WhatCannotBeReadBackIsNotWritten)
{
    VoCSVFormat format;
    format.encoding = Encoding::Windows1252;
    VoStringDevice device;
    VoCSVWriter writer(device, format);
    writer.writeRow(VoDeque<VoString>{"\xc3\xbf\xc3\xbe", "\xe2\x82\xac"}); // the first would be a mark
    EXPECT_THROW_MSG(writer.addText("a\xce\xa9"), VoInvalidParameterException,
                     "Character U+03A9 is not in Windows-1252 in CSV at row 2");
    EXPECT_THROW_MSG(writer.addText("a\xff"), VoInvalidParameterException, "Text is not UTF-8 in CSV at row 2");
    writer.addText("b");
    writer.finish();
    EXPECT_EQ(device.content().toStdString(), "\"\xff\xfe\",\x80\r\nb");
    // A number with the separator in it would be another row.
    EXPECT_EQ(TextOf({1.5, 10, true}, Separated("1")), "\"1.5\"1\"10\"1true\r\n");
}

// The same files read by Python, written back by us and read by it again; and numbers judged by its decimal arithmetic.
TEST(Csv, AnotherLibraryReadsTheSameRowsAndKeepsTheSameNumbers)
{
    VO_SKIP_WITHOUT_SHELL();
    const vo::test::ScratchFolder folder;
    ASSERT_EQ(folder.python(VOCORE_SCRIPTS "/make_csv.py"), "");
    for (const char* name : {"00", "01", "10", "11", "20", "21", "30", "31", "40", "41", "50", "60"}) {
        VoCSVFormat format;
        format.encoding = static_cast<Encoding>(name[0] - '0');
        VoFileDevice in(folder.path(std::string("in") + name));
        VoFileDevice out(folder.path(std::string("back") + name));
        VoCSVReader reader(in, name[1] == '1' ? VoCSVFormat() : format);
        VoCSVWriter writer(out, format);
        VoDeque<VoString> fields;
        while (reader.readRow(fields))
            writer.writeRow(fields);
        writer.finish();
    }
    EXPECT_EQ(folder.python(VOCORE_SCRIPTS "/compare_csv.py"), "compared\n");
    VoFileDevice device(folder.path("numbers.csv"));
    const VoVariantTable numbers = VoVariantTable::LoadCSV(device, true);
    ASSERT_EQ(numbers.numberRows(), 20000u);
    const auto asDouble = [](const VoVariant& value) {
        return value.type() == VoVariant::Integer ? value.asInteger() : value.asDouble();
    };
    for (std::size_t row = 0; row < numbers.numberRows(); ++row) {
        const VoVariant& value = numbers.at(row, 0);
        const bool isNumber = value.type() == VoVariant::Integer || value.type() == VoVariant::Double;
        ASSERT_EQ(isNumber, numbers.at(row, 1) == VoVariant("number")) << value;
        if (isNumber) {
            EXPECT_EQ(asDouble(value), asDouble(numbers.at(row, 2)));
        }
    }
}
