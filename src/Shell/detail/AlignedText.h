#pragma once

#include <Core/VoString.h>

#include <cstddef>
#include <string>
#include <vector>

namespace vo::detail {

/// A table as lines of columns that stand below each other, numbers to the right.
class AlignedText
{
public:
    explicit AlignedText(std::size_t columns)
        : m_widths(columns)
    {
    }

    /// Adds the next cell, row by row. What could steer a terminal is escaped.
    void add(const VoString& text, bool isNumber);

    VoString text() const; ///< The lines, with "\n" between.

private:
    struct Cell
    {
        std::string text;
        std::size_t width; // in characters
        bool isNumber;
    };

    std::vector<std::size_t> m_widths;
    std::vector<Cell> m_cells;
};

} // namespace vo::detail
