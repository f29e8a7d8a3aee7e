#pragma once

#include "metadata_cache.h"
#include "playheadwidget.h"
#include "support/consolewindows.h"
#include "support/fakezorvic.h"
#include "zorvicview.h"

#include <gmock/gmock.h>

#include <QScrollBar>
#include <QTimer>

using testing::ElementsAre;
using testing::IsEmpty;

inline std::vector<std::string> Column(const QTreeWidget* tree, int column) {
    std::vector<std::string> texts;
    for (int row = 0; row < tree->topLevelItemCount(); ++row)
        texts.push_back(tree->topLevelItem(row)->text(column).toStdString());
    return texts;
}
inline std::string Row(const QTreeWidget* tree, int row) {
    QStringList cells;
    for (int column = 0; column < tree->columnCount(); ++column)
        cells += tree->topLevelItem(row)->text(column);
    return cells.join(QLatin1Char(',')).toStdString();
}

/// A scripted unit with a session to it.
class UnitTest : public testing::Test {
protected:
    UnitTest() { Reconnect(); }
    ~UnitTest() override { FakeZorvic::Reset(); }

    void Reconnect() { delete Sessions.CreateSessionByIP("host"); }
    void Disconnect() { Sessions.DeleteSessionByGUID("guid"); }
    /// The commands since it was last asked for them.
    static std::vector<std::string> Sent() {
        auto commands = FakeZorvic::Commands();
        FakeZorvic::Calls.clear();
        return commands;
    }
    Zorvic::Asset& AddAsset(const std::string& path, const Zorvic::Size2D& resolution = {1920, 1080}) {
        Zorvic::Asset& asset = Unit.Assets.emplace_back();
        asset.FullPath = path;
        asset.Checksum = "one";
        asset.Status = Zorvic::ZORVIC_ASSETSTATE_READY;
        Unit.Metadata[path].FilePath = path;
        Unit.Metadata[path].Resolution = resolution;
        return asset;
    }

    FakeZorvic::Unit& Unit = (FakeZorvic::Reset(), FakeZorvic::AddUnit("host", "guid"));
    SessionManager Sessions;
};

/// A unit view on a scripted unit with the presets 1 "Opener" (60 s, selected), 2 "Break" and 3 "Finale" (100 s each).
/// Refreshes run when a test asks for them, through Pump().
class ViewTest : public UnitTest {
protected:
    ViewTest() {
        AddPreset("Opener", 60000);
        AddPreset("Break", 100000);
        AddPreset("Finale", 100000);
        SelectOnUnit(1);
    }
    ~ViewTest() override { FakeZorvic::Hook = nullptr; }

    void AddPreset(const char* name, int trtMS) {
        Zorvic::Preset preset;
        preset.Name = name;
        preset.Volume = {100, 200};
        Unit.AddPreset(preset, trtMS);
    }
    Zorvic::Preset& Preset(int pk) { return *Unit.FindPreset(pk); }
    Zorvic::PresetState& State(int pk) { return *Unit.FindState(pk); }
    void Stand(int pk, int timeMS, int level = 0) {
        Unit.TimeCodes[pk].PK = pk;
        Unit.TimeCodes[pk].Time = timeMS;
        Unit.TimeCodes[pk].VUData = {level, level};
    }
    void Play(int pk, int timeMS, int level = 0) {
        State(pk).IsPlaying = true;
        Stand(pk, timeMS, level);
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

    QTreeWidget& List() const { return *View->PresetsView; }
    PlayHeadWidget& Bar() const { return *View->findChild<PlayHeadWidget*>(); }

    void Open() {
        View = std::make_unique<ZorvicView>("guid", "host");
        View->AcceptAssets(Unit.Assets);
        View->AcceptPresetStates();
        Show(*View);
    }
    void Show(QWidget& window) const {
        for (auto* timer : View->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly))
            timer->stop();
        window.resize(1280, 720);
        window.show();
        QApplication::setActiveWindow(&window);
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        FakeZorvic::Calls.clear();
    }
    void Close() { View.reset(); }

    template <typename... Types>
    void Pump(Types... types) {
        (View->SetViewUpdateFlag(types), ...);
        View->ProcessViewUpdateFlags();
    }
    void SelectElsewhere(int pk) {
        SelectOnUnit(pk);
        Pump(Zorvic::ZORVIC_STATE_PRESETSTATES);
    }
    void Click(const char* button) const {
        QTest::mouseClick(View->findChild<QPushButton*>(QString::fromLatin1(button)), Qt::LeftButton);
    }
    /// To whatever has the focus, as the window system would send it.
    void Press(Qt::Key key) const { QTest::keyClick(View->window()->windowHandle(), key); }
    void SelectRows(std::initializer_list<int> pks) const {
        const QSignalBlocker blocker(&List());
        List().clearSelection();
        for (const int pk : pks)
            View->LookupPresetItem(pk)->setSelected(true);
    }

    std::unique_ptr<ZorvicView> View;
};

// What the authoring windows work on.
constexpr const char* Wide = "C:\\Assets\\wide.mov";     // 640x300
constexpr const char* Full = "C:\\Assets\\full.mov";     // 1920x1080
constexpr const char* Sound = "C:\\Assets\\sound.wav";   // no picture
constexpr const char* Gone = "C:\\Assets\\<b>gone.mov";  // not on the unit

inline Zorvic::CanvasInfo Canvas(std::uint32_t index, const Zorvic::Size2D& size = {1920, 1080},
                                 std::uint32_t outputs = 1) {
    using Zorvic::CanvasOrientationEnum;
    Zorvic::CanvasInfo canvas;
    canvas.Index = index;
    canvas.CanvasCfg.Dimensions = size;
    canvas.CanvasCfg.NumOutputs = outputs;
    canvas.CanvasCfg.Orientation = {outputs == 1 ? CanvasOrientationEnum::Single : CanvasOrientationEnum::Landscape,
                                    nullptr};
    return canvas;
}
/// The same with an asset of 640x300 on it.
inline Zorvic::CanvasInfo Canvas(const std::string& path, Zorvic::EasyCanvasAlignment alignment,
                                 Zorvic::CanvasInfo canvas = Canvas(0)) {
    Zorvic::AttachAssetToCanvas(alignment, path, {640, 300}, canvas);
    return canvas;
}
inline Zorvic::Preset PresetWith(const std::string& path, Zorvic::EasyCanvasAlignment alignment) {
    Zorvic::Preset preset;
    preset.PK = 7;
    preset.Name = "Act";
    preset.Canvases = {Canvas(path, alignment)};
    return preset;
}
inline Zorvic::Cube Placed(Zorvic::EasyCanvasAlignment alignment) {
    return Canvas("any", alignment).Assets.at(0).PinnedCoords;
}

/// A connected unit with the assets above, and what the authoring windows write to the log meanwhile.
class AuthoringTest : public UnitTest {
protected:
    AuthoringTest() {
        testing::internal::CaptureStderr();
        AddAsset(Wide, {640, 300});
        AddAsset(Full);
        AddAsset(Sound, {0, 0});
        Unit.Hardware.Resolutions = {Zorvic::ZORVIC_RES_1080P, Zorvic::ZORVIC_RES_1080P, Zorvic::ZORVIC_RES_720P,
                                     Zorvic::ZORVIC_RES_2160P};
    }
    ~AuthoringTest() override { testing::internal::GetCapturedStderr(); }

    bool Logged(const std::string& text) {
        Log += testing::internal::GetCapturedStderr();
        testing::internal::CaptureStderr();
        return Log.find(text) != std::string::npos;
    }

    MetadataCache Cache{"guid"};
    std::string Log;
};
