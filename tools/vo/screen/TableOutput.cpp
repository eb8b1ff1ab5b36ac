#include <vo/screen/TableOutput.h>

#include <Core/VoException.h>
#include <Core/VoVariant.h>
#include <Documents/VoCSVReader.h>
#include <Documents/VoCSVValues.h>
#include <Documents/VoCSVWriter.h>
#include <Documents/VoOOXMLWriter.h>
#include <Documents/VoOOXMLWriterSpreadsheet.h>
#include <Documents/VoXMLSpreadsheetWriter.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <IO/VoIODevice.h>
#include <Time/VoDate.h>
#include <Time/VoTimeOfDay.h>

#include <QtCore/QString>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

namespace vo::tool {
namespace {

constexpr int LongestSheetName = 31;

VoString Text(const VoCSVReader& row, std::size_t index)
{
    const std::string_view field = row.field(index);
    return VoString(field.data(), field.size());
}

// "12345678901", and nothing that is no number.
bool IsWholeNumber(std::string_view field)
{
    field.remove_prefix(!field.empty() && field.front() == '-' ? 1 : 0);
    return !field.empty() && field.front() != '0' && field.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string WithPoint(std::string_view number)
{
    std::string text(number);
    std::replace(text.begin(), text.end(), ',', '.');
    return text;
}

bool HasSixDigits(double value)
{
    return QString::number(value, 'g', 6).toDouble() == value;
}

// What a spreadsheet shows for a field. Cells of numbers get six significant digits: fractions are rounded, but long
// whole numbers are names of something more often than amounts, and stay texts.
VoVariant CellValue(const VoCSVReader& row, std::size_t index, const VoCSVFormat& format, bool asTexts,
                    TableOutput::Losses& losses)
{
    const std::string_view field = row.field(index);
    if (field.empty() && !row.isQuoted(index))
        return VoVariant();
    if (asTexts || row.isQuoted(index))
        return Text(row, index);
    VoVariant value = csv::DetectedValue(field, format);
    if (value.type() != VoVariant::Double && value.type() != VoVariant::String)
        return value;
    const bool isNumber = value.type() == VoVariant::Double && std::isfinite(value.asDouble());
    if (isNumber && HasSixDigits(value.asDouble()))
        return value;
    if (isNumber && !IsWholeNumber(field)) {
        ++losses.rounded;
        return value;
    }
    losses.keptAsText += IsWholeNumber(field) ? 1 : 0;
    return Text(row, index);
}

struct Instant
{
    VoDate date;
    std::optional<VoTimeOfDay> time{};
};

// "2024-05-01", or with a time of day behind a blank or "T". With a zone it stays a text: a cell would lose that.
std::optional<Instant> InstantOf(std::string_view field)
{
    constexpr std::size_t dateLength = 10;
    if (field.size() < dateLength || field[4] != '-' || field[7] != '-')
        return std::nullopt;
    const std::string_view time = field.substr(dateLength);
    if (!time.empty() && (time.size() < 9 || (time.front() != ' ' && time.front() != 'T')))
        return std::nullopt;
    try {
        Instant instant{VoDate::Deserialize(VoString(field.substr(0, dateLength)))};
        if (!time.empty())
            instant.time = VoTimeOfDay::Deserialize(VoString(time.substr(1)));
        return instant;
    } catch (const VoException&) {
        return std::nullopt;
    }
}

class CsvOutput : public TableOutput
{
public:
    CsvOutput(const VoFilePath& file, const VoCSVFormat& input)
        : m_target(file)
        , m_writer(m_target.device())
        , m_input(input)
    {
    }

    bool hasSheets() const override { return false; }
    void beginSheet(const VoString&, const VoWorksheetLook*) override {}

    void addRow(const VoCSVReader& row, bool asTexts) override
    {
        for (std::size_t i = 0; i < row.numberFields(); ++i)
            addField(row.field(i), row.isQuoted(i) || (asTexts && !row.field(i).empty()));
        m_writer.endRow();
    }

    void finish() override
    {
        m_writer.finish();
        m_target.commit();
    }

private:
    // Fields keep their texts, but for a decimal comma; the quotes of those that would else be taken for values stay
    // too.
    void addField(std::string_view field, bool isText)
    {
        if (!isText && m_input.decimalComma && csv::DetectedType(field, m_input) == VoVariant::Double)
            return m_writer.addText(WithPoint(field));
        const bool needsQuotes = isText && csv::DetectedType(field, m_output) != VoVariant::String;
        m_writer.addText(field, needsQuotes ? VoCSVWriter::Quotes::Always : VoCSVWriter::Quotes::WhenNeeded);
    }

    VoAtomicFileWriter m_target;
    VoCSVWriter m_writer;
    const VoCSVFormat& m_input;
    const VoCSVFormat m_output;
};

class WorkbookOutput : public TableOutput
{
public:
    WorkbookOutput(const VoFilePath& file, const VoCSVFormat& input)
        : m_input(input)
        , m_target(file)
        , m_workbook(m_target.temporary(), VoOOXMLWriter::Spreadsheet)
    {
    }

    bool hasSheets() const override { return true; }
    void beginSheet(const VoString& name, const VoWorksheetLook* look) override
    {
        m_hasLook = look != nullptr;
        m_sheet = m_hasLook ? m_workbook.addSheet(name, *look) : m_workbook.addSheet(name);
    }

    void addRow(const VoCSVReader& row, bool asTexts) override
    {
        m_sheet->startRow();
        for (std::size_t i = 0; i < row.numberFields(); ++i) {
            const bool mayBeDate = m_hasLook && !asTexts && !row.isQuoted(i);
            if (const auto instant = mayBeDate ? InstantOf(row.field(i)) : std::nullopt)
                m_sheet->addDate(instant->date, instant->time);
            else
                m_sheet->addCell(CellValue(row, i, m_input, asTexts, m_losses));
        }
    }

    void finish() override
    {
        m_workbook.close();
        m_target.commit();
    }

private:
    const VoCSVFormat& m_input;
    VoAtomicFileWriter m_target;
    VoOOXMLWriter m_workbook;
    VoSharedPtr<VoOOXMLWriterSpreadsheet> m_sheet;
    bool m_hasLook = false;
};

class XmlOutput : public TableOutput
{
public:
    XmlOutput(const VoFilePath& file, const VoCSVFormat& input)
        : m_input(input)
        , m_target(file)
        , m_writer(m_target.device())
    {
    }

    bool hasSheets() const override { return false; }
    void beginSheet(const VoString&, const VoWorksheetLook*) override {}

    void addRow(const VoCSVReader& row, bool asTexts) override
    {
        m_writer.startRow();
        for (std::size_t i = 0; i < row.numberFields(); ++i) {
            const VoVariant value = CellValue(row, i, m_input, asTexts, m_losses);
            m_writer.addCell(value.isNull() ? VoVariant("") : value); // Null would be shown as a word
        }
    }

    void finish() override
    {
        m_writer.finish();
        m_target.commit();
    }

private:
    const VoCSVFormat& m_input;
    VoAtomicFileWriter m_target;
    VoXMLSpreadsheetWriter m_writer;
};

} // namespace

TableOutput::~TableOutput() = default;

std::unique_ptr<TableOutput> TableOutput::Make(const VoFilePath& file, const VoCSVFormat& input)
{
    if (file.extension() == "xlsx")
        return std::make_unique<WorkbookOutput>(file, input);
    if (file.extension() == "xml")
        return std::make_unique<XmlOutput>(file, input);
    if (file.extension() == "csv")
        return std::make_unique<CsvOutput>(file, input);
    return nullptr;
}

VoString SheetName(const VoString& fileName, std::size_t taken)
{
    QString name = fileName.toQString();
    for (QChar& c : name) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7f || QStringLiteral(":\\/?*[]'").contains(c))
            c = QLatin1Char('_');
    }
    const QString number = taken == 0 ? QString() : QStringLiteral(" (%1)").arg(taken + 1);
    name.truncate(LongestSheetName - number.size());
    if (!name.isEmpty() && name.at(name.size() - 1).isHighSurrogate())
        name.chop(1);
    if (name.trimmed().isEmpty())
        name = QStringLiteral("Sheet");
    return VoString(name + number);
}

} // namespace vo::tool
