#include "TableOutput.h"

#include <Core/NumberText.h>
#include <Core/VoVariant.h>
#include <Documents/CSVText.h>
#include <Documents/VoCSVReader.h>
#include <Documents/VoCSVWriter.h>
#include <Documents/VoOOXMLWriter.h>
#include <Documents/VoOOXMLWriterSpreadsheet.h>
#include <Documents/VoXMLSpreadsheetWriter.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <IO/VoIODevice.h>

#include <QtCore/QString>

#include <string_view>

namespace vo::tool {
namespace {

constexpr int LongestSheetName = 31;

VoString text(const VoCSVReader& row, std::size_t index)
{
    const std::string_view field = row.field(index);
    return VoString(field.data(), field.size());
}

bool isWhole(std::string_view field)
{
    return field.find_first_not_of("+-0123456789 \t") == std::string_view::npos;
}

// What a spreadsheet shows for a field. Cells of numbers get six significant digits: fractions are rounded, but long
// whole numbers are names of something more often than amounts, and stay texts.
VoVariant cellValue(const VoCSVReader& row, std::size_t index, bool asTexts, TableOutput::Losses& losses)
{
    if (row.field(index).empty() && !row.isQuoted(index))
        return VoVariant();
    if (asTexts || row.isQuoted(index))
        return text(row, index);
    VoVariant value = detail::DetectedValue(row.field(index));
    if (value.type() != VoVariant::Double ||
        detail::ParseDouble(detail::GeneralText(value.asDouble())).value == value.asDouble())
        return value;
    if (isWhole(row.field(index))) {
        ++losses.keptAsText;
        return text(row, index);
    }
    if (value.asDouble() == value.asDouble()) // not for NaN
        ++losses.rounded;
    return value;
}

class CsvOutput : public TableOutput
{
public:
    explicit CsvOutput(const VoFilePath& file)
        : m_target(file)
        , m_writer(m_target.device())
    {
    }

    bool hasSheets() const override { return false; }
    void beginSheet(const VoString&) override {}

    // Fields keep their texts; the quotes of those that would else be taken for values stay too.
    void addRow(const VoCSVReader& row, bool asTexts) override
    {
        for (std::size_t i = 0; i < row.numberFields(); ++i) {
            const std::string_view field = row.field(i);
            const bool isText = row.isQuoted(i) || (asTexts && !field.empty());
            const bool needsQuotes = isText && detail::DetectedType(field) != VoVariant::String;
            m_writer.addText(field, needsQuotes ? VoCSVWriter::Quotes::Always : VoCSVWriter::Quotes::WhenNeeded);
        }
        m_writer.endRow();
    }

    void finish() override
    {
        m_writer.finish();
        m_target.commit();
    }

private:
    VoAtomicFileWriter m_target;
    VoCSVWriter m_writer;
};

class WorkbookOutput : public TableOutput
{
public:
    explicit WorkbookOutput(const VoFilePath& file)
        : m_target(file)
        , m_workbook(m_target.temporary(), VoOOXMLWriter::Spreadsheet)
    {
    }

    bool hasSheets() const override { return true; }
    void beginSheet(const VoString& name) override { m_sheet = m_workbook.addSheet(name); }

    void addRow(const VoCSVReader& row, bool asTexts) override
    {
        m_sheet->startRow();
        for (std::size_t i = 0; i < row.numberFields(); ++i)
            m_sheet->addCell(cellValue(row, i, asTexts, m_losses));
    }

    void finish() override
    {
        m_workbook.close();
        m_target.commit();
    }

private:
    VoAtomicFileWriter m_target;
    VoOOXMLWriter m_workbook;
    VoSharedPtr<VoOOXMLWriterSpreadsheet> m_sheet;
};

class XmlOutput : public TableOutput
{
public:
    explicit XmlOutput(const VoFilePath& file)
        : m_target(file)
        , m_writer(m_target.device())
    {
    }

    bool hasSheets() const override { return false; }
    void beginSheet(const VoString&) override {}

    void addRow(const VoCSVReader& row, bool asTexts) override
    {
        m_writer.startRow();
        for (std::size_t i = 0; i < row.numberFields(); ++i) {
            const VoVariant value = cellValue(row, i, asTexts, m_losses);
            m_writer.addCell(value.isNull() ? VoVariant("") : value); // Null would be shown as a word
        }
    }

    void finish() override
    {
        m_writer.finish();
        m_target.commit();
    }

private:
    VoAtomicFileWriter m_target;
    VoXMLSpreadsheetWriter m_writer;
};

} // namespace

TableOutput::~TableOutput() = default;

std::unique_ptr<TableOutput> TableOutput::Make(const VoFilePath& file)
{
    if (file.extension() == "xlsx")
        return std::make_unique<WorkbookOutput>(file);
    if (file.extension() == "xml")
        return std::make_unique<XmlOutput>(file);
    if (file.extension() == "csv")
        return std::make_unique<CsvOutput>(file);
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
