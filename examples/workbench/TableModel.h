#pragma once

#include <Documents/VoDataTable.h>
#include <Documents/VoVariantTable.h>

#include <QtCore/QAbstractTableModel>

#include <vector>

class VoFilePath;
class VoUndoStack;

/// The table that is shown; every change of it goes through the history.
class TableModel : public QAbstractTableModel
{
public:
    TableModel(VoUndoStack& history, QObject* parent);

    /// Replaces the table by that of a file, CSV or results of an analysis; the history begins anew.
    void load(const VoFilePath& file);
    /// Writes the table as CSV.
    void save(const VoFilePath& file) const;

    const VoVariantTable& values() const { return m_values; }          ///< Without the heading.
    const std::vector<VoString>& heading() const { return m_heading; } ///< The names of the columns.
    VoDataTable table() const;                                         ///< With the heading.
    VoVariantTable block(const QModelIndexList& cells) const;          ///< The rectangle around some cells.
    /// Puts values over those from a cell on; rows that are missing are added, columns beyond the last are left out.
    void paste(int row, int column, const VoVariantTable& block);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

private:
    void exchange(VoVariantTable& other);
    void change(const VoString& text, VoVariantTable values);

    VoUndoStack& m_history;
    std::vector<VoString> m_heading;
    VoVariantTable m_values;
};
