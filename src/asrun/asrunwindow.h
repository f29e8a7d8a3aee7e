#pragma once

#include "ui_asrunwindow.h"

#include <zorvic/asrun.h>

#include <QTimer>
#include <QWidget>

#include <memory>
#include <string>

class AsRunModel;
class AsRunFilter;

/// The as-run sheet of one unit, as it grows. At the end of the table it follows; scrolled up it stays where it is.
/// Asks for the sheet over a connection of its own, while the window lives.
class AsRunWindow : public QWidget, public Ui::AsRunWindowUI {
    Q_OBJECT

public:
    /// How many older entries it fetches.
    static constexpr std::uint32_t History = 10000;

    AsRunWindow(const std::string& host, const QString& unit);
    ~AsRunWindow() override;

    /// Shows what has come; called by itself several times a second.
    void Refresh();
    /// Writes the rows that are shown; says why not when it cannot.
    bool SaveTo(const QString& file);

public slots:
    void OnFilterChanged(const QString& text);
    void OnCopyClicked();
    void OnSaveClicked();

private:
    void SetUpTable();
    void WireControls();
    void TakeNews();
    void ShowState();

    std::unique_ptr<Zorvic::AsRunSheet> Sheet;
    AsRunModel* Model;
    AsRunFilter* Shown;
    QTimer Round;
    const QString Unit;
    QString LastSave;  ///< what became of it, until the filter changes
};
