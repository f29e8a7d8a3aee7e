#pragma once

#include "ui_mainwindow.h"

#include <zorvic/session.h>

#include <QMainWindow>

#include <memory>
#include <string>
#include <unordered_map>

class ZorvicView;

/// The top-level window: one tab per connected unit, and the menus that act on the unit of the current tab. Without a
/// tab, or when the tab's unit has no session any more, the unit menus do nothing.
class MainWindow : public QMainWindow, public Ui::MainWindowUI {
    Q_OBJECT

public:
    using PowerMethod = Zorvic::StatusCode (Zorvic::Session::*)();

    MainWindow();
    ~MainWindow() override;

    /// Makes a tab for the unit of a session that the registry holds, in place of the unit's tab if there is one, and
    /// shows it. The caller holds a handle of the session. The first scan of the unit's assets runs the event loop.
    /// Returns the view, which the window owns; null when the unit does not tell its ID or the session was replaced
    /// meanwhile.
    ZorvicView* AddView(Zorvic::Session* session);

    /// Calls it on the current tab's session, without a question first.
    void CallPowerMethod(PowerMethod method);

public slots:
    void OnCreatePresetClicked();
    void OnEditPresetClicked();
    void OnClonePresetClicked();
    void OnDeletePresetClicked();
    /// Closes the tab; the unit's session stays open in the registry.
    void OnTabCloseClick(int index);

protected:
    void closeEvent(QCloseEvent* event) override;

private slots:
    void OnTabsChanged();
    void OnKeysClicked();
    void OnAboutClicked();
    void OnCompareClicked();
    void OnConnectMenuClicked();
    void OnQuitClicked();

private:
    void WireMenus();
    void WireKeys();
    void StepUnit(int step);
    void SetUpAsRun();
    /// The current tab's view, if its unit has a session.
    ZorvicView* CurrentView() const;
    QStringList Versions() const;
    std::unique_ptr<ZorvicView> BuildView(const std::string& guid, Zorvic::Session* session) const;
    void RemoveView(const std::string& guid);
    void ReattachView(Zorvic::Session* session) const;

    /// The open tabs, by unit GUID. A view that is destroyed takes its tab along.
    std::unordered_map<std::string, std::unique_ptr<ZorvicView>> Views;
};
