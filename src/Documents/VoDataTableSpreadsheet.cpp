#include <Documents/VoDataTable.h>

#include <Core/VoSharedPtr.h>
#include <Core/VoString.h>
#include <Core/VoVariant.h>
#include <Documents/VoDataTableItem.h>
#include <Documents/VoDataTableRow.h>
#include <Documents/VoOOXMLWriter.h>
#include <Documents/VoOOXMLWriterSpreadsheet.h>
#include <Documents/VoXMLSpreadsheetWriter.h>
#include <Documents/detail/DataTableRows.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFilePath.h>

#include <algorithm>
#include <vector>

using vo::detail::HeightOf;

namespace {

// A value on its way into the worksheet, whose rows are not settled before the next value below it is known.
struct Cell
{
    const VoVariant* value;
    std::size_t columnSpan;
    std::size_t rowSpan;
};

// The cells of one row of the table, in a list for each of its sheet rows.
//
// A worksheet places cells by itself: each in the next column that nothing covers. So that every value stands in its
// own column, a value's rows end where the next value of its item begins, and what an item lacks at its bottom is
// filled with empty cells.
std::vector<std::vector<Cell>> CellsOf(const VoDataTable& table, std::size_t row)
{
    static const auto* const nothing = new VoVariant;
    const std::size_t height = HeightOf(*table.rows()[row]);
    std::vector<std::vector<Cell>> cells(height);
    if (height == 0) // not even fillers then
        return cells;
    table.forEachItem(row, [&](const VoDataTableItem& item, std::size_t, std::size_t columnSpan) {
        const std::size_t count = item.numberValues();
        for (std::size_t i = 0; i < count; ++i)
            cells[i].push_back({&item.values()[i], columnSpan, i + 1 < count ? 1 : height / count});
        const std::size_t covered = count == 0 ? 0 : count - 1 + height / count;
        for (std::size_t offset = covered; offset < height; ++offset)
            cells[offset].push_back({nothing, columnSpan, 1});
    });
    return cells;
}

} // namespace

void VoDataTable::writeOOXML(VoOOXMLWriter& writer, const VoString& sheetName) const
{
    const VoSharedPtr<VoOOXMLWriterSpreadsheet> sheet = writer.addSheet(sheetName);
    for (std::size_t row = 0; row < numberRows(); ++row) {
        for (const std::vector<Cell>& sheetRow : CellsOf(*this, row)) {
            sheet->startRow();
            for (const Cell& cell : sheetRow)
                sheet->addCell(*cell.value, cell.columnSpan, cell.rowSpan);
        }
    }
}

void VoDataTable::writeOOXML(const VoFilePath& file) const
{
    VoAtomicFileWriter target(file);
    VoOOXMLWriter workbook(target.temporary(), VoOOXMLWriter::Spreadsheet);
    writeOOXML(workbook, "sheet1");
    workbook.close();
    target.commit();
}

// Nothing spans sheet rows: programs do not agree on where cells without positions stand beside such a one.
void VoDataTable::writeXMLSpreadsheet(VoIODevice& device) const
{
    static const auto* const empty = new VoVariant(""); // Null would be shown as a word
    VoXMLSpreadsheetWriter writer(device);
    for (std::size_t row = 0; row < numberRows(); ++row) {
        const std::size_t height = HeightOf(*rows()[row]);
        for (std::size_t offset = 0; offset < height; ++offset) {
            writer.startRow();
            forEachItem(row, [&](const VoDataTableItem& item, std::size_t, std::size_t columnSpan) {
                const bool hasValue = offset < item.numberValues() && !item.values()[offset].isNull();
                writer.addCell(hasValue ? item.values()[offset] : *empty, columnSpan);
            });
        }
    }
    writer.finish();
}

void VoDataTable::writeXMLSpreadsheet(const VoFilePath& file) const
{
    VoAtomicFileWriter target(file);
    writeXMLSpreadsheet(target.device());
    target.commit();
}
