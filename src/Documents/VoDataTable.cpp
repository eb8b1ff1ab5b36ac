#include <Documents/VoDataTable.h>

#include <Core/VoDeque.h>
#include <Core/VoException.h>
#include <Core/VoMathsException.h>
#include <Core/VoUniquePtr.h>
#include <Core/detail/Callback.h>
#include <Documents/VoCSVReader.h>
#include <Documents/VoCSVWriter.h>
#include <Documents/VoDataTableItem.h>
#include <Documents/VoDataTableRow.h>
#include <Documents/VoVariantTable.h>
#include <Documents/detail/CSVText.h>
#include <Documents/detail/ColumnSearch.h>
#include <Documents/detail/DataTableRows.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>
#include <vector>

struct VoDataTable::Private
{
    VoDeque<VoSharedPtr<VoDataTableRow>> rows;
    std::size_t numberColumns = 0;
};

using vo::detail::HeightOf;

namespace {

using Items = VoDeque<VoSharedPtr<VoDataTableItem>>;

// What stands where a short row has no item.
const VoDataTableItem& Filler()
{
    static const auto* const filler = new VoDataTableItem(VoVariant());
    return *filler;
}

std::size_t WidthOf(const Items& items)
{
    std::size_t width = 0;
    for (const auto& item : items) {
        if (item->columnSpan() > std::numeric_limits<std::size_t>::max() - width)
            throw VoOverflowException();
        width += item->columnSpan();
    }
    return width;
}

// The item that covers a column; the filler in a row that is too short.
const VoDataTableItem& ItemAt(const VoDataTableRow& row, std::size_t column)
{
    std::size_t begin = 0;
    for (const auto& item : row.items) {
        if (column - begin < item->columnSpan())
            return *item;
        begin += item->columnSpan();
    }
    return Filler();
}

void VisitRow(const VoDataTableRow& row, std::size_t columns, const VoDataTable::RowItemFunction& function)
{
    if (columns < WidthOf(row.items))
        throw VoInvalidCallException("Data table row given invalid number of columns to iterate over");
    std::size_t column = 0;
    for (const auto& item : row.items) {
        function(*item, column, item->columnSpan());
        column += item->columnSpan();
    }
    for (; column < columns; ++column)
        function(Filler(), column, 1);
}

// Null for an item without values.
const VoVariant& FirstValue(const VoDataTableItem& item)
{
    return item.numberValues() == 0 ? Filler().value() : item.values().front();
}

// Ascending, as VoVariant orders its values, but with a place for what is not a number: a sort needs an order.
bool ComesBefore(const VoVariant& left, const VoVariant& right)
{
    if (left.type() != VoVariant::Double || right.type() != VoVariant::Double)
        return left < right;
    if (std::isnan(left.asDouble()))
        return false;
    return std::isnan(right.asDouble()) || left.asDouble() < right.asDouble();
}

// One value of a row that takes several sheet rows.
struct Placed
{
    const VoVariant* value;
    std::size_t column;
    std::size_t columnSpan;
    std::size_t rowOffset;
    std::size_t rowSpan;
};

std::vector<Placed> PlacedValues(const VoDataTableRow& row, std::size_t columns, std::size_t height)
{
    std::vector<Placed> placed;
    VisitRow(row, columns, [&](const VoDataTableItem& item, std::size_t column, std::size_t columnSpan) {
        const std::size_t count = item.numberValues();
        for (std::size_t i = 0; i < count; ++i)
            placed.push_back({&item.values()[i], column, columnSpan, i, height / count});
    });
    // Within a sheet row they stand from left to right already.
    std::stable_sort(placed.begin(), placed.end(),
                     [](const Placed& a, const Placed& b) { return a.rowOffset < b.rowOffset; });
    return placed;
}

} // namespace

VoDataTable::VoDataTable() noexcept = default;

VoDataTable::VoDataTable(const VoVariantTable& table)
{
    for (std::size_t row = 0; row < table.numberRows(); ++row) {
        Items items;
        for (std::size_t column = 0; column < table.numberColumns(); ++column)
            items.pushBack(VoSharedPtr<VoDataTableItem>::Make(table.at(row, column)));
        addRow(std::move(items), Data);
    }
}

VoDataTable VoDataTable::LoadCSV(VoIODevice& device, bool detectTypes)
{
    return LoadCSV(device, detectTypes, VoCSVFormat());
}

VoDataTable VoDataTable::LoadCSV(VoIODevice& device, bool detectTypes, const VoCSVFormat& format,
                                 std::size_t headerRows)
{
    VoDataTable table;
    VoCSVReader reader(device, format);
    while (reader.nextRow()) {
        const ItemType type = reader.rowNumber() <= headerRows ? Header : Data;
        Items items;
        for (std::size_t i = 0; i < reader.numberFields(); ++i) {
            const bool mayBeValue = detectTypes && (type == Data || reader.field(i).empty());
            items.pushBack(VoSharedPtr<VoDataTableItem>::Make(vo::detail::FieldValue(reader, i, mayBeValue, format)));
        }
        table.addRow(std::move(items), type);
    }
    return table;
}

VoDataTable::VoDataTable(const VoDataTable& other)
{
    if (!other.m_private)
        return;
    m_private = std::make_unique<Private>();
    m_private->numberColumns = other.m_private->numberColumns;
    for (const auto& row : other.m_private->rows) {
        auto copy = VoSharedPtr<VoDataTableRow>::Make();
        copy->type = row->type;
        for (const auto& item : row->items)
            copy->items.pushBack(VoSharedPtr<VoDataTableItem>::Make(*item));
        m_private->rows.pushBack(std::move(copy));
    }
}

VoDataTable::VoDataTable(VoDataTable&& other) noexcept = default;

VoDataTable& VoDataTable::operator=(const VoDataTable& other)
{
    return *this = VoDataTable(other);
}

VoDataTable& VoDataTable::operator=(VoDataTable&& other) noexcept
{
    VoDataTable taken(std::move(other));
    m_private.swap(taken.m_private);
    return *this;
}

VoDataTable::~VoDataTable() = default;

void VoDataTable::addRow(VoDeque<VoSharedPtr<VoDataTableItem>>&& items, ItemType type)
{
    VoDataTableRow row;
    row.items = std::move(items);
    row.type = type;
    addRow(std::move(row));
}

void VoDataTable::addRow(const VoDeque<VoDataTableItem>& items, ItemType type)
{
    Items shared;
    for (const VoDataTableItem& item : items)
        shared.pushBack(VoSharedPtr<VoDataTableItem>::Make(item));
    addRow(std::move(shared), type);
}

void VoDataTable::addRow(VoDataTableRow&& row)
{
    addRow(VoUniquePtr<VoDataTableRow>::Make(std::move(row)));
}

void VoDataTable::addRow(VoUniquePtr<VoDataTableRow> row)
{
    const std::size_t width = WidthOf(row->items);
    if (!m_private)
        m_private = std::make_unique<Private>();
    m_private->rows.pushBack(VoSharedPtr<VoDataTableRow>(std::move(row)));
    m_private->numberColumns = std::max(m_private->numberColumns, width);
}

void VoDataTable::clear() noexcept
{
    m_private.reset();
}

std::size_t VoDataTable::numberRows() const noexcept
{
    return rows().size();
}

std::size_t VoDataTable::numberColumns() const noexcept
{
    return m_private ? m_private->numberColumns : 0;
}

const VoDeque<VoSharedPtr<VoDataTableRow>>& VoDataTable::rows() const noexcept
{
    // Never destroyed: tables may be read while the process ends.
    static const auto* const none = new VoDeque<VoSharedPtr<VoDataTableRow>>;
    return m_private ? m_private->rows : *none;
}

bool VoDataTable::isHeader(std::size_t row) const
{
    return rows()[row]->type == Header || rows()[row]->type == SubHeader;
}

const VoVariant& VoDataTable::value(std::size_t row, std::size_t column) const
{
    const VoDataTableRow& found = *rows()[row];
    if (column >= numberColumns())
        throw VoIndexOutOfBoundsException(column, numberColumns());
    return ItemAt(found, column).value();
}

const VoDeque<VoVariant>& VoDataTable::values(std::size_t row, std::size_t column) const
{
    const VoDataTableRow& found = *rows()[row];
    if (column >= numberColumns())
        throw VoIndexOutOfBoundsException(column, numberColumns());
    return ItemAt(found, column).values();
}

std::size_t VoDataTable::columnNumber(const VoString& header) const
{
    vo::detail::ColumnSearch search(header);
    for (std::size_t row = 0; row < numberRows(); ++row) {
        if (!isHeader(row))
            continue;
        forEachItem(row, [&](const VoDataTableItem& item, std::size_t column, std::size_t) {
            item.forEachValue([&](const VoVariant& value) { search.offer(value, column); });
        });
    }
    return search.found();
}

void VoDataTable::forEach(const ItemFunction& function) const
{
    vo::detail::RequireCallback(function);
    for (std::size_t row = 0; row < numberRows(); ++row)
        forEachItem(row,
                    [&](const VoDataTableItem& item, std::size_t column, std::size_t) { function(item, row, column); });
}

void VoDataTable::forEachItem(std::size_t row, const RowItemFunction& function) const
{
    vo::detail::RequireCallback(function);
    VisitRow(*rows()[row], numberColumns(), function);
}

void VoDataTable::forEachItemSpreadsheet(const SpreadsheetFunction& function) const
{
    vo::detail::RequireCallback(function);
    std::size_t sheetRow = 0;
    for (const auto& row : rows()) {
        const std::size_t height = HeightOf(*row);
        if (height == 1) {
            VisitRow(*row, numberColumns(), [&](const VoDataTableItem& item, std::size_t column, std::size_t span) {
                function(FirstValue(item), sheetRow, column, span, 1, row->type);
            });
        } else if (height > 1) {
            for (const Placed& cell : PlacedValues(*row, numberColumns(), height))
                function(*cell.value, sheetRow + cell.rowOffset, cell.column, cell.columnSpan, cell.rowSpan, row->type);
        }
        sheetRow += height;
    }
}

std::size_t VoDataTable::numberSpreadsheetRows() const
{
    return std::accumulate(rows().begin(), rows().end(), std::size_t(0),
                           [](std::size_t sum, const auto& row) { return sum + HeightOf(*row); });
}

void VoDataTable::sort(std::size_t column)
{
    sort(column, 0, numberRows());
}

void VoDataTable::sort(std::size_t column, const SortKey& comesFirst)
{
    sort(column, 0, numberRows(), comesFirst);
}

void VoDataTable::sort(std::size_t column, std::size_t firstRow, std::size_t count)
{
    sortRows(column, firstRow, count, ComesBefore);
}

void VoDataTable::sort(std::size_t column, std::size_t firstRow, std::size_t count, const SortKey& comesFirst)
{
    sortRows(column, firstRow, count, [&](const VoVariant& left, const VoVariant& right) {
        return comesFirst(left, column) && !comesFirst(right, column);
    });
}

void VoDataTable::sortRows(std::size_t column, std::size_t firstRow, std::size_t count, const SortOrder& isBefore)
{
    if (column >= numberColumns())
        throw VoInvalidCallException("Column number outside of the range of columns");
    if (firstRow > numberRows() || count > numberRows() - firstRow)
        throw VoIndexOutOfBoundsException(count > numberRows() ? count : firstRow + count, numberRows());

    struct Entry
    {
        const VoVariant* value;
        VoSharedPtr<VoDataTableRow> row;
    };
    std::vector<Entry> entries;
    for (std::size_t i = firstRow; i < firstRow + count; ++i) {
        const VoDataTableItem& item = ItemAt(*rows()[i], column);
        if (item.numberValues() > 1)
            throw VoInvalidCallException("Cannot sort on column that has multiple values per cell");
        entries.push_back({&FirstValue(item), rows()[i]});
    }
    // The comparison may throw: the table changes only when all is decided.
    std::stable_sort(entries.begin(), entries.end(),
                     [&](const Entry& a, const Entry& b) { return isBefore(*a.value, *b.value); });
    for (std::size_t i = 0; i < count; ++i)
        m_private->rows[firstRow + i].swap(entries[i].row);
}

void VoDataTable::writeCSV(VoIODevice& device) const
{
    writeCSV(device, VoCSVFormat());
}

void VoDataTable::writeCSV(VoIODevice& device, const VoCSVFormat& format) const
{
    VoCSVWriter writer(device, format);
    std::size_t written = 0; // fields of the row
    const auto fillUpTo = [&](std::size_t column) {
        for (; written < column; ++written)
            writer.addValue(VoVariant());
    };
    const auto endRow = [&] {
        fillUpTo(numberColumns());
        writer.endRow();
        written = 0;
    };
    forEachItemSpreadsheet(
        [&](const VoVariant& value, std::size_t sheetRow, std::size_t column, std::size_t, std::size_t, ItemType) {
            if (sheetRow != writer.rowNumber())
                endRow();
            fillUpTo(column);
            writer.addValue(value);
            ++written;
        });
    if (written > 0)
        endRow();
    writer.finish();
}

bool VoDataTable::operator==(const VoDataTable& other) const
{
    const auto sameItem = [](const auto& a, const auto& b) { return *a == *b; };
    return std::equal(rows().begin(), rows().end(), other.rows().begin(), other.rows().end(),
                      [&](const auto& a, const auto& b) {
                          return a->type == b->type && std::equal(a->items.begin(), a->items.end(), b->items.begin(),
                                                                  b->items.end(), sameItem);
                      });
}

bool VoDataTable::operator!=(const VoDataTable& other) const
{
    return !(*this == other);
}
