#include <Documents/VoOOXMLWriterSpreadsheet.h>

#include <Core/VoException.h>
#include <Core/VoString.h>
#include <Core/VoVariant.h>
#include <Documents/detail/WorksheetLayout.h>
#include <Documents/detail/WorksheetText.h>
#include <IO/VoIODevice.h>
#include <XML/VoXMLStreamElementWriter.h>
#include <XML/VoXMLStreamWriter.h>
#include <XML/detail/XMLMarkup.h>

#include <algorithm>
#include <cstdint>
#include <utility>

using vo::detail::CellStyle;
using vo::detail::ColumnText;
using vo::detail::WorksheetLayout;

namespace {

constexpr std::size_t BlockSize = std::size_t{64} * 1024;
constexpr double WidestColumn = 255; // more is a damaged workbook to programs

VoString RangeText(const WorksheetLayout::Range& range)
{
    return VoString(ColumnText(range.firstColumn)) + VoString(range.firstRow) + ":" +
           VoString(ColumnText(range.lastColumn)) + VoString(range.lastRow);
}

} // namespace

struct VoOOXMLWriterSpreadsheet::Private
{
    WorksheetLayout layout;
    vo::detail::WorksheetText text;
    bool rowIsOpen = false;
    bool hasLook = false;
    std::size_t headerRows = 0;
    std::unique_ptr<VoXMLStreamElementWriter> worksheet;
    std::unique_ptr<VoXMLStreamElementWriter> sheetData; // before the element around it

    // The style of a cell in the open row that else has that one.
    CellStyle styleOr(CellStyle style) const
    {
        if (!hasLook)
            return CellStyle::Plain;
        const bool isDate = style == CellStyle::Date || style == CellStyle::DateTime;
        return layout.row() <= headerRows && !isDate ? CellStyle::Header : style;
    }
};

VoOOXMLWriterSpreadsheet::VoOOXMLWriterSpreadsheet(VoWeakPtr<VoIODevice> device)
    : VoOOXMLWriterDocument(std::move(device))
    , m_private(std::make_shared<Private>())
{
    startWorksheet();
    m_private->sheetData = writer().createElement("sheetData");
}

VoOOXMLWriterSpreadsheet::VoOOXMLWriterSpreadsheet(VoWeakPtr<VoIODevice> device, const VoWorksheetLook& look)
    : VoOOXMLWriterDocument(std::move(device))
    , m_private(std::make_shared<Private>())
{
    startWorksheet();
    m_private->hasLook = true;
    m_private->headerRows = std::min(look.headerRows, WorksheetLayout::MaximumRow - 1);
    if (m_private->headerRows > 0)
        writeFrozenRows();
    writeColumnWidths(look.columnWidths);
    m_private->sheetData = writer().createElement("sheetData");
}

void VoOOXMLWriterSpreadsheet::startWorksheet()
{
    VoXMLStreamWriter& xml = writer();
    xml.startDocument();
    m_private->worksheet = xml.createElement("worksheet");
    xml.writeDefaultNamespace("http://schemas.openxmlformats.org/spreadsheetml/2006/main");
}

void VoOOXMLWriterSpreadsheet::writeFrozenRows()
{
    const auto views = writer().createElement("sheetViews");
    const auto view = views->createElement("sheetView");
    view->writeAttribute("workbookViewId", "0");
    const auto pane = view->createElement("pane");
    pane->writeAttribute("ySplit", VoString(m_private->headerRows));
    pane->writeAttribute("topLeftCell", "A" + VoString(m_private->headerRows + 1));
    pane->writeAttribute("activePane", "bottomLeft");
    pane->writeAttribute("state", "frozen");
}

void VoOOXMLWriterSpreadsheet::writeColumnWidths(const std::vector<double>& widths)
{
    if (std::none_of(widths.begin(), widths.end(), [](double width) { return width > 0; }))
        return;
    const auto columns = writer().createElement("cols");
    for (std::size_t i = 0; i < std::min(widths.size(), WorksheetLayout::MaximumColumn); ++i) {
        if (!(widths[i] > 0))
            continue;
        const auto column = columns->createElement("col");
        column->writeAttribute("min", VoString(i + 1));
        column->writeAttribute("max", VoString(i + 1));
        column->writeAttribute("width", VoString::ToString(std::min(widths[i], WidestColumn)));
        column->writeAttribute("customWidth", "1");
    }
}

VoOOXMLWriterSpreadsheet::VoOOXMLWriterSpreadsheet(const VoOOXMLWriterSpreadsheet& other) = default;
VoOOXMLWriterSpreadsheet::VoOOXMLWriterSpreadsheet(VoOOXMLWriterSpreadsheet&& other) noexcept = default;
VoOOXMLWriterSpreadsheet& VoOOXMLWriterSpreadsheet::operator=(const VoOOXMLWriterSpreadsheet& other) = default;
VoOOXMLWriterSpreadsheet& VoOOXMLWriterSpreadsheet::operator=(VoOOXMLWriterSpreadsheet&& other) noexcept = default;
VoOOXMLWriterSpreadsheet::~VoOOXMLWriterSpreadsheet() = default;

void VoOOXMLWriterSpreadsheet::startRow()
{
    Private& sheet = requireAlive();
    endRow();
    sheet.layout.startRow();
    sheet.text.startRow(sheet.layout.row());
    sheet.rowIsOpen = true;
    writeEmptyCells(sheet);
}

void VoOOXMLWriterSpreadsheet::endRow()
{
    if (!m_private || !m_private->rowIsOpen)
        return;
    Private& sheet = *m_private;
    sheet.rowIsOpen = false;
    sheet.text.endRow();
    flush(sheet, BlockSize);
}

void VoOOXMLWriterSpreadsheet::addCell(const VoVariant& value, std::size_t columnSpan, std::size_t rowSpan)
{
    Private& sheet = requireAlive();
    const std::size_t column = openCell(sheet);
    sheet.layout.place(columnSpan, rowSpan);
    const bool isWhole = value.type() == VoVariant::Integer;
    sheet.text.setStyle(sheet.styleOr(isWhole ? CellStyle::WholeNumber : CellStyle::Plain));
    sheet.text.cell(column, value);
    closeCell(sheet);
}

void VoOOXMLWriterSpreadsheet::addDate(VoDate date, std::optional<VoTimeOfDay> time)
{
    Private& sheet = requireAlive();
    if (!sheet.hasLook || date < VoDate(1900, 3, 1))
        return addCell(time ? date.toString() + " " + time->toString() : date.toString());
    const std::size_t column = openCell(sheet);
    sheet.layout.place(1, 1);
    constexpr std::int64_t epoch = 25569; // days from 1899-12-30 to 1970-01-01
    sheet.text.setStyle(sheet.styleOr(time ? CellStyle::DateTime : CellStyle::Date));
    sheet.text.instant(column, date.days() + epoch, time.value_or(VoTimeOfDay()).sinceMidnight().count());
    closeCell(sheet);
}

std::size_t VoOOXMLWriterSpreadsheet::openCell(Private& sheet)
{
    if (!sheet.rowIsOpen)
        startRow();
    return sheet.layout.nextColumn();
}

void VoOOXMLWriterSpreadsheet::closeCell(Private& sheet)
{
    sheet.text.setStyle(CellStyle::Plain);
    writeEmptyCells(sheet);
    flush(sheet, BlockSize);
}

std::size_t VoOOXMLWriterSpreadsheet::nextColumn() const noexcept
{
    return m_private && m_private->rowIsOpen ? m_private->layout.nextColumn() : 1;
}

VoString VoOOXMLWriterSpreadsheet::NumberToLetterString(std::size_t n)
{
    return VoString(ColumnText(n));
}

void VoOOXMLWriterSpreadsheet::onClose()
{
    Private& sheet = requireAlive();
    endRow();
    while (sheet.layout.rowsAreMissing()) {
        startRow();
        endRow();
    }
    flush(sheet, 1);
    sheet.sheetData.reset();
    if (!sheet.layout.merges().empty())
        writeMerges(sheet);
    sheet.worksheet.reset();
}

VoOOXMLWriterSpreadsheet::Private& VoOOXMLWriterSpreadsheet::requireAlive()
{
    if (!m_private) // moved from
        throw VoInvalidCallException("Cannot write row as no document");
    if (!isAlive())
        throw VoInvalidCallException("Spreadsheet cannot be written to as has been closed");
    return *m_private;
}

void VoOOXMLWriterSpreadsheet::writeEmptyCells(Private& sheet)
{
    while (sheet.layout.isNextCovered()) {
        sheet.text.emptyCell(sheet.layout.nextColumn());
        sheet.layout.skip();
    }
}

void VoOOXMLWriterSpreadsheet::flush(Private& sheet, std::size_t atLeast)
{
    const std::string& text = sheet.text.text();
    if (text.size() < atLeast)
        return;
    vo::detail::XMLMarkup::Write(writer(), text.data(), text.size());
    sheet.text.clear();
}

void VoOOXMLWriterSpreadsheet::writeMerges(const Private& sheet)
{
    const auto& merges = sheet.layout.merges();
    const auto list = writer().createElement("mergeCells");
    list->writeAttribute("count", VoString(merges.size()));
    for (const WorksheetLayout::Range& range : merges)
        list->createElement("mergeCell")->writeAttribute("ref", RangeText(range));
}
