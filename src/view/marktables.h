#pragma once

#include <zorvic/types.h>

#include <QObject>

#include <array>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

class MarkNameDelegate;
class QTreeWidget;
class QTreeWidgetItem;

/// The tables of gotos and countdowns of one preset, with the editors of their names. Rows are told apart by the ID of
/// their mark and live as long as it does: a refresh changes what differs, an open editor survives it.
class MarkTables : public QObject {
    Q_OBJECT

public:
    enum class Kind { Goto, Countdown };

    MarkTables(QTreeWidget* gotos, QTreeWidget* countdowns);
    ~MarkTables() override;

    /// An editor that is open for a mark of another preset is closed: IDs repeat from preset to preset.
    void Show(const Zorvic::Preset& preset);
    void ShowNothing();
    /// What is left to each countdown when the preset stands at this remaining time; empty when it does not stand
    /// anywhere.
    void ShowRemaining(const Zorvic::Preset& preset, std::optional<int> positionMS);
    /// Times left lose their colours until they run again.
    void ShowStale();

    /// Whose marks are shown; 0 without.
    int PK() const { return ShownPK; }
    static int IDOf(const QTreeWidgetItem* row, Kind kind);
    std::vector<int> SelectedIDs(Kind kind) const;
    std::string NameOf(const QTreeWidgetItem* row, Kind kind) const;
    /// Puts a name into the row without anybody taking it for the operator's edit.
    void SetName(QTreeWidgetItem* row, Kind kind, const std::string& name);

signals:
    void GotoTriggered(int pk, int timeMS);

private:
    struct Table {
        QTreeWidget* View;
        MarkNameDelegate* Editor;
        int IDColumn;
        int NameColumn;
        int PositionColumn;
    };

    static Table MakeTable(QTreeWidget* view, Kind kind);
    const Table& Of(Kind kind) const { return Tables.at(static_cast<std::size_t>(kind)); }
    void Fill(Kind kind, const Zorvic::Preset& preset);
    QTreeWidgetItem* MakeRow(Kind kind, int id) const;
    void AddGoButton(QTreeWidgetItem* row, int id);
    void Go(int id);
    bool eventFilter(QObject* watched, QEvent* event) override;

    std::array<Table, 2> Tables;
    int ShownPK = 0;
    /// Positions of the gotos shown, by ID.
    std::unordered_map<int, int> GotoTimes;
};
