#include <Documents/VoVariantTable.h>

#include <Core/VoDeque.h>
#include <Core/detail/Callback.h>
#include <Documents/VoCSVReader.h>
#include <Documents/VoCSVWriter.h>
#include <Documents/detail/CSVText.h>
#include <Documents/detail/ColumnSearch.h>
#include <IO/VoStringDevice.h>

#include <algorithm>
#include <ostream>
#include <vector>

namespace {

// Filling up rows may cost this many cells, or this many for each cell read.
constexpr std::size_t AlwaysAllowedCells = 1 << 24;
constexpr std::size_t AllowedCellsPerCell = 256;

void RequireProportion(std::size_t rows, std::size_t columns, std::size_t cells)
{
    if (columns != 0 && rows > std::max(AlwaysAllowedCells, cells * AllowedCellsPerCell) / columns)
        throw VoInvalidParameterException("Rows of CSV differ too much in length");
}

int Order(std::size_t left, std::size_t right)
{
    return left < right ? -1 : left > right ? 1 : 0;
}

// Converts the cells that `take` accepts; it returns whether it set the target.
template <typename T, typename Take>
VoMatrix<T> Converted(const VoMatrix<VoVariant>& cells, VoVariant::Type wanted, VoVariantTable::ErrorRule rule,
                      const Take& take)
{
    VoMatrix<T> converted(cells.rows(), cells.columns());
    const std::size_t count = cells.rows() * cells.columns();
    for (std::size_t i = 0; i < count; ++i) {
        const VoVariant& cell = cells.data()[i];
        if (!take(cell, converted.data()[i]) && rule == VoVariantTable::Throw)
            throw VoBadVariantAccessException(wanted, cell.type());
    }
    return converted;
}

} // namespace

struct VoVariantTable::Private
{
    VoMatrix<VoVariant> cells;
};

VoVariantTable::VoVariantTable(std::unique_ptr<Private> state) noexcept
    : m_private(std::move(state))
{
}

VoVariantTable::VoVariantTable() noexcept = default;

VoVariantTable::VoVariantTable(std::size_t rows, std::size_t columns)
    : VoVariantTable(rows, columns, VoVariant())
{
}

VoVariantTable::VoVariantTable(std::size_t rows, std::size_t columns, const VoVariant& fill)
    : m_private(new Private{VoMatrix<VoVariant>(rows, columns, fill)})
{
}

VoVariantTable::VoVariantTable(const VoString& csv, bool detectTypes)
    : VoVariantTable(csv, detectTypes, VoCSVFormat())
{
}

VoVariantTable::VoVariantTable(const VoString& csv, bool detectTypes, const VoCSVFormat& format)
{
    VoStringDevice device(csv);
    *this = LoadCSV(device, detectTypes, format);
}

VoVariantTable::VoVariantTable(const VoVariantTable& other)
    : m_private(other.m_private ? std::make_unique<Private>(*other.m_private) : nullptr)
{
}

VoVariantTable::VoVariantTable(VoVariantTable&& other) noexcept = default;

VoVariantTable& VoVariantTable::operator=(const VoVariantTable& other)
{
    return *this = VoVariantTable(other);
}

VoVariantTable& VoVariantTable::operator=(VoVariantTable&& other) noexcept
{
    VoVariantTable taken(std::move(other));
    m_private.swap(taken.m_private);
    return *this;
}

VoVariantTable::~VoVariantTable() = default;

const VoMatrix<VoVariant>& VoVariantTable::cells() const noexcept
{
    // Never destroyed: tables may be read while the process ends.
    static const auto* const none = new VoMatrix<VoVariant>;
    return m_private ? m_private->cells : *none;
}

VoMatrix<VoVariant>& VoVariantTable::cells()
{
    if (!m_private)
        m_private = std::make_unique<Private>();
    return m_private->cells;
}

VoVariantTable VoVariantTable::LoadCSV(VoIODevice& device, bool detectTypes)
{
    return LoadCSV(device, detectTypes, VoCSVFormat());
}

VoVariantTable VoVariantTable::LoadCSV(VoIODevice& device, bool detectTypes, const VoCSVFormat& format)
{
    VoCSVReader reader(device, format);
    VoDeque<VoVariant> values;
    std::vector<std::size_t> widths;
    std::size_t columns = 0;
    while (reader.nextRow()) {
        widths.push_back(reader.numberFields());
        columns = std::max(columns, widths.back());
        RequireProportion(widths.size(), columns, values.size());
        for (std::size_t i = 0; i < widths.back(); ++i)
            values.pushBack(vo::detail::FieldValue(reader, i, detectTypes, format));
    }

    VoVariantTable table(widths.size(), columns);
    auto value = values.begin();
    for (std::size_t row = 0; row < widths.size(); ++row) {
        VoVariant* const cells = table.cells().rowData(row);
        for (std::size_t column = 0; column < widths[row]; ++column)
            cells[column] = std::move(*value++);
    }
    return table;
}

VoVariant& VoVariantTable::at(std::size_t row, std::size_t column)
{
    return cells().at(row, column);
}

const VoVariant& VoVariantTable::at(std::size_t row, std::size_t column) const
{
    return cells().at(row, column);
}

VoVector<VoRef<VoVariant>> VoVariantTable::row(std::size_t row)
{
    return cells().row(row);
}

VoVector<VoCRef<VoVariant>> VoVariantTable::row(std::size_t row) const
{
    if (row >= numberRows())
        throw VoIndexOutOfBoundsException(row, numberRows());
    const VoVariant* const first = cells().rowData(row);
    return VoVector<VoCRef<VoVariant>>(first, first + numberColumns());
}

VoVector<VoRef<VoVariant>> VoVariantTable::column(std::size_t column)
{
    return cells().column(column);
}

VoVector<VoCRef<VoVariant>> VoVariantTable::column(std::size_t column) const
{
    if (column >= numberColumns())
        throw VoIndexOutOfBoundsException(column, numberColumns());
    VoVector<VoCRef<VoVariant>> references;
    references.reserve(numberRows());
    for (std::size_t row = 0; row < numberRows(); ++row)
        references.pushBack(cells()(row, column));
    return references;
}

void VoVariantTable::forEach(const std::function<void(std::size_t, std::size_t, VoVariant&)>& function)
{
    vo::detail::RequireCallback(function);
    for (std::size_t row = 0; row < numberRows(); ++row)
        for (std::size_t column = 0; column < numberColumns(); ++column)
            function(row, column, cells()(row, column));
}

void VoVariantTable::forEach(const std::function<void(std::size_t, std::size_t, const VoVariant&)>& function) const
{
    vo::detail::RequireCallback(function);
    for (std::size_t row = 0; row < numberRows(); ++row)
        for (std::size_t column = 0; column < numberColumns(); ++column)
            function(row, column, cells()(row, column));
}

std::size_t VoVariantTable::numberRows() const noexcept
{
    return cells().rows();
}

std::size_t VoVariantTable::numberColumns() const noexcept
{
    return cells().columns();
}

std::size_t VoVariantTable::columnNumber(const VoString& header) const
{
    vo::detail::ColumnSearch search(header);
    for (std::size_t column = 0; numberRows() > 0 && column < numberColumns(); ++column)
        search.offer(at(0, column), column);
    return search.found();
}

VoString VoVariantTable::toString() const
{
    VoStringDevice device;
    writeCSV(device);
    return device.content();
}

void VoVariantTable::writeCSV(VoIODevice& device) const
{
    writeCSV(device, VoCSVFormat());
}

void VoVariantTable::writeCSV(VoIODevice& device, const VoCSVFormat& format) const
{
    VoCSVWriter writer(device, format);
    for (std::size_t row = 0; row < numberRows(); ++row) {
        for (std::size_t column = 0; column < numberColumns(); ++column)
            writer.addValue(cells()(row, column));
        writer.endRow();
    }
    writer.finish();
}

int VoVariantTable::compare(const VoVariantTable& other) const
{
    const std::size_t count = numberRows() * numberColumns();
    if (const int order = Order(count, other.numberRows() * other.numberColumns()))
        return order;
    if (const int order = Order(numberColumns(), other.numberColumns()))
        return order;
    if (const int order = Order(numberRows(), other.numberRows()))
        return order;
    const VoVariant* const own = cells().data();
    const VoVariant* const others = other.cells().data();
    // 1 whatever the first difference is; callers rely on it.
    return std::equal(own, own + count, others) ? 0 : 1;
}

VoMatrix<double> VoVariantTable::toDoubleTable(ErrorRule rule) const
{
    return Converted<double>(cells(), VoVariant::Double, rule, [](const VoVariant& cell, double& target) {
        if (cell.type() == VoVariant::Integer)
            target = cell.asInteger();
        else if (cell.type() == VoVariant::Double)
            target = cell.asDouble();
        else
            return false;
        return true;
    });
}

VoMatrix<int> VoVariantTable::toIntegerTable(ErrorRule rule) const
{
    return Converted<int>(cells(), VoVariant::Integer, rule, [](const VoVariant& cell, int& target) {
        if (cell.type() != VoVariant::Integer)
            return false;
        target = cell.asInteger();
        return true;
    });
}

VoMatrix<VoString> VoVariantTable::toStringTable(ErrorRule rule) const
{
    return Converted<VoString>(cells(), VoVariant::String, rule, [](const VoVariant& cell, VoString& target) {
        if (cell.type() != VoVariant::String)
            return false;
        target = cell.asString();
        return true;
    });
}

std::ostream& operator<<(std::ostream& stream, const VoVariantTable& table)
{
    return stream << table.toString();
}
