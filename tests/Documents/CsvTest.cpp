#include <Core/VoDeque.h>
#include <Documents/VoCSVReader.h>
#include <Documents/VoCSVWriter.h>
#include <Documents/VoVariantTable.h>
#include <IO/VoIOException.h>
#include <IO/VoStringDevice.h>
#include <VoTestSupport.h>

#include <algorithm>
#include <clocale>
#include <cmath>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <vector>

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

struct CommaNumbers : std::numpunct<char>
{
    char do_decimal_point() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
};

const char* const naughtyTexts[] = {"",         " ",    "a,b",   "\"",         "\"\"",  "a\"b", "a\r\nb",
                                    "\r",       "\n",   " lead", "trail\t",    "1",     "-0",   "007",
                                    "1.5",      "+5",   "1e5",   ".5",         "5.",    "true", "FALSE",
                                    "nan",      "-inf", "0x10",  "_x0041_",    "=1+1",  "null", "\xef\xbb\xbf",
                                    "\xc3\xa9", "\x01", "'",     "2147483648", "1e999", "1,5",  "i",
                                    "infinity", "tru",  "-",     "\xff\xfe",   ";",     "\t",   "Infinity and beyond"};

VoVariant RandomValue(std::mt19937_64& random)
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
        return VoVariant(naughtyTexts[random() % std::size(naughtyTexts)]);
    default: {
        std::string text(random() % 12, '\0');
        for (char& c : text)
            c = "\",\r\n ab1.-\t\0"[random() % 12];
        return VoVariant(VoString(text));
    }
    }
}

} // namespace

TEST(CsvReader, readsRowsWhereverABlockEnds)
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
        {"\xef\xbb", {{"\xef\xbb"}}},
        {std::string("a\0b,c", 5), {{std::string("a\0b", 3), "c"}}},
    };
    for (const auto& row : rows)
        for (std::size_t step : {1, 2, 3, 5, 1000})
            EXPECT_EQ(RowsOf(row.text, step), row.rows) << row.text << " in steps of " << step;
    EXPECT_EQ(RowsOf("a;;b;c;;\"d\";;", 1, Separated(";;")), (Rows{{"a", "b;c", "[d]", ""}}));
}

TEST(CsvReader, namesTheRowThatIsNotWellFormedAndStaysThere)
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

TEST(CsvReader, boundsWhatAFieldAndARowMayTake)
{
    EXPECT_THROW_MSG(RowsOf(std::string((64 << 20) + 1, 'x')), VoInvalidParameterException,
                     "Field too long in CSV at row 1");
    EXPECT_THROW_MSG(RowsOf("\"" + std::string((64 << 20) + 1, 'x') + "\""), VoInvalidParameterException,
                     "Field too long in CSV at row 1");
    EXPECT_THROW_MSG(RowsOf("a\n" + std::string(1 << 20, ',')), VoInvalidParameterException,
                     "Row too long in CSV at row 2");
    EXPECT_EQ(RowsOf(std::string(300000, 'x') + "," + std::string(300000, 'y')).front().back().size(), 300000u);
}

TEST(Csv, formatsThatCannotBeReadBackAreRefused)
{
    VoStringDevice device;
    VoCSVFormat sameQuote;
    sameQuote.quote = ',';
    for (const VoCSVFormat& format : {Separated(""), Separated("\n"), Separated("a\"b"), sameQuote}) {
        EXPECT_THROW_MSG(VoCSVReader(device, format), VoInvalidParameterException, "Invalid CSV format");
        EXPECT_THROW_MSG(VoCSVWriter(device, format), VoInvalidParameterException, "Invalid CSV format");
    }
}

TEST(CsvWriter, quotesOnlyWhereItMust)
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

TEST(CsvWriter, deviceFailureIsReportedOnceAndByFinish)
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

TEST(Csv, randomFieldsComeBackInEveryFormat)
{
    std::mt19937_64 random(11);
    const char* const separators[] = {",", ";", "\t", "||"};
    for (int i = 0; i < 300; ++i) {
        VoCSVFormat format = Separated(separators[random() % 4]);
        format.newline = random() % 2 ? "\n" : "\r\n";
        format.quote = random() % 2 ? '"' : '\'';
        format.byteOrderMark = random() % 2 == 0;
        std::vector<VoDeque<VoString>> rows(random() % 6);
        VoStringDevice device;
        VoCSVWriter writer(device, format);
        for (auto& row : rows) {
            for (std::size_t field = random() % 5 + 1; field > 0; --field)
                row.pushBack(naughtyTexts[random() % std::size(naughtyTexts)]);
            writer.writeRow(row);
        }
        writer.finish();
        SlowDevice back(device.content().toStdString(), random() % 7 + 1);
        VoCSVReader reader(back, format);
        VoDeque<VoString> fields;
        for (const auto& row : rows) {
            ASSERT_TRUE(reader.readRow(fields));
            ASSERT_EQ(fields.size(), row.size());
            for (std::size_t field = 0; field < row.size(); ++field)
                ASSERT_EQ(fields[field].toStdString(), row[field].toStdString()) << device.content();
        }
        ASSERT_FALSE(reader.readRow(fields));
    }
}

TEST(CsvTypes, fieldsWithoutQuotesAreDetected)
{
    struct
    {
        const char* text;
        VoVariant value;
    } const rows[] = {
        {"\"\"", ""},
        {"0", 0},
        {"-7", -7},
        {" 5 ", 5},
        {"2147483647", 2147483647},
        {"-0", -0.0},
        {"007", 7.0},
        {"+5", 5.0},
        {"1.50", 1.5},
        {"2147483648", 2147483648.0},
        {".5", 0.5},
        {"5.", 5.0},
        {"1e3", 1000.0},
        {"TRUE", true},
        {"false", false},
        {"-inf", -INFINITY},
        {"Infinity", INFINITY},
        {"\"5\"", "5"},
        {"0x10", "0x10"},
        {"1e999", "1e999"},
        {"1,", 1},
        {"- 5", "- 5"},
        {"1 2", "1 2"},
        {"e5", "e5"},
        {"--1", "--1"},
        {".", "."},
        {"+", "+"},
        {"truest", "truest"},
        {"nano", "nano"},
        {" x ", " x "},
        {"1.5.5", "1.5.5"},
        {"\"true\"", "true"},
    };
    for (const auto& row : rows) {
        const VoVariantTable table(VoString(row.text), true);
        EXPECT_EQ(table.at(0, 0).type(), row.value.type()) << row.text;
        EXPECT_EQ(table.at(0, 0), row.value) << row.text;
        EXPECT_EQ(VoVariantTable(VoString(row.text), false).at(0, 0).type(), VoVariant::String) << row.text;
    }
    EXPECT_EQ(VoVariantTable("NaN", true).at(0, 0).type(), VoVariant::Double);
    EXPECT_EQ(VoVariantTable(",", true).at(0, 1).type(), VoVariant::Null);
}

TEST(CsvTypes, raggedRowsAreFilledUpButNotOutOfProportion)
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

TEST(CsvTypes, randomTablesComeBackFromTheirText)
{
    std::mt19937_64 random(5);
    const std::locale global = std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
    std::setlocale(LC_ALL, "de_DE.UTF-8"); // where the machine has it
    for (int i = 0; i < 500; ++i) {
        VoVariantTable table(random() % 6, random() % 5 + 1);
        table.forEach([&](std::size_t, std::size_t, VoVariant& value) { value = RandomValue(random); });
        const VoVariantTable back(table.toString(), true);
        ASSERT_EQ(back.numberRows(), table.numberRows());
        table.forEach([&](std::size_t row, std::size_t column, VoVariant& value) {
            ASSERT_EQ(back.at(row, column).type(), value.type()) << table;
            if (value.type() == VoVariant::String)
                ASSERT_EQ(back.at(row, column).asString().toStdString(), value.asString().toStdString());
            else
                ASSERT_EQ(back.at(row, column), value) << table;
        });
    }
    std::locale::global(global);
    std::setlocale(LC_ALL, "C");
}
