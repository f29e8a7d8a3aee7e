#include "presetbuilder.h"

#include "assetbrowser.h"
#include "fixtures.h"
#include "playerpanelwidget.h"
#include "simulator.h"
#include "support/clippreset.h"

#include <QAbstractItemView>
#include <QSignalSpy>

#include <tuple>

using namespace Zorvic;
using Simulator::SimulatorPaneWidget;

namespace {

class PresetBuilderTest : public AuthoringTest {
protected:
    PresetBuilderTest() {
        for (const auto& [pk, name] : {std::pair(3, "Intro"), std::pair(12, "Storm")}) {
            Preset& preset = Known.emplace_back();
            preset.PK = pk;
            preset.Name = name;
        }
        Builder.UpdateCachedPresets(std::vector(Known));
    }

    void Show() {
        Builder.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&Builder));
    }
    void Open(const Preset& preset) {
        Builder.SetPreset(preset);
        Show();
    }
    SimulatorPaneWidget* Pane(int column) const { return Builder.findChildren<SimulatorPaneWidget*>().at(column); }
    PlayerPanelWidget* Panel(int position) const {
        return qobject_cast<PlayerPanelWidget*>(Builder.PlayerPanelsLayout->itemAt(position)->widget());
    }
    static AssetBrowser* Browser() { return TopLevel<AssetBrowser>(); }
    static void Choose(const char* path) { emit Browser()->ItemsChosen({QString::fromUtf8(path)}); }
    Preset Compile() { return *std::unique_ptr<Preset>(Builder.CompilePreset()); }
    bool HoldsTypedForm() {
        const Preset saved = Compile();
        return std::tie(saved.Name, saved.Notes, saved.Link, saved.Loop, saved.FadeOutMS) ==
               std::tuple("Typed", "Said", 12, 5, 9);
    }

    std::vector<Preset> Known;
    PresetBuilder Builder{"guid", Cache};
};

TEST_F(PresetBuilderTest, EveryOutputThatNoCanvasCoversGetsAnEmptyOneUntilTheSave) {
    Preset preset;
    preset.Canvases = {Canvas(Wide, ZORVIC_ECALIGN_STRETCHED, Canvas(0, {3840, 1080}, 2))};
    Builder.SetPreset(preset);
    EXPECT_EQ(Pane(1)->ResLabel->text(), QStringLiteral("1280x720"));
    EXPECT_EQ(Pane(2)->GetCfg().Canvas->SinkTypes, ZORVIC_SINK_KONA);
    EXPECT_EQ(Compile().Canvases.size(), 1U);

    emit Pane(2)->Clicked(Pane(2));
    Choose(Wide);
    const Preset saved = Compile();
    ASSERT_EQ(saved.Canvases.size(), 2U);
    EXPECT_EQ(saved.Canvases[1].Index, 1U);
    EXPECT_EQ(saved.Canvases[1].CanvasCfg.Dimensions, (Size2D{3840, 2160}));
    EXPECT_EQ(saved.Volume, std::vector<std::uint16_t>(16, 65535));
    EXPECT_EQ(saved.TabDisplayOrder.at(0).Index, 0);
}

TEST_F(PresetBuilderTest, WithoutHardwareStateOutputsAreFullHDAndWithoutSessionNothingChanges) {
    Unit.Fail("GetKonaHardwareState", ZORVIC_STATUS_FAILED);
    Builder.SetPreset(PresetWith(Wide, ZORVIC_ECALIGN_CENTERED));
    EXPECT_TRUE(Logged("Failed to obtain Kona hardware state!"));
    EXPECT_EQ(Pane(3)->ResLabel->text(), QStringLiteral("1920x1080"));
    Disconnect();
    Builder.SetPreset({});
    EXPECT_EQ(Builder.PresetNameBox->text(), QStringLiteral("Act"));
    const PresetBuilder unconnected("unknown", Cache);
    EXPECT_FALSE(unconnected.CreateButton->isEnabled());
}

TEST_F(PresetBuilderTest, APresetOpenedAndSavedUnchangedComesBackAsItWas) {
    Preset preset = FilledPreset();
    preset.Canvases.insert(preset.Canvases.begin(), Canvas(0));  // without an asset: not saved
    preset.Canvases[1].Index = 1;
    preset.Canvases[2].Index = 2;
    Builder.SetPreset(preset);
    const auto carried = [](const Preset& p) {
        return std::tuple(p.PK, p.Name, p.Notes, p.Link, p.Loop, p.FadeInMS, p.FadeOutMS, p.InPosition, p.OutPosition,
                          p.Volume, p.TabDisplayOrder.at(3).Index, p.Gotos.at(3).TimeMS, p.Countdowns.at(3).TimeMS);
    };
    const auto placed = [](const CanvasInfo& canvas) {
        const PinnedAsset& asset = canvas.Assets.at(0);
        return std::tuple(canvas.Index, canvas.CanvasCfg.Dimensions, asset.FullPath, asset.PinnedCoords, asset.Hue);
    };
    const Preset saved = Compile();
    EXPECT_EQ(carried(saved), carried(preset));
    ASSERT_EQ(saved.Canvases.size(), 2U);
    for (const std::size_t i : {0U, 1U})
        EXPECT_EQ(placed(saved.Canvases[i]), placed(FilledPreset().Canvases[i]));
}

TEST_F(PresetBuilderTest, ASaveChangesOnlyWhatTheFormLimits) {
    struct Fields {
        bool Freeze;
        int Loop, FadeOut, Link;
        auto operator<=>(const Fields&) const = default;
    };
    const std::vector<std::pair<Fields, Fields>> cases = {
        {{false, 100, 300, 20}, {false, 99, 99, 20}},
        {{false, -2, -10, 0}, {false, 0, 0, 0}},
        {{false, -1, 0, 0}, {false, -1, 0, 0}},
        {{true, -1, 0, 0}, {true, 0, 0, 0}},
        {{false, -1, 0, 0}, {false, 0, 0, 0}},  // right after a frozen one
        {{true, 5, 9, 3}, {true, 0, 9, 3}}};
    for (const auto& [opened, expected] : cases) {
        Preset preset;
        std::tie(preset.FreezeAtEnd, preset.Loop, preset.FadeOutMS, preset.Link) =
            std::tie(opened.Freeze, opened.Loop, opened.FadeOut, opened.Link);
        Builder.SetPreset(preset);
        const Preset saved = Compile();
        EXPECT_EQ((Fields{saved.FreezeAtEnd, saved.Loop, saved.FadeOutMS, saved.Link}), expected);
    }
}

TEST_F(PresetBuilderTest, LinksStayWithTheirPresetAndTheChoiceSurvivesARefresh) {
    Preset preset = PresetWith(Wide, ZORVIC_ECALIGN_CENTERED);
    preset.Link = 12;
    Builder.SetPreset(preset);
    EXPECT_EQ(Builder.LinkSelect->currentText(), QStringLiteral("12 - Storm"));
    Builder.LinkSelect->setCurrentIndex(0);
    EXPECT_EQ(Compile().Link, 12);  // "None" keeps what the preset has
    Builder.LinkSelect->setCurrentIndex(1);
    Show();
    Builder.LinkSelect->showPopup();
    Builder.UpdateCachedPresets(std::vector(Known));
    EXPECT_TRUE(Builder.LinkSelect->view()->isVisible()) << "an open list stays";
    Known.insert(Known.begin(), Preset());
    Known[1].Name = "Intro renamed";
    Builder.UpdateCachedPresets(std::vector(Known));
    EXPECT_EQ(Builder.LinkSelect->currentText(), QStringLiteral("3 - Intro renamed"));
    EXPECT_EQ(Compile().Link, 3);

    preset.Link = 0;
    Builder.SetPreset(preset);
    EXPECT_EQ(Builder.LinkSelect->currentText(), QStringLiteral("None"));
}

TEST_F(PresetBuilderTest, FreezingAndLoopingForeverExcludeALoopCount) {
    Preset preset;
    preset.Loop = -1;
    Builder.SetPreset(preset);
    EXPECT_TRUE(Builder.LoopForeverCheck->isChecked());
    EXPECT_FALSE(Builder.LoopSpin->isEnabled());
    Builder.FreezeCheck->setChecked(true);
    EXPECT_FALSE(Builder.LoopForeverCheck->isChecked() || Builder.LoopForeverCheck->isEnabled());
    Builder.LoopSpin->setValue(4);
    EXPECT_EQ(Compile().Loop, 0);
    Builder.FreezeCheck->setChecked(false);
    EXPECT_TRUE(Builder.LoopSpin->isEnabled());
    EXPECT_EQ(Compile().Loop, 4);
    Builder.FadeCheck->setChecked(true);
    Builder.FadeSpin->setValue(7);
    Builder.FadeCheck->setChecked(false);
    EXPECT_FALSE(Builder.FadeSpin->isEnabled());
    EXPECT_EQ(Compile().FadeOutMS, 0);
}

TEST_F(PresetBuilderTest, WhatIsTypedSurvivesChoosingPlacingAndRemovingAnAsset) {
    Preset preset;
    preset.Link = 3;
    Open(preset);
    Builder.PresetNameBox->setText(QStringLiteral("Typed"));
    Builder.NotesBox->setText(QStringLiteral("Said"));
    Builder.LinkSelect->setCurrentIndex(2);
    Builder.LoopSpin->setValue(5);
    Builder.FadeCheck->setChecked(true);
    Builder.FadeSpin->setValue(9);
    QTest::mouseClick(Pane(1)->PaneWidget, Qt::LeftButton);
    ASSERT_TRUE(Browser()->isVisible());
    Known.insert(Known.begin(), Preset());
    Builder.UpdateCachedPresets(std::vector(Known));
    Choose(Wide);
    EXPECT_FALSE(Browser()->isVisible());
    EXPECT_EQ(Compile().Canvases.at(0).Assets.at(0).PinnedCoords, Placed(ZORVIC_ECALIGN_SCALED_CENTERED));
    EXPECT_EQ(Pane(1)->toolTip(), QString::fromUtf8(Wide));
    EXPECT_TRUE(HoldsTypedForm());
    Pane(1)->TopArrow->click();
    EXPECT_TRUE(HoldsTypedForm());
    QTest::mouseClick(Pane(1)->PaneWidget, Qt::LeftButton);
    EXPECT_TRUE(Compile().Canvases.empty());
    EXPECT_EQ(Pane(1)->GetButtonStates(), Simulator::SimButtonStates{});
    EXPECT_TRUE(HoldsTypedForm());
    Builder.LinkSelect->setCurrentIndex(0);
    EXPECT_EQ(Compile().Link, 3);  // a choice that was taken back leaves no trace
}

TEST_F(PresetBuilderTest, AChoiceNeverLandsInAnotherPresetOrAClosedBuilder) {
    Open({});
    emit Pane(0)->Clicked(Pane(0));
    emit Browser()->ItemsChosen({});
    Choose(Gone);
    EXPECT_TRUE(Logged("Unable to get asset metadata for asset " + std::string(Gone)));
    EXPECT_TRUE(Compile().Canvases.empty());
    EXPECT_TRUE(Browser()->isVisible());
    Builder.SetPreset(PresetWith(Full, ZORVIC_ECALIGN_CENTERED));
    EXPECT_FALSE(Browser()->isVisible());
    Choose(Wide);
    EXPECT_EQ(Compile().Canvases.at(0).Assets.at(0).FullPath, Full);

    emit Pane(1)->Clicked(Pane(1));
    QTest::mouseClick(Builder.CloseButton, Qt::LeftButton);
    EXPECT_FALSE(Browser()->isVisible());
    Choose(Wide);
    EXPECT_EQ(Compile().Canvases.size(), 1U);
}

TEST_F(PresetBuilderTest, TheKeyboardStartsInTheNameAndFollowsTheWindowDownwards) {
    Open(PresetWith(Wide, ZORVIC_ECALIGN_CENTERED));
    EXPECT_EQ(Builder.focusWidget(), Builder.PresetNameBox);
    for (const auto& [from, to] : {std::pair<QWidget*, QWidget*>(Builder.TabBox, Pane(0)->LeftArrow),
                                   {Pane(0)->ClearButton, Pane(1)->LeftArrow},
                                   {Pane(3)->ClearButton, Builder.LoopForeverCheck},
                                   {Builder.CreateButton, Builder.CloseButton}}) {
        from->setFocus();
        QTest::keyClick(from, Qt::Key_Tab);
        EXPECT_EQ(Builder.focusWidget(), to) << from->objectName().toStdString();
    }
}

TEST_F(PresetBuilderTest, KeysSaveAndCloseAfterHidingAndNotWhileHeldDown) {
    Open({});
    EXPECT_FALSE(Builder.CreateButton->isEnabled());
    std::vector<std::string> heard;
    const auto hear = [&](const char* what) { heard.emplace_back(Builder.isVisible() ? "visible" : what); };
    QObject::connect(&Builder, &PresetBuilder::CreateClicked, &Builder, [&] { hear("create"); });
    QObject::connect(&Builder, &PresetBuilder::CloseClicked, &Builder, [&] { hear("close"); });
    QTest::keyClick(Builder.LoopSpin, Qt::Key_Return);  // also without a name, and from a number box
    Show();
    QTest::keyClick(Builder.PresetNameBox, Qt::Key_Escape);
    EXPECT_THAT(heard, testing::ElementsAre("create", "close"));

    Show();
    QTest::simulateEvent(&Builder, true, Qt::Key_Return, Qt::NoModifier, QString(), true);  // repeated
    EXPECT_EQ(heard.size(), 2U);
    emit Pane(0)->Clicked(Pane(0));
    ASSERT_TRUE(QTest::qWaitForWindowActive(Browser()));
    QTest::keyClick(Browser(), Qt::Key_Escape);
    EXPECT_TRUE(Builder.isVisible());
    EXPECT_EQ(heard.size(), 2U);
}

TEST_F(PresetBuilderTest, PlayerPanelsTellWhatEachOutputPlays) {
    AssetMetadata& metadata = Unit.Metadata[Wide];
    metadata.FilePath = "C:\\a&b.mov";
    metadata.Duration = 3661500;
    std::tie(metadata.AChannels, metadata.ASampleRate) = std::tuple(2, 48000);
    std::tie(metadata.VideoFormat, metadata.AudioFormat) = std::tuple("prores", "pcm");
    Preset preset;
    preset.Canvases = {Canvas(Wide, ZORVIC_ECALIGN_CENTERED, Canvas(0, {3840, 1080}, 2)),
                       Canvas(Full, ZORVIC_ECALIGN_CENTERED, Canvas(1)),
                       Canvas(Gone, ZORVIC_ECALIGN_CENTERED, Canvas(2)), Canvas(3)};  // beyond the last player
    Builder.SetPreset(preset);
    ASSERT_EQ(Builder.PlayerPanelsLayout->count(), 4);
    EXPECT_EQ(Panel(0)->AssetInfoLabel->text(),
              QStringLiteral("<i>C:\\a&amp;b.mov</i><br/><br/><b>TRT:</b> 01:01:01<br/><b>Audio Channels:</b> 2<br/>"
                             "<b>Audio Sample Rate:</b> 48000<br/><b>Resolution:</b> 640x300<br/><b>Codec:</b> "
                             "prores<b>/</b>pcm"));
    EXPECT_FALSE(Panel(1)->isEnabled());
    EXPECT_EQ(Panel(1)->PlayerLabel->text(), QStringLiteral("Player 2"));
    EXPECT_TRUE(Panel(2)->AssetInfoLabel->text().endsWith(QStringLiteral("1920x1080<br/><b>Codec:</b> ")));
    EXPECT_FALSE(Panel(3)->isEnabled());
    EXPECT_EQ(Panel(3)->AssetInfoLabel->text(), QString());
    EXPECT_EQ(Compile().Canvases.at(2).Assets.at(0).FullPath, Gone);  // an asset that is gone does not get lost
    Pane(0)->ClearButton->click();
    EXPECT_FALSE(Panel(0)->isEnabled());
}

// Neither the key that picks nor the one that gives up goes on to the window.
TEST_F(ViewTest, KeysInAnOpenListStayThereInEveryWindow) {
    Unit.Drives.emplace_back().Mountpoint = "C";
    Open();
    View->ActivePlayerSel->addItems({QStringLiteral("Player 1"), QStringLiteral("Player 2")});
    Click("AddPresetButton");
    Click("AssetImportButton");
    const auto& builder = *TopLevel<PresetBuilder>();
    const auto& browser = *TopLevel<AssetBrowser>();
    const QSignalSpy chosen(&browser, &AssetBrowser::ItemsChosen);
    for (QComboBox* const box : {View->ActivePlayerSel, builder.LinkSelect,
                                 builder.findChild<SimulatorPaneWidget*>()->SizingBox, browser.DriveChoice}) {
        for (const auto key : {Qt::Key_Return, Qt::Key_Escape}) {
            box->window()->show();
            QApplication::setActiveWindow(box->window());
            box->showPopup();
            QTest::keyClick(box->view(), key);
            EXPECT_FALSE(box->view()->isVisible());
            EXPECT_TRUE(box->window()->isVisible()) << box->objectName().toStdString();
        }
    }
    EXPECT_EQ(chosen.size(), 0);
    EXPECT_THAT(FakeZorvic::Commands(), testing::IsEmpty());
}

class BuilderInViewTest : public ViewTest {
protected:
    const PresetBuilder& Builder = (Open(), *TopLevel<PresetBuilder>());
    std::string Name() const { return Builder.PresetNameBox->text().toStdString(); }
    void Save() const { QTest::mouseClick(Builder.CreateButton, Qt::LeftButton); }
};

TEST_F(BuilderInViewTest, WhatNoUnitCouldHearStaysInTheFormAndWhatOneRefusedDoesNot) {
    Click("AddPresetButton");
    Builder.PresetNameBox->setText(QStringLiteral("New"));
    Disconnect();
    Save();
    EXPECT_FALSE(Builder.isVisible());
    EXPECT_EQ(Name(), "New");
    Reconnect();
    Unit.Fail("CreatePreset", ZORVIC_STATUS_FAILED);
    testing::internal::CaptureStderr();
    Save();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("Failed to create preset with Name New\n"));
    EXPECT_EQ(Name(), "");
}

TEST_F(BuilderInViewTest, NothingOfAnEditStaysForThePresetMadeNext) {
    SelectRows({});
    Click("EditPresetButton");
    EXPECT_FALSE(Builder.isVisible());
    for (auto* const done : {Builder.CloseButton, View->AddPresetButton}) {
        SelectRows({2});
        Click("EditPresetButton");
        EXPECT_EQ(Name(), "Break");
        QTest::mouseClick(done, Qt::LeftButton);
        EXPECT_FALSE(Builder.isVisible());
        Click("AddPresetButton");
        EXPECT_EQ(Name(), "");
        Builder.PresetNameBox->setText(QStringLiteral("New"));
        Save();
        EXPECT_EQ(FakeZorvic::LastCall("CreatePreset").PK, 0);
    }
}

}  // namespace
