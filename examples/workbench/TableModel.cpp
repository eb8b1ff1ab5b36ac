#include "TableModel.h"

#include <Actions/VoUndoStack.h>
#include <Core/VoDeque.h>
#include <Core/VoString.h>
#include <Core/VoVariant.h>
#include <Documents/VoCSVFormat.h>
#include <Documents/VoDataTableItem.h>
#include <FileSystem/VoAtomicFileWriter.h>
#include <FileSystem/VoFilePath.h>
#include <FileSystem/VoFileType.h>
#include <IO/VoFileDevice.h>
#include <Misc/XMLReport/ReportDataFile.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace {

std::size_t Index(int number)
{
    return static_cast<std::size_t>(number);
}

// The first row is the heading.
VoVariantTable LoadCSV(const VoFilePath& file)
{
    VoFileDevice device(file);
    return VoVariantTable::LoadCSV(device, true);
}

// A row for each case of an analysis, a column for each result.
VoVariantTable LoadResults(const VoFilePath& file)
{
    const ReportDataFile results = ReportDataFile::Read(file);
    const std::size_t columns = results.header.resultNames.size();
    VoVariantTable table(results.cases.size() + 1, columns + 1);
    table.at(0, 0) = "Case";
    for (std::size_t i = 0; i < columns; ++i)
        table.at(0, i + 1) = VoString(results.header.resultNames[i]);
    std::size_t row = 0;
    for (const auto& [number, info] : results.cases) {
        table.at(++row, 0) = number;
        for (std::size_t i = 0; i < std::min(columns, info.results.size()); ++i)
            table.at(row, i + 1) = info.results[i].reference;
    }
    return table;
}

QString Shown(const VoVariant& value)
{
    if (value.isNull())
        return QString();
    return value.type() == VoVariant::Double ? QString::number(value.asDouble(), 'g', 10)
                                             : value.toString().toQString();
}

// What was typed, as it would be in a file.
VoVariant Typed(const QString& text)
{
    VoCSVFormat format;
    format.separator = "\x1f"; // one that nobody types
    format.quote = '\x1e';
    const VoVariantTable table(VoString(text).replaced("\n", " "), true, format);
    return table.numberRows() == 0 ? VoVariant() : table.at(0, 0);
}

} // namespace

TableModel::TableModel(VoUndoStack& history, QObject* parent)
    : QAbstractTableModel(parent)
    , m_history(history)
{
}

void TableModel::load(const VoFilePath& file)
{
    const VoVariantTable all = VoFileType(file) == VoFileType::XML ? LoadResults(file) : LoadCSV(file);
    VoVariantTable values(all.numberRows() > 0 ? all.numberRows() - 1 : 0, all.numberColumns());
    std::vector<VoString> heading;
    all.forEach([&](std::size_t row, std::size_t column, const VoVariant& value) {
        if (row == 0)
            heading.push_back(value.isNull() ? VoString() : value.toString());
        else
            values.at(row - 1, column) = value;
    });
    beginResetModel();
    m_heading = std::move(heading);
    m_values = std::move(values);
    endResetModel();
    m_history.clear();
    m_history.setClean();
}

void TableModel::save(const VoFilePath& file) const
{
    VoAtomicFileWriter target(file);
    table().writeCSV(target.device());
    target.commit();
    m_history.setClean();
}

VoDataTable TableModel::table() const
{
    VoDataTable table;
    VoDeque<VoDataTableItem> heading;
    for (const VoString& name : m_heading)
        heading.pushBack(VoDataTableItem(name));
    table.addRow(heading, VoDataTable::Header);
    for (std::size_t row = 0; row < m_values.numberRows(); ++row) {
        VoDeque<VoDataTableItem> items;
        for (std::size_t column = 0; column < m_values.numberColumns(); ++column)
            items.pushBack(VoDataTableItem(m_values.at(row, column)));
        table.addRow(items, VoDataTable::Data);
    }
    return table;
}

VoVariantTable TableModel::block(const QModelIndexList& cells) const
{
    if (cells.isEmpty())
        return VoVariantTable();
    const auto byRow = [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); };
    const auto byColumn = [](const QModelIndex& a, const QModelIndex& b) { return a.column() < b.column(); };
    const auto [top, bottom] = std::minmax_element(cells.begin(), cells.end(), byRow);
    const auto [left, right] = std::minmax_element(cells.begin(), cells.end(), byColumn);
    VoVariantTable block(Index(bottom->row() - top->row() + 1), Index(right->column() - left->column() + 1));
    for (const QModelIndex& cell : cells)
        block.at(Index(cell.row() - top->row()), Index(cell.column() - left->column())) =
            m_values.at(Index(cell.row()), Index(cell.column()));
    return block;
}

void TableModel::paste(int row, int column, const VoVariantTable& block)
{
    const std::size_t rows = std::max(m_values.numberRows(), Index(row) + block.numberRows());
    VoVariantTable values(rows, m_values.numberColumns());
    m_values.forEach([&](std::size_t r, std::size_t c, const VoVariant& value) { values.at(r, c) = value; });
    block.forEach([&](std::size_t r, std::size_t c, const VoVariant& value) {
        if (Index(column) + c < values.numberColumns())
            values.at(Index(row) + r, Index(column) + c) = value;
    });
    change("Paste", std::move(values));
}

int TableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_values.numberRows());
}

int TableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_values.numberColumns());
}

QVariant TableModel::data(const QModelIndex& index, int role) const
{
    const VoVariant& value = m_values.at(Index(index.row()), Index(index.column()));
    const bool isText = value.type() == VoVariant::String;
    if (role == Qt::TextAlignmentRole)
        return int(isText ? Qt::AlignLeft | Qt::AlignVCenter : Qt::AlignRight | Qt::AlignVCenter);
    return role == Qt::DisplayRole || role == Qt::EditRole ? QVariant(Shown(value)) : QVariant();
}

QVariant TableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return QVariant();
    return orientation == Qt::Vertical ? QVariant(section + 1) : QVariant(m_heading[Index(section)].toQString());
}

Qt::ItemFlags TableModel::flags(const QModelIndex& index) const
{
    return QAbstractTableModel::flags(index) | Qt::ItemIsEditable;
}

bool TableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::EditRole)
        return false;
    const std::size_t row = Index(index.row());
    const std::size_t column = Index(index.column());
    const auto exchangeCell = [this, index, row, column, other = std::make_shared<VoVariant>(Typed(value.toString()))] {
        m_values.at(row, column).swap(*other);
        Q_EMIT dataChanged(index, index);
    };
    m_history.push("Edit " + m_heading[column], exchangeCell, exchangeCell);
    return true;
}

void TableModel::exchange(VoVariantTable& other)
{
    beginResetModel();
    std::swap(m_values, other);
    endResetModel();
}

// Doing and undoing are the same: the table and the one that is kept change places.
void TableModel::change(const VoString& text, VoVariantTable values)
{
    const auto exchangeTables = [this, other = std::make_shared<VoVariantTable>(std::move(values))] {
        exchange(*other);
    };
    m_history.push(text, exchangeTables, exchangeTables);
}
