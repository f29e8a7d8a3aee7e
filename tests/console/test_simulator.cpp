#include "simulator.h"

#include "fixtures.h"

#include <QAbstractItemView>
#include <QPointer>
#include <QSignalSpy>
#include <QWindow>

using namespace Simulator;
using namespace Zorvic;

namespace {

class SimulatorTest : public AuthoringTest {
protected:
    void Show(const Preset& preset, bool readOnly = true) {
        Widget = std::make_unique<SimulatorWidget>(nullptr, Cache, readOnly);
        Set(preset);
        Widget->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(Widget.get()));
    }
    bool Set(const Preset& preset, bool playing = false) {
        auto state = std::make_unique<PresetState>();
        state->IsPlaying = playing;
        return Widget->SetPreset(std::make_unique<Preset>(preset).release(), state.release(), true);
    }
    SimulatorPaneWidget* Pane(int column = 0) const {
        const auto panes = Widget->findChildren<SimulatorPaneWidget*>();
        return column < panes.size() ? panes.at(column) : nullptr;
    }
    const CanvasInfo& Shown() const { return Widget->GetPreset()->Canvases.at(0); }
    Cube Coords() const { return Shown().Assets.at(0).PinnedCoords; }
    /// Where the window system would deliver it, so that what is hit decides who gets it.
    void Press(const QWidget* target) const {
        QTest::mouseClick(Widget->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                          target->mapTo(Widget.get(), target->rect().center()));
    }

    std::unique_ptr<SimulatorWidget> Widget;
};

TEST_F(SimulatorTest, WhatCannotBeShownLeavesTheWidgetEmptyAndIsLogged) {
    const Preset good = PresetWith(Wide, ZORVIC_ECALIGN_CENTERED);
    using enum CanvasOrientationEnum;
    const std::tuple<std::uint32_t, CanvasOrientationEnum, std::uint32_t, std::size_t> unshown[] = {
        {5, Single, 1, 1}, {0, Single, 2, 1}, {0, Portrait, 1, 1}, {0, Single, 1, 2}};
    Show(good);
    for (const auto& [index, orientation, outputs, assets] : unshown) {
        Preset bad = good;
        bad.Canvases[0].Index = index;
        bad.Canvases[0].CanvasCfg.Orientation = {orientation, nullptr};
        bad.Canvases[0].CanvasCfg.NumOutputs = outputs;
        bad.Canvases[0].Assets.resize(assets);
        Set(good);
        ASSERT_NE(Pane(), nullptr);
        EXPECT_EQ(Set(bad), assets > 1);
        EXPECT_EQ(Pane(), nullptr);
    }
    EXPECT_TRUE(Logged("Canvas 0 contains multiple assets, unsupported. Bailing out."));
    EXPECT_TRUE(Logged("Improperly sorted canvases, Canvas.Index of 5 does not match the array index of 0!"));
}

TEST_F(SimulatorTest, ArrowsCombineToCornersAndReleaseTheirOpposites) {
    Show(PresetWith(Wide, ZORVIC_ECALIGN_CENTERED));
    for (const auto& [arrow, placement] : {std::pair(Pane()->TopArrow, ZORVIC_ECALIGN_TOPCENTER),
                                           {Pane()->LeftArrow, ZORVIC_ECALIGN_TOPLEFT},
                                           {Pane()->BottomArrow, ZORVIC_ECALIGN_BOTTOMLEFT},
                                           {Pane()->RightArrow, ZORVIC_ECALIGN_BOTTOMRIGHT},
                                           {Pane()->ResetButton, ZORVIC_ECALIGN_CENTERED}}) {
        arrow->click();
        EXPECT_EQ(Coords(), Placed(placement));
    }
    Pane()->SizingBox->setCurrentIndex(2);
    EXPECT_EQ(Coords(), Placed(ZORVIC_ECALIGN_STRETCHED));
    Pane()->TopArrow->click();
    EXPECT_TRUE(Logged("Unknown state for sizing buttons!"));
    EXPECT_EQ(Coords(), Placed(ZORVIC_ECALIGN_STRETCHED));
}

TEST_F(SimulatorTest, LoadingShowsThePlacementAndPlacesNothing) {
    for (const auto& [alignment, states] : GetSizingMaps().AlignmentToButtons) {
        Show(PresetWith(Wide, states.SizerBox == 0 ? ZORVIC_ECALIGN_STRETCHED : ZORVIC_ECALIGN_CENTERED));
        QSignalSpy changed(Widget.get(), &SimulatorWidget::SizingChanged);
        Set(PresetWith(Wide, alignment));
        const auto shown = GetSizingMaps().ButtonsToAlignment.at(Pane()->GetButtonStates());
        EXPECT_EQ(Placed(shown), Placed(alignment));
        if (states.SizerBox == 0) {  // only these differ from each other for this asset
            EXPECT_EQ(Pane()->GetButtonStates(), states);
        }
        EXPECT_EQ(Coords(), Placed(alignment));
        EXPECT_EQ(changed.count(), 0);
    }
}

TEST_F(SimulatorTest, OnlyPressesBesideTheControlsAreClicksOnThePane) {
    Show(PresetWith(Wide, ZORVIC_ECALIGN_TOPCENTER), false);
    QSignalSpy clicked(Pane(), &SimulatorPaneWidget::Clicked);
    ASSERT_FALSE(Pane()->TopArrow->isEnabled());
    Press(Pane()->TopArrow);
    Press(Pane()->ControlsWidget);
    Press(Pane()->LeftArrow);
    EXPECT_EQ(clicked.count(), 0);
    Press(Pane()->ResLabel);
    Press(Pane()->PaneWidget);
    EXPECT_EQ(clicked.count(), 2);
}

TEST_F(SimulatorTest, ARefreshKeepsFocusOpenBoxAndPlacementAndAsksTheUnitNothing) {
    Show(PresetWith(Wide, ZORVIC_ECALIGN_CENTERED));
    const QPointer<SimulatorPaneWidget> pane = Pane();
    pane->TopArrow->click();
    const Preset sentBack = *Widget->GetPreset();
    pane->SizingBox->setFocus();
    pane->SizingBox->showPopup();
    Set(sentBack);
    FakeZorvic::Calls.clear();
    Set(sentBack);
    EXPECT_THAT(FakeZorvic::Calls, IsEmpty());
    ASSERT_EQ(Pane(), pane);
    EXPECT_TRUE(pane->SizingBox->view()->isVisible());
    EXPECT_EQ(pane->GetButtonStates(), SimButtonStates{.Up = true});
    Set(*Widget->GetPreset(), true);
    EXPECT_FALSE(pane->SizingBox->view()->isVisible());
    EXPECT_FALSE(pane->SizingBox->isEnabled());
    EXPECT_TRUE(pane->ResetButton->isEnabled());
}

TEST_F(SimulatorTest, ALookUpIsRepeatedWhenTheAssetChangedAndNotBefore) {
    const std::tuple<const char*, Size2D, SimButtonStates> imported[] = {
        {Wide, {1920, 1080}, {}},              // no longer scaled to fit
        {Gone, {640, 300}, {.SizerBox = 1}}};  // nothing was known of it
    for (const auto& [path, size, states] : imported) {
        Show(PresetWith(path, ZORVIC_ECALIGN_SCALED_CENTERED));
        EXPECT_NE(Pane()->GetButtonStates(), states);
        FakeZorvic::Calls.clear();
        Set(*Widget->GetPreset());
        EXPECT_THAT(FakeZorvic::Calls, IsEmpty()) << path;
        std::erase_if(Unit.Assets, [path = path](const Asset& asset) { return asset.FullPath == path; });
        AddAsset(path, size).Checksum = "two";
        delete Cache.LookupAsset(Unit.Assets.back());  // as the list of assets does
        Set(*Widget->GetPreset());
        EXPECT_EQ(Pane()->GetButtonStates(), states) << path;
    }
}

TEST_F(SimulatorTest, PanesMayBeReplacedFromTheirOwnSignals) {
    const std::vector<std::function<void()>> acts = {
        [this] { Pane()->TopArrow->click(); },
        [this] { Press(Pane()->PaneWidget); },
        [this] { Pane()->SizingBox->setCurrentIndex(2); },
    };
    for (const auto& act : acts) {
        Show(PresetWith(Wide, ZORVIC_ECALIGN_CENTERED), false);
        const QPointer<SimulatorPaneWidget> pane = Pane();
        int replaced = 0;
        const auto replace = [&] {
            Preset other = PresetWith(Full, ZORVIC_ECALIGN_CENTERED);
            other.PK = ++replaced + 100;
            Set(other);
        };
        QObject::connect(Widget.get(), &SimulatorWidget::SizingChanged, Widget.get(), replace);
        QObject::connect(pane, &SimulatorPaneWidget::Clicked, Widget.get(), replace);
        act();
        EXPECT_EQ(replaced, 1);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
        EXPECT_EQ(pane, nullptr);
    }
}

TEST_F(SimulatorTest, PlacingKeepsThePictureAndActsOnlyOnWhatCanBePlaced) {
    Preset preset = PresetWith(Wide, ZORVIC_ECALIGN_CENTERED);
    preset.Canvases[0].Assets[0].Brightness = 0.25F;
    Show(preset);
    Pane()->LeftArrow->click();
    EXPECT_EQ(Shown().Assets.at(0).Brightness, 0.25F);
    for (const char* path : {Gone, Sound}) {  // no metadata, or nothing to place
        Show(PresetWith(path, ZORVIC_ECALIGN_TOPLEFT));
        Pane()->LeftArrow->click();
        EXPECT_EQ(Coords(), Placed(ZORVIC_ECALIGN_TOPLEFT));
    }
    preset.Canvases[0].Assets.clear();
    Show(preset, false);
    QSignalSpy changed(Widget.get(), &SimulatorWidget::SizingChanged);
    Pane()->TopArrow->click();
    Pane()->SizingBox->setCurrentIndex(1);
    Pane()->ClearButton->click();
    EXPECT_EQ(changed.count(), 0);
}

TEST_F(ViewTest, APlacementMadeInTheViewReachesTheUnitAndTheRedrawShowsIt) {
    AddAsset(Wide, {640, 300});
    Preset(1).Canvases = {Canvas(Wide, ZORVIC_ECALIGN_CENTERED)};
    Open();
    const QPointer<SimulatorPaneWidget> pane = View->findChild<SimulatorPaneWidget*>();
    pane->TopArrow->click();
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("UpdatePreset 1"));
    EXPECT_EQ(Preset(1).Canvases[0].Assets.at(0).PinnedCoords, Placed(ZORVIC_ECALIGN_TOPCENTER));
    Pump(ZORVIC_STATE_PRESETS);
    ASSERT_NE(pane, nullptr);
    EXPECT_EQ(pane->GetButtonStates(), SimButtonStates{.Up = true});
}

}  // namespace
