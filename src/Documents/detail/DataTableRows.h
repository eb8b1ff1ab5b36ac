#pragma once

#include <Documents/VoDataTable.h>

#include <algorithm>
#include <cstddef>

namespace vo::detail {

/// The rows of a worksheet or a text that a row of a table takes: one for each value of the item with the most.
inline std::size_t HeightOf(const VoDataTableRow& row)
{
    std::size_t height = 0;
    for (const auto& item : row.items)
        height = std::max(height, item->numberValues());
    return height;
}

} // namespace vo::detail
