#pragma once

#include <Documents/VoOOXMLWriterDocument.h>

#include <Core/VoForward.h>
#include <Time/VoDate.h>
#include <Time/VoTimeOfDay.h>

#include <cstddef>
#include <optional>
#include <vector>

/// How a worksheet looks to people who open it. A plain value.
struct VOCORE_EXPORT VoWorksheetLook
{
    std::size_t headerRows = 0; ///< So many rows at the top are bold, and stay while the others are scrolled.
    /// The widths of the first columns, in characters of the usual font; 0 for the program's own width. What is more
    /// than programs allow is taken for their most, 255.
    std::vector<double> columnWidths{};
};

/// Writes one worksheet of an XLSX workbook, row by row and cell by cell, in one pass: memory does not grow with the
/// rows. VoOOXMLWriter::addSheet() makes it.
///
/// Cells carry no position from the caller: each goes to the next column that no merged cell covers. What programs see:
/// Null is an empty cell, Boolean a truth value, Integer and Double a number (doubles with six significant digits), all
/// else the text that VoVariant::toString() gives, never a formula; so also a Double that is no finite number. Texts
/// keep blanks and line breaks; those of more than 32767 characters are cut with a warning in the log category
/// "spreadsheet".
///
/// Failures of the device may show at a later call than the one whose output they concern. Copies share the worksheet.
class VOCORE_EXPORT VoOOXMLWriterSpreadsheet : public VoOOXMLWriterDocument
{
public:
    /// Begins a worksheet on a device.
    /// @throws VoInvalidCallException "Document writer has no valid device"
    explicit VoOOXMLWriterSpreadsheet(VoWeakPtr<VoIODevice> device);
    /// Begins a worksheet with a look. Its cells refer to the styles that VoOOXMLWriter adds to the workbook: whole
    /// numbers are shown without an exponent, dates as dates.
    /// @throws VoInvalidCallException as above
    VoOOXMLWriterSpreadsheet(VoWeakPtr<VoIODevice> device, const VoWorksheetLook& look);
    /// Share the worksheet; a moved-from one is not alive.
    /// @{
    VoOOXMLWriterSpreadsheet(const VoOOXMLWriterSpreadsheet& other);
    VoOOXMLWriterSpreadsheet(VoOOXMLWriterSpreadsheet&& other) noexcept;
    VoOOXMLWriterSpreadsheet& operator=(const VoOOXMLWriterSpreadsheet& other);
    VoOOXMLWriterSpreadsheet& operator=(VoOOXMLWriterSpreadsheet&& other) noexcept;
    /// @}
    ~VoOOXMLWriterSpreadsheet() override;

    /// Ends the row and begins the next one. Positions that merged cells of rows above cover at its beginning become
    /// empty cells at once.
    /// @throws VoInvalidCallException "Spreadsheet cannot be written to as has been closed", "Cannot write row as no
    ///        document" when moved from, or "Cell lies outside the limits of a worksheet" behind row 1048576
    void startRow();
    /// Ends the row, if one is open.
    void endRow();
    /// Writes a cell in the next free column, beginning a row when none is open. A span of more than one column or row
    /// merges a range, whose other positions are covered from then on; one that would run over positions covered from
    /// above ends before them. A span of 0 counts as 1.
    /// @throws VoInvalidCallException as startRow(), also for a cell or span behind column 16384 or row 1048576;
    ///         nothing is written then
    void addCell(const VoVariant& value, std::size_t columnSpan = 1, std::size_t rowSpan = 1);

    /// Writes a date, or a date with a time of that day to the millisecond, as addCell() does a value. In a worksheet
    /// without a look, and before 1900-03-01, which spreadsheet programs count differently, it is a text.
    /// @throws VoInvalidCallException as addCell()
    void addDate(VoDate date, std::optional<VoTimeOfDay> time = std::nullopt);

    /// The column, counted from 1, in which the next addCell() of the open row writes; 1 when no row is open.
    std::size_t nextColumn() const noexcept;

    /// The letters of a column counted from 1: "A", "Z", "AA"; empty for 0.
    static VoString NumberToLetterString(std::size_t n);

protected:
    /// Ends the row, adds the rows that merged cells still cover, lists the merged ranges and ends the worksheet.
    /// @throws VoInvalidCallException "Spreadsheet cannot be written to as has been closed"
    void onClose() override;

private:
    struct Private;

    Private& requireAlive();
    void startWorksheet();
    void writeFrozenRows();
    void writeColumnWidths(const std::vector<double>& widths);
    std::size_t openCell(Private& sheet);
    void closeCell(Private& sheet);
    void writeEmptyCells(Private& sheet);
    void flush(Private& sheet, std::size_t atLeast);
    void writeMerges(const Private& sheet);

    std::shared_ptr<Private> m_private;
};
