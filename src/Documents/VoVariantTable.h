#pragma once

#include <Core/VoExport.h>
#include <Core/VoForward.h>
#include <Core/VoMatrix.h>
#include <Core/VoString.h>
#include <Core/VoVariant.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>

struct VoCSVFormat;

/// A rectangular grid of values, row by row in one block.
///
/// A value: copies copy every cell, a moved-from table has no rows and no columns. Not synchronised.
class VOCORE_EXPORT VoVariantTable
{
public:
    /// What becomes of a cell that is not of the kind a conversion asks for.
    enum ErrorRule : std::int32_t
    {
        UseDefault = 0, ///< 0, or an empty text.
        Throw = 1,      ///< VoBadVariantAccessException with the kind wanted and the cell's.
        Skip = 2        ///< The cell stays as the matrix was made, which is 0 or an empty text too.
    };

    VoVariantTable() noexcept; ///< No rows and no columns.
    /// So many cells, all Null.
    /// @throws VoOverflowException when their number cannot be counted
    VoVariantTable(std::size_t rows, std::size_t columns);
    /// So many copies of a value; otherwise as above.
    VoVariantTable(std::size_t rows, std::size_t columns, const VoVariant& fill);
    /// The table of a CSV text, as LoadCSV() reads it.
    VoVariantTable(const VoString& csv, bool detectTypes);
    /// The same of another format.
    VoVariantTable(const VoString& csv, bool detectTypes, const VoCSVFormat& format);

    VoVariantTable(const VoVariantTable& other);                ///< Copies every cell.
    VoVariantTable(VoVariantTable&& other) noexcept;            ///< `other` becomes empty.
    VoVariantTable& operator=(const VoVariantTable& other);     ///< Copies every cell; unchanged when that fails.
    VoVariantTable& operator=(VoVariantTable&& other) noexcept; ///< `other` becomes empty.
    ~VoVariantTable();

    /// Reads a CSV file as VoCSVReader does; rows shorter than the longest one are filled up with Null.
    ///
    /// When types are detected, a field in quotes is a String; one without is Null when empty, an Integer when it is
    /// the plain decimal form of an `int`, a Double when it is another number, a Boolean when it is "true" or "false"
    /// (without regard to case), else a String; blanks around a value do not count. A String stays what would lose
    /// something: a number with a plus sign, or with a zero before other digits ("007"); one with more digits than a
    /// Double keeps, such as 12345678901234567890, or too large or too small for one, such as 1e-400; and "NaN" and
    /// "Infinity" in any spelling but VoCSVWriter's own, "nan", "inf" and "-inf", which are Doubles. What a program
    /// printed from a double with any number of digits is one. Without detection every field is a String. Throws
    /// what VoCSVReader throws.
    /// @throws VoInvalidParameterException "Rows of CSV differ too much in length" when
    ///        filling them up would make a table out of all proportion to the text
    static VoVariantTable LoadCSV(VoIODevice& device, bool detectTypes);
    /// The same from another format.
    static VoVariantTable LoadCSV(VoIODevice& device, bool detectTypes, const VoCSVFormat& format);

    /// The cell.
    /// @throws VoIndexOutOfBoundsException with the offending index and its bound
    VoVariant& at(std::size_t row, std::size_t column);
    /// The cell.
    /// @throws VoIndexOutOfBoundsException with the offending index and its bound
    const VoVariant& at(std::size_t row, std::size_t column) const;

    /// @name References to the cells of one row or column
    /// Valid until the table is assigned, moved from or destroyed. They throw VoIndexOutOfBoundsException.
    /// @{
    VoVector<VoRef<VoVariant>> row(std::size_t row);              ///< Of a row, left to right.
    VoVector<VoCRef<VoVariant>> row(std::size_t row) const;       ///< Of a row, left to right.
    VoVector<VoRef<VoVariant>> column(std::size_t column);        ///< Of a column, top to bottom.
    VoVector<VoCRef<VoVariant>> column(std::size_t column) const; ///< Of a column, top to bottom.
    /// @}

    /// Visits every cell, row by row.
    void forEach(const std::function<void(std::size_t row, std::size_t column, VoVariant& value)>& function);
    /// Visits every cell, row by row.
    void
    forEach(const std::function<void(std::size_t row, std::size_t column, const VoVariant& value)>& function) const;

    std::size_t numberRows() const noexcept;    ///< Number of rows.
    std::size_t numberColumns() const noexcept; ///< Number of columns.

    /// The column that has this text in the first row: one that is spelt alike, else one that differs in case only; the
    /// first of several. Cells of other kinds count as the texts that VoVariant::toString() gives.
    /// @throws VoNotFoundException
    std::size_t columnNumber(const VoString& header) const;

    /// The table as a CSV text in the default format, as VoCSVWriter::addValue() writes it: a table of Null, Boolean,
    /// Integer, Double and String cells with at least one column comes back from it with types detected. Throws what
    /// VoCSVWriter throws.
    VoString toString() const;
    /// Writes that to a device. Throws what VoCSVWriter throws.
    void writeCSV(VoIODevice& device) const;
    /// The same in another format.
    void writeCSV(VoIODevice& device, const VoCSVFormat& format) const;

    /// Compares the numbers of cells, then of columns, then of rows: -1 when this table has fewer, 1 when it has more.
    /// Tables of one shape are equal, 0, or differ in some cell, 1: this is no order among them.
    int compare(const VoVariantTable& other) const;
    bool operator==(const VoVariantTable& other) const { return compare(other) == 0; } ///< Same shape, equal cells.
    bool operator!=(const VoVariantTable& other) const { return compare(other) != 0; } ///< Another shape or some cell.

    /// @name Conversions
    /// Values of other kinds follow the rule: nothing is rounded or parsed.
    /// @{
    VoMatrix<double> toDoubleTable(ErrorRule rule) const;   ///< Integer and Double cells.
    VoMatrix<int> toIntegerTable(ErrorRule rule) const;     ///< Integer cells.
    VoMatrix<VoString> toStringTable(ErrorRule rule) const; ///< String cells.
    /// @}

    /// Writes toString().
    friend VOCORE_EXPORT std::ostream& operator<<(std::ostream& stream, const VoVariantTable& table);

private:
    struct Private;

    explicit VoVariantTable(std::unique_ptr<Private> state) noexcept;
    const VoMatrix<VoVariant>& cells() const noexcept;
    VoMatrix<VoVariant>& cells();

    std::unique_ptr<Private> m_private; // null in a table without cells
};
