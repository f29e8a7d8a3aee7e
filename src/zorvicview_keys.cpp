#include "zorvicview.h"

#include "playheadwidget.h"
#include "widgets/buttonkeys.h"
#include "widgets/popupkeys.h"

#include <QShortcut>
#include <QTabBar>

#include <utility>

// No letter starts, pauses, ends or deletes anything: a slip of one key must not reach the stage. Return, Escape and
// the buttons do that.
void ZorvicView::WireShortcuts() {
    const auto add = [this](const QKeySequence& key, void (ZorvicView::*slot)()) {
        auto* shortcut = new QShortcut(key, this);
        shortcut->setAutoRepeat(false);  // a key held too long must not toggle the show
        connect(shortcut, &QShortcut::activated, this, slot);
    };
    add(Qt::Key_Enter, &ZorvicView::OnEnterKeyPressed);
    add(Qt::Key_Return, &ZorvicView::OnEnterKeyPressed);
    add(Qt::Key_Escape, &ZorvicView::OnEscapePressed);
    add(Qt::Key_F6, &ZorvicView::OnNextPanePressed);
    add(QKeySequence(QStringLiteral("Shift+F6")), &ZorvicView::OnPreviousPanePressed);
    KeepKeysInPopup(*ActivePlayerSel);
    const std::pair<QAbstractButton*, QString> letters[] = {
        {AddPresetButton, QStringLiteral("Alt+N")},  {EditPresetButton, QStringLiteral("Alt+E")},
        {DupPresetsButton, QStringLiteral("Alt+C")}, {SimulatorCheckBox, QStringLiteral("Alt+L")},
        {InPointButton, QStringLiteral("Alt+I")},    {OutPointButton, QStringLiteral("Alt+O")},
        {ResetTrimButton, QStringLiteral("Alt+R")},  {Goto30Button, QStringLiteral("Alt+3")},
        {Goto10Button, QStringLiteral("Alt+1")},
    };
    for (const auto& [button, key] : letters)
        GiveKey(*button, QKeySequence(key));
}

/// What the form cannot place: a widget that it does not know, and bars of tabs, for which the tab widgets, that hold
/// the pages too, must not stand.
void ZorvicView::OrderFocus() {
    const std::pair<QWidget*, QWidget*> order[] = {{SeekBox, ScrubBar},
                                                   {ScrubBar, InPointButton},
                                                   {SimulatorCheckBox, GCTabs->tabBar()},
                                                   {GCTabs->tabBar(), AssetImportButton},
                                                   {CountdownsView, PropertiesTabs->tabBar()},
                                                   {PropertiesTabs->tabBar(), ActivePlayerSel}};
    for (const auto& [first, second] : order)
        setTabOrder(first, second);
}

std::vector<QWidget*> ZorvicView::Panes() const {
    auto* const list = GCTabs->currentWidget()->findChild<QTreeWidget*>();
    return {PresetsView, SeekBox, ScrubBar, list, BrightnessSel, LChannel};
}

void ZorvicView::MoveToPane(int step) {
    const auto panes = Panes();
    const int count = static_cast<int>(panes.size());
    // From anywhere between the panes the way leads to the list of presets first.
    int at = step > 0 ? -1 : 1;
    for (int i = 0; i < count; ++i)
        if (panes[static_cast<std::size_t>(i)]->hasFocus()) at = i;
    for (int tries = 0; tries < count; ++tries) {
        at = (at + step + count) % count;
        auto* const pane = panes[static_cast<std::size_t>(at)];
        if (!pane->isVisible() || !pane->isEnabled()) continue;
        pane->setFocus(Qt::TabFocusReason);
        return;
    }
}

void ZorvicView::OnNextPanePressed() {
    MoveToPane(1);
}

void ZorvicView::OnPreviousPanePressed() {
    MoveToPane(-1);
}
