#pragma once

#include <Core/VoExport.h>

#include <cstddef>
#include <string>
#include <string_view>

class VoVariant;

namespace vo::detail {

/// The letters of a column, counted from 1; empty for 0.
VOCORE_PRIVATE_EXPORT std::string ColumnText(std::size_t column);

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
    bool m_rowIsEmpty = true;
    bool m_wasCut = false; // once said is enough
};

} // namespace vo::detail
