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

#include <utility>

using vo::detail::ColumnText;
using vo::detail::WorksheetLayout;

namespace {

constexpr std::size_t BlockSize = std::size_t{64} * 1024;

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
    std::unique_ptr<VoXMLStreamElementWriter> worksheet;
    std::unique_ptr<VoXMLStreamElementWriter> sheetData; // before the element around it
};

VoOOXMLWriterSpreadsheet::VoOOXMLWriterSpreadsheet(VoWeakPtr<VoIODevice> device)
    : VoOOXMLWriterDocument(std::move(device))
    , m_private(std::make_shared<Private>())
{
    VoXMLStreamWriter& xml = writer();
    xml.startDocument();
    m_private->worksheet = xml.createElement("worksheet");
    xml.writeDefaultNamespace("http://schemas.openxmlformats.org/spreadsheetml/2006/main");
    m_private->sheetData = xml.createElement("sheetData");
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
    if (!sheet.rowIsOpen)
        startRow();
    const std::size_t column = sheet.layout.nextColumn();
    sheet.layout.place(columnSpan, rowSpan);
    sheet.text.cell(column, value);
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
