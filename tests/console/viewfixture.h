#pragma once

#include "sessionmanager.h"
#include "support/fakezorvic.h"
#include "zorvicview.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

#include <memory>
#include <string>

/// The first window of this kind, or null.
template <typename Window>
Window* TopLevel() {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (auto* const found = qobject_cast<Window*>(window)) return found;
    }
    return nullptr;
}

/// A unit view on a scripted unit with the presets 1 "Opener" (60 s, selected), 2 "Break" and 3 "Finale" (100 s each).
/// Refreshes run when a test asks for them, through Pump().
class ViewTest : public testing::Test {
protected:
    ViewTest() {
        AddPreset("Opener", 60000);
        AddPreset("Break", 100000);
        AddPreset("Finale", 100000);
        Unit.States[0].IsSelected = true;
        Handle.reset(Sessions.CreateSessionByIP("host"));
    }
    ~ViewTest() override {
        FakeZorvic::SetHook(nullptr);
        Close();
    }

    void AddPreset(const std::string& name, int trtMS) {
        Zorvic::Preset preset;
        preset.Name = name;
        preset.Volume = {100, 200};
        Unit.AddPreset(preset, trtMS);
    }
    Zorvic::Preset& Preset(int pk) { return *Unit.FindPreset(pk); }
    Zorvic::PresetState& State(int pk) { return *Unit.FindState(pk); }
    void Play(int pk, int timeMS) {
        State(pk).IsPlaying = true;
        auto& code = Unit.TimeCodes[pk];
        code.PK = pk;
        code.Time = timeMS;
    }
    void Forget(int pk) {
        std::erase_if(Unit.Presets, [pk](const auto& preset) { return preset.PK == pk; });
        std::erase_if(Unit.States, [pk](const auto& state) { return state.PK == pk; });
    }
    /// What another console's choice looks like from here.
    void SelectOnUnit(int pk) {
        for (auto& state : Unit.States)
            state.IsSelected = state.PK == pk;
    }

    void Open() {
        View = std::make_unique<ZorvicView>("guid", "host");
        View->AcceptAssets(Unit.Assets);
        View->AcceptPresetStates();
        for (auto* timer : View->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly))
            timer->stop();
        View->resize(1280, 720);
        View->show();
        QApplication::setActiveWindow(View.get());
        ASSERT_TRUE(QTest::qWaitForWindowActive(View.get()));
        FakeZorvic::ClearCalls();
    }
    void Close() { View.reset(); }

    template <typename... Types>
    void Pump(Types... types) {
        (View->SetViewUpdateFlag(types), ...);
        View->ProcessViewUpdateFlags();
    }
    template <typename Widget>
    Widget* Find(const char* name) const {
        return View->findChild<Widget*>(QString::fromLatin1(name));
    }
    void Click(const char* button) const { QTest::mouseClick(Find<QPushButton>(button), Qt::LeftButton); }
    /// To whatever has the focus, as the window system would send it.
    void Press(Qt::Key key) const { QTest::keyClick(View->window()->windowHandle(), key); }
    void SelectRows(std::initializer_list<int> pks) const {
        const QSignalBlocker blocker(View->PresetsView);
        View->PresetsView->clearSelection();
        for (const int pk : pks)
            View->LookupPresetItem(pk)->setSelected(true);
    }
    static std::vector<std::string> Column(const QTreeWidget* tree, int column) {
        std::vector<std::string> texts;
        texts.reserve(static_cast<std::size_t>(tree->topLevelItemCount()));
        for (int row = 0; row < tree->topLevelItemCount(); ++row)
            texts.push_back(tree->topLevelItem(row)->text(column).toStdString());
        return texts;
    }

    FakeZorvic::Unit& Unit = (FakeZorvic::Reset(), FakeZorvic::AddUnit("host", "guid"));
    SessionManager Sessions;
    std::unique_ptr<SessionHandle> Handle;
    std::unique_ptr<ZorvicView> View;
};
