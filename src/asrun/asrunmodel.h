#pragma once

#include <zorvic/asrun.h>

#include <QAbstractTableModel>
#include <QString>

#include <array>
#include <deque>
#include <vector>

/// The newest entries of a unit's as-run sheet as rows, in the order of their numbers.
class AsRunModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { TIME, WHAT, PRESET, POSITION, ASKED_BY, SHOWN, DETAILS, COLUMN_COUNT };
    static constexpr int MostRows = 50000;

    /// Adds the entries; one that is there already is replaced. Of too many the oldest go, when `trim` allows it or
    /// there are twice as many.
    void Add(std::vector<Zorvic::AsRunEntry> entries, bool trim);
    void Clear();
    const Zorvic::AsRunEntry& EntryAt(int row) const { return Rows[static_cast<std::size_t>(row)].Entry; }
    /// True when each of the words stands somewhere in the row, in any case.
    bool Holds(int row, const QStringList& words) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    struct Row {
        Zorvic::AsRunEntry Entry;
        std::array<QString, COLUMN_COUNT> Cells;
    };
    static Row MakeRow(Zorvic::AsRunEntry entry);
    void Merge(Zorvic::AsRunEntry entry);
    void Trim(int count);

    std::deque<Row> Rows;
};
