#pragma once

#include <Core/VoString.h>
#include <Documents/VoCSVFormat.h>

#include <cstddef>
#include <vector>

class VoCSVReader;

namespace vo::tool {

/// The rows of a table as lines with aligned columns. The widths are found in a first pass over all rows, so that none
/// of them has to be kept.
class TableView
{
public:
    /// Of a file of the format. A field wider than `widest` characters is cut, and ends with "…".
    explicit TableView(const VoCSVFormat& format, std::size_t widest = 40);

    /// First pass: takes in the widths of the reader's row; `isHeader` says that it does not tell what the columns
    /// hold.
    void measure(const VoCSVReader& row, bool isHeader);

    /// Second pass: the row as a line. Columns of numbers stand to the right.
    VoString line(const VoCSVReader& row) const;
    VoString rule() const; ///< A line below the header.

    std::vector<double> widths() const; ///< Of the columns, in characters.

private:
    struct Column
    {
        std::size_t width = 0;
        bool hasNumbers = false;
        bool hasTexts = false;
    };

    bool isNumber(const VoCSVReader& row, std::size_t index) const;

    const VoCSVFormat m_format;
    const std::size_t m_widest;
    std::vector<Column> m_columns;
};

} // namespace vo::tool
