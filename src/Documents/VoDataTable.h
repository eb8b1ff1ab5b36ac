#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoVariant.h>
#include <XML/VoXMLObject.h>
#include <XML/VoXMLStreamLoader.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <type_traits>

class VoDataTableItem;
class VoOOXMLWriter;
class VoVariantTable;
struct VoCSVFormat;
struct VoDataTableRow;

/// A table to be shown: rows of items, an item over one or more columns with any number of values stacked in it; rows
/// may be headers. It is exported to workbooks, XML spreadsheets and CSV files, loaded from CSV files and kept in XML.
///
///     VoDataTable table;
///     table.addRow({VoDataTableItem("Gain", 2)}, VoDataTable::Header);
///     table.addRow({VoDataTableItem(2.5), VoDataTableItem("dB")}, VoDataTable::Data);
///     table.writeOOXML(path);
///
/// Rows may differ in length: where a short row has no item, visits and exports see an empty cell with one Null value.
///
/// A value: copies copy rows and items, a moved-from table is empty. What throws leaves the table as it was. Not
/// synchronised.
class VOCORE_EXPORT VoDataTable
{
public:
    /// What a row is. The two kinds of header are treated alike everywhere, and documents do not tell them apart.
    enum ItemType : std::int32_t
    {
        Data = 0,     ///< an ordinary row
        Header = 1,   ///< a header
        SubHeader = 2 ///< a header too
    };

    /// Visits an item at its first column.
    using ItemFunction = std::function<void(const VoDataTableItem& item, std::size_t row, std::size_t column)>;
    /// Visits an item of one row.
    using RowItemFunction =
        std::function<void(const VoDataTableItem& item, std::size_t column, std::size_t columnSpan)>;
    /// Visits a value where it stands in a worksheet.
    using SpreadsheetFunction = std::function<void(const VoVariant& value, std::size_t sheetRow, std::size_t column,
                                                   std::size_t columnSpan, std::size_t rowSpan, ItemType type)>;
    /// Tells the rows that come first from the others, by their value in the column that is sorted.
    using SortKey = std::function<bool(const VoVariant& value, std::size_t column)>;
    /// Tells whether a row with the left value comes before one with the right value.
    using SortOrder = std::function<bool(const VoVariant& left, const VoVariant& right)>;
    /// Only what takes two values.
    template <typename Function>
    using IsOrder = std::enable_if_t<std::is_invocable_r_v<bool, const Function&, const VoVariant&, const VoVariant&>>;

    VoDataTable() noexcept; ///< Empty.
    /// A Data row for each row of the table, an item of one value for each cell.
    explicit VoDataTable(const VoVariantTable& table);
    VoDataTable(const VoDataTable& other);                ///< Copies rows and items.
    VoDataTable(VoDataTable&& other) noexcept;            ///< `other` becomes empty.
    VoDataTable& operator=(const VoDataTable& other);     ///< Copies rows and items; unchanged when that fails.
    VoDataTable& operator=(VoDataTable&& other) noexcept; ///< `other` becomes empty.
    ~VoDataTable();

    /// Reads a CSV file with values as VoVariantTable::LoadCSV() tells them: a row for each, with an item for each
    /// field. Throws what VoCSVReader throws.
    static VoDataTable LoadCSV(VoIODevice& device, bool detectTypes);
    /// The same from another format. The first `headerRows` rows become headers, whose fields are texts; an empty one
    /// is Null where types are detected.
    static VoDataTable LoadCSV(VoIODevice& device, bool detectTypes, const VoCSVFormat& format,
                               std::size_t headerRows = 0);

    /// @name Adding a row at the bottom
    /// Throw VoNullPointerException for a null item, VoOverflowException when the columns cannot be counted.
    /// @{
    void addRow(VoDeque<VoSharedPtr<VoDataTableItem>>&& items, ItemType type); ///< Shares the items.
    void addRow(const VoDeque<VoDataTableItem>& items, ItemType type);         ///< Copies each item.
    void addRow(VoDataTableRow&& row);                                         ///< Shares the row's items.
    /// Takes the row.
    /// @throws VoNullPointerException "VoUniquePtr dereferencing nullptr" for an empty pointer
    void addRow(VoUniquePtr<VoDataTableRow> row);
    /// @}
    void clear() noexcept; ///< Removes all rows.

    std::size_t numberRows() const noexcept;    ///< Number of rows.
    std::size_t numberColumns() const noexcept; ///< The width of the widest row added since the table was cleared.
    /// The rows, top to bottom. Who changes a row through them must not make it wider than numberColumns(): visits
    /// refuse it then.
    const VoDeque<VoSharedPtr<VoDataTableRow>>& rows() const noexcept;
    bool isHeader(std::size_t row) const; ///< Whether a row is a header. @throws VoIndexOutOfBoundsException

    /// The value of the item that covers a column, Null where a short row has none.
    /// @throws VoIndexOutOfBoundsException and what VoDataTableItem::value() throws
    const VoVariant& value(std::size_t row, std::size_t column) const;
    /// The values of the item that covers a column, one Null where a short row has none.
    /// @throws VoIndexOutOfBoundsException
    const VoDeque<VoVariant>& values(std::size_t row, std::size_t column) const;

    /// The first column of the header item with this value: of one that is spelt alike, else of one that differs in
    /// case only; of the first of several, top to bottom. Values of other kinds count as the texts that
    /// VoVariant::toString() gives.
    /// @throws VoNotFoundException also when no row is a header
    std::size_t columnNumber(const VoString& header) const;

    /// @name Visits
    /// A short row is filled up with empty cells of one column. Throw VoInvalidCallException "Data table row given
    /// invalid number of columns to iterate over" at a row that was made too wide behind the table's back.
    /// @{
    void forEach(const ItemFunction& function) const;                         ///< Every item, row by row.
    void forEachItem(std::size_t row, const RowItemFunction& function) const; ///< The items of a row, left to right.
    /// Every value as it stands in a worksheet, sheet row by sheet row and in each from left to right.
    ///
    /// A row takes as many sheet rows as its tallest item has values, m; none when no item has any. An item's values
    /// stand in the first sheet rows of its columns one below the other, each spanning m / n sheet rows when the item
    /// has n: with m = 4 and n = 2 they stand in the first and second sheet row and span two each. The exports deal
    /// with the overlap. An item without values counts as one Null in a row of m = 1, and is left out otherwise.
    void forEachItemSpreadsheet(const SpreadsheetFunction& function) const;
    /// @}
    std::size_t numberSpreadsheetRows() const; ///< The sheet rows that forEachItemSpreadsheet() needs.

    /// @name Sorting rows by their values in a column
    /// Rows that compare equal keep their order; an item without a value counts as Null, which comes first, and a
    /// Double that is not a number comes after all other doubles. `firstRow` and `count` bound the rows that are
    /// sorted.
    /// @throws VoInvalidCallException "Column number outside of the range of columns", or "Cannot sort on column that
    ///        has multiple values per cell"
    /// @throws VoIndexOutOfBoundsException for rows that are not there
    /// @{
    void sort(std::size_t column);                                          ///< In ascending order.
    void sort(std::size_t column, const SortKey& comesFirst);               ///< Those of the key first.
    void sort(std::size_t column, std::size_t firstRow, std::size_t count); ///< In ascending order.
    void sort(std::size_t column, std::size_t firstRow, std::size_t count, const SortKey& comesFirst); ///< By key.
    /// In the order of a function of two values, a SortOrder. A template, because a value is made of a number too: what
    /// takes two values would count as a key as well.
    template <typename Order, typename = IsOrder<Order>>
    void sort(std::size_t column, const Order& isBefore)
    {
        sortRows(column, 0, numberRows(), isBefore);
    }
    /// The same within some rows.
    template <typename Order, typename = IsOrder<Order>>
    void sort(std::size_t column, std::size_t firstRow, std::size_t count, const Order& isBefore)
    {
        sortRows(column, firstRow, count, isBefore);
    }
    /// @}

    /// Adds a worksheet of that name to a workbook and writes the table into it. Each value stands in its own column; a
    /// value's rows end where the next value of its item begins. Throws what VoOOXMLWriter and its worksheet throw.
    void writeOOXML(VoOOXMLWriter& writer, const VoString& sheetName) const;
    /// Writes a workbook with the one worksheet "sheet1". The file is replaced when the workbook is whole: after a
    /// failure, which is thrown, its old content stands.
    void writeOOXML(const VoFilePath& file) const;
    /// Writes the table in the XML Spreadsheet 2003 format, each value in its own column; Null is an empty cell. Items
    /// span columns but no rows: stacked values take rows of their own, with empty cells below those of other items.
    /// Throws what VoXMLSpreadsheetWriter throws.
    void writeXMLSpreadsheet(VoIODevice& device) const;
    /// The same into a file, which is replaced when the document is whole: after a failure its old content stands.
    void writeXMLSpreadsheet(const VoFilePath& file) const;
    /// Writes the table as CSV: a value stands in the first column of its item, the others are empty, and stacked
    /// values take rows of their own. Throws what VoCSVWriter throws.
    void writeCSV(VoIODevice& device) const;
    /// The same in another format.
    void writeCSV(VoIODevice& device, const VoCSVFormat& format) const;

    bool operator==(const VoDataTable& other) const; ///< Equal rows: kinds, items, spans and values.
    bool operator!=(const VoDataTable& other) const; ///< Some row differs, or their number.

private:
    struct Private;

    void sortRows(std::size_t column, std::size_t firstRow, std::size_t count, const SortOrder& isBefore);

    std::unique_ptr<Private> m_private; // null in a table that never had a row
};

/// Writes tables to XML and reads them back: the child "Rows" of the caller's element, in it a "Row" for each row, with
/// the attribute "header" when it is one; in it an "Item" for each item, with the attribute "hspan" when it spans
/// several columns; in it a "Value" for each value. Both kinds of header come back as Header.
template <>
class VOCORE_EXPORT VoXMLObject<VoDataTable>
{
public:
    /// Writes the child "Rows".
    static void Write(VoXMLElementWriter& element, const VoDataTable& table);
    /// Reads the first child "Rows". Throws what reading values throws.
    /// @throws VoNullXMLStreamElementException without it
    /// @throws VoInvalidParameterException "Invalid column span: " and the text, for a span that is no number from 0 to
    ///        16384, and for one that makes a row wider than 1,048,576 columns
    static VoDataTable Read(VoXMLElementReader& element);
    /// A rule for an element that holds a table as Write() makes it, and for an element "Rows" itself. Its object is a
    /// VoLoadedDataTable.
    static VoXMLStreamLoader::Builder LoadRule();
};
