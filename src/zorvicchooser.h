#pragma once

#include "ui_zorvicchooser.h"

#include <QWidget>

#include <vector>

class MainWindow;

/// The connect window: the units that answer on the local network, and a field for the address to connect to.
class ZorvicChooser : public QWidget, public Ui::ZorvicChooserUI {
    Q_OBJECT

public:
    /// The column index is the value minus 1.
    enum class ChooserColumn : int { INVALID = 0, IP, NICKNAME, TYPE, GUID, ROLE, VERSION, API, MAX };
    static constexpr int ColumnTypeToIndex(ChooserColumn column) { return static_cast<int>(column) - 1; }

    /// The window gets a tab for each unit that is connected to; it is not owned and must live longer.
    explicit ZorvicChooser(MainWindow* mainWindow);
    ~ZorvicChooser() override;

    /// The program's one chooser; null before it is complete and after it is gone.
    static ZorvicChooser* Instance;

public slots:
    /// Copies the row's address into the address field.
    void OnZorvicSelected(QTreeWidgetItem* item, int column);
    /// Lists the units found now. Does nothing while the window is hidden. Rows of units that stay are kept, so that
    /// the selection, the scroll position and a double-click under way survive.
    void RefreshLANZorvics();
    /// Opens a session to the address in the field and a tab for it, then hides the window. When the unit cannot be
    /// reached nothing changes.
    void OnConnectClicked();
    void OnNewClicked(bool checked);

protected:
    void showEvent(QShowEvent* event) override;

private slots:
    void OnZorvicDoubleClicked(QTreeWidgetItem* item);
    void OnSelectionChanged();

private:
    void SetUpList();
    void WireControls();
    void ShowRows(const std::vector<QStringList>& rows);
    QTreeWidgetItem* SelectedItem() const;

    MainWindow* MainWin;
    bool Connecting = false;
    bool Refreshing = false;
};
