#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

class VoVariant;

namespace vo::detail {

/// The letters of a column, counted from 1; empty for 0.
VOCORE_PRIVATE_EXPORT std::string ColumnText(std::size_t column);

/// The looks of cells, by their places in the workbook's list of them; see detail/CellStyles.h.
enum class CellStyle : int
{
    Plain = 0,
    Header = 1,
    WholeNumber = 2,
    Date = 3,
    DateTime = 4
};

/// The markup of a worksheet's rows. A sheet is millions of small elements of a handful of names: their text is put
/// together directly, and is byte for byte what the XML writer would make of the same elements.
///
/// What XML or spreadsheet programs could not hold in a text is written in their own notation: control characters as
/// "_x0001_", and what looks like that as "_x005F_x0001_". Texts beyond 32767 characters, which no spreadsheet program
/// opens, are cut.
class VOCORE_PRIVATE_EXPORT WorksheetText
{
public:
    void startRow(std::size_t row);
    void endRow();
    void cell(std::size_t column, const VoVariant& value);
    void emptyCell(std::size_t column);
    /// A date as spreadsheet programs count: days since 1899-12-30, with the share of the day, to the millisecond.
    void instant(std::size_t column, std::int64_t day, std::int64_t nanoseconds);
    void setStyle(CellStyle style) noexcept { m_style = style; } ///< Of the cells to come; at first Plain.

    const std::string& text() const noexcept { return m_text; } ///< What has come together since the last clear().
    void clear() noexcept { m_text.clear(); }

private:
    void startCell(std::size_t column);
    void valueCell(std::size_t column, std::string_view number);
    void textCell(std::size_t column, std::string_view text);
    std::string_view shortened(std::size_t column, std::string_view text);
    void appendText(std::string_view text);

    std::string m_text;
    std::string m_row; // its digits
    CellStyle m_style = CellStyle::Plain;
    bool m_rowIsEmpty = true;
    bool m_wasCut = false; // once said is enough
};

} // namespace vo::detail
