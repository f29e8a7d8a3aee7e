#include "presetbuilder.h"

#include "assetbrowser.h"
#include "authoringunit.h"
#include "playerpanelwidget.h"
#include "simulator.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QSignalSpy>
#include <QTest>

#include <random>

using namespace Zorvic;
using Simulator::SimulatorPaneWidget;

namespace {

class PresetBuilderTest : public AuthoringTest {
protected:
    PresetBuilderTest() {
        for (const auto& [pk, name] : {std::pair(3, "Intro"), std::pair(12, "Storm")}) {
            Preset preset;
            preset.PK = pk;
            preset.Name = name;
            Known.push_back(preset);
        }
        Builder.UpdateCachedPresets(std::vector(Known));
    }

    void Open(const Preset& preset) {
        Builder.SetPreset(preset);
        Builder.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&Builder));
    }
    SimulatorPaneWidget* Pane(int column) const { return Builder.findChildren<SimulatorPaneWidget*>().at(column); }
    PlayerPanelWidget* Panel(int position) const {
        return qobject_cast<PlayerPanelWidget*>(Builder.PlayerPanelsLayout->itemAt(position)->widget());
    }
    static AssetBrowser* Browser() {
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            if (auto* const browser = qobject_cast<AssetBrowser*>(window)) return browser;
        }
        return nullptr;
    }
    static void Choose(const char* path) { emit Browser()->ItemsChosen({QString::fromUtf8(path)}); }
    Preset Compile() { return *std::unique_ptr<Preset>(Builder.CompilePreset()); }
    Preset OpenAndSave(const Preset& preset) {
        Builder.SetPreset({});
        Builder.SetPreset(preset);
        return Compile();
    }
    void TypeForm() const {
        Builder.PresetNameBox->setText(QStringLiteral("Typed"));
        Builder.NotesBox->setText(QStringLiteral("Said"));
        Builder.LinkSelect->setCurrentIndex(2);
        Builder.LoopSpin->setValue(5);
        Builder.FadeCheck->setChecked(true);
        Builder.FadeSpin->setValue(9);
    }
    void ExpectTypedForm() {
        const Preset saved = Compile();
        EXPECT_EQ(saved.Name, "Typed");
        EXPECT_EQ(saved.Notes, "Said");
        EXPECT_EQ(saved.Link, 12);
        EXPECT_EQ(saved.Loop, 5);
        EXPECT_EQ(saved.FadeOutMS, 9);
    }

    std::vector<Preset> Known;
    PresetBuilder Builder{"GUID", Cache};
};

TEST_F(PresetBuilderTest, EveryOutputThatNoCanvasCoversGetsAnEmptyOneUntilTheSave) {
    Preset preset = PresetWith(Wide, ZORVIC_ECALIGN_CENTERED);
    preset.Canvases = {Canvas(0, {3840, 1080}, 2)};
    AttachAssetToCanvas(ZORVIC_ECALIGN_STRETCHED, Wide, {640, 300}, preset.Canvases[0]);
    Builder.SetPreset(preset);
    EXPECT_EQ(Pane(1)->ResLabel->text(), QStringLiteral("1280x720"));
    EXPECT_EQ(Pane(2)->ResLabel->text(), QStringLiteral("3840x2160"));
    EXPECT_EQ(Pane(2)->OutputsLabel->text(), QStringLiteral("Output 4"));
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
    Registry.DeleteSessionByGUID("GUID");
    Builder.SetPreset({});
    EXPECT_EQ(Builder.PresetNameBox->text(), QStringLiteral("Act"));
    const PresetBuilder unconnected("unknown", Cache);
    EXPECT_FALSE(unconnected.CreateButton->isEnabled());
}

class Generator {
public:
    explicit Generator(unsigned seed) : Random(seed) {}

    Preset Make() {
        Preset preset;
        preset.PK = Number(1, 100000);
        preset.Name = Text(64);
        preset.Notes = Text(60000);
        preset.Color = Text(16);
        preset.Link = Number(-1, 20);
        preset.Loop = Number(-1, 120);
        preset.FreezeAtEnd = Number(0, 3) == 0;
        for (std::int32_t* const time : {&preset.DissolveInMS, &preset.DissolveOutMS, &preset.FadeInMS,
                                         &preset.InPosition, &preset.OutPosition, &preset.Dissolve})
            *time = Number(-1000, 1000000);
        preset.FadeOutMS = Number(-10, 300);
        preset.Volume.resize(static_cast<std::size_t>(Number(1, 32)), static_cast<std::uint16_t>(Number(0, 65535)));
        for (int tab = Number(0, 2); tab < 3; ++tab)
            preset.TabDisplayOrder[tab] = TabOrdering(tab, Number(0, 500));
        for (int id = Number(0, 9); id < 9; ++id) {
            preset.Gotos[id].ID = preset.Countdowns[id].ID = id;
            preset.Gotos[id].TimeMS = Number(0, 100000);
            preset.Countdowns[id].Name = Text(20);
        }
        for (int i = Number(0, 16); i < 16; ++i)
            preset.Canvases.push_back(MakeCanvas());
        for (std::size_t i = 0; i < preset.Canvases.size(); ++i)
            preset.Canvases[i].Index = static_cast<std::uint32_t>(i);
        return preset;
    }

private:
    int Number(int low, int high) { return std::uniform_int_distribution(low, high)(Random); }
    std::string Text(int longest) {
        static const std::vector<std::string> Pieces = {"a", "B", " ", "\n", "\t", "&", "<b>", "é", "→", "12 - ", "\""};
        std::string text;
        while (Number(0, 9) > 0 && static_cast<int>(text.size()) < longest)
            text += Pieces[static_cast<std::size_t>(Number(0, static_cast<int>(Pieces.size()) - 1))];
        return Number(0, 9) == 0 ? text + std::string(static_cast<std::size_t>(longest), 'x') : text;
    }
    CanvasInfo MakeCanvas() {
        CanvasInfo canvas;
        canvas.CanvasCfg.Orientation.Orientation = static_cast<CanvasOrientationEnum>(Number(0, 5));
        canvas.CanvasCfg.Orientation.CustomCoords = {Number(0, 9), Number(0, 9)};
        canvas.CanvasCfg.Dimensions = {Number(0, 8000), Number(0, 8000)};
        canvas.CanvasCfg.NumOutputs = static_cast<std::uint32_t>(Number(0, 4));
        canvas.SinkTypes = static_cast<SinkType>(Number(0, 8));
        canvas.Assets.resize(static_cast<std::size_t>(Number(0, 2)));
        for (PinnedAsset& asset : canvas.Assets) {
            asset.FullPath = "C:\\Assets\\" + Text(20);
            asset.PinnedCoords.Width = Number(1, 5000);
            asset.PinnedCoords.X = Number(-500, 500);
            asset.Hue = static_cast<float>(Number(-100, 100)) / 100.0F;
        }
        return canvas;
    }

    std::mt19937 Random;
};

/// Everything that the form carries over, as comparable text.
std::string Carried(const Preset& preset) {
    std::ostringstream text;
    text << preset.PK << '|' << preset.Name << '|' << preset.Notes << '|' << preset.Color << '|'
         << std::max(preset.Link, 0);
    for (const auto value : {preset.DissolveInMS, preset.DissolveOutMS, preset.FadeInMS, preset.InPosition,
                             preset.OutPosition, preset.Dissolve, std::int32_t{preset.FreezeAtEnd}})
        text << '|' << value;
    for (const auto volume : preset.Volume)
        text << " v" << volume;
    for (const auto& [tab, order] : preset.TabDisplayOrder)
        text << " t" << tab << ':' << order.TabID << order.Index;
    for (const auto* marks : {&preset.Gotos, &preset.Countdowns}) {
        for (const auto& [id, mark] : std::map(marks->begin(), marks->end()))
            text << " m" << id << ':' << mark.ID << ':' << mark.TimeMS << mark.Name;
    }
    for (const CanvasInfo& canvas : preset.Canvases) {
        if (canvas.Assets.empty()) continue;
        const auto& cfg = canvas.CanvasCfg;
        text << "\nc" << cfg.Dimensions.Width << 'x' << cfg.Dimensions.Height << ' ' << cfg.NumOutputs << ' '
             << static_cast<int>(cfg.Orientation.Orientation) << cfg.Orientation.CustomCoords.X << canvas.SinkTypes;
        for (const PinnedAsset& asset : canvas.Assets)
            text << " a" << asset.FullPath << asset.PinnedCoords.Width << ',' << asset.PinnedCoords.X << asset.Hue;
    }
    return text.str();
}

TEST_F(PresetBuilderTest, APresetOpenedAndSavedUnchangedComesBackAsItWas) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(seed);
        const Preset preset = Generator(seed).Make();
        const Preset saved = OpenAndSave(preset);
        EXPECT_EQ(Carried(saved), Carried(preset));
        for (std::size_t i = 0; i < saved.Canvases.size(); ++i)
            EXPECT_EQ(saved.Canvases[i].Index, i);
        // What the form limits: its boxes hold 0 to 99, and a frozen preset does not loop.
        EXPECT_EQ(saved.FadeOutMS, std::clamp(preset.FadeOutMS, 0, 99));
        const int loop = preset.Loop == -1 ? -1 : std::clamp(preset.Loop, 0, 99);
        EXPECT_EQ(saved.Loop, preset.FreezeAtEnd ? 0 : loop);
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
    Known.insert(Known.begin(), Preset());
    Known[1].Name = "Intro renamed";
    Builder.UpdateCachedPresets(std::vector(Known));
    EXPECT_EQ(Builder.LinkSelect->currentText(), QStringLiteral("3 - Intro renamed"));
    EXPECT_EQ(Compile().Link, 3);

    preset.Link = 0;
    Builder.SetPreset(preset);
    EXPECT_EQ(Builder.LinkSelect->currentText(), QStringLiteral("None"));
    Builder.LinkSelect->setCurrentIndex(2);
    Known.clear();
    Builder.UpdateCachedPresets({});
    EXPECT_EQ(Builder.LinkSelect->currentText(), QStringLiteral("None"));
}

TEST_F(PresetBuilderTest, AnOpenListStaysThroughARefreshAndKeepsItsKeys) {
    Open({});
    Builder.LinkSelect->showPopup();
    Builder.LinkSelect->view()->setCurrentIndex(Builder.LinkSelect->model()->index(2, 0));
    Builder.UpdateCachedPresets(std::vector(Known));
    EXPECT_TRUE(Builder.LinkSelect->view()->isVisible());
    // Neither the key that picks nor the one that gives up goes on to the window.
    QTest::keyClick(Builder.LinkSelect->view(), Qt::Key_Return);
    EXPECT_EQ(Builder.LinkSelect->currentText(), QStringLiteral("12 - Storm"));
    EXPECT_TRUE(Builder.isVisible());
    Builder.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&Builder));
    Pane(0)->SizingBox->showPopup();
    QTest::keyClick(Pane(0)->SizingBox->view(), Qt::Key_Return);
    EXPECT_FALSE(Pane(0)->SizingBox->view()->isVisible());
    EXPECT_TRUE(Builder.isVisible());
}

TEST_F(PresetBuilderTest, FreezingAndLoopingForeverExcludeALoopCount) {
    Preset preset = PresetWith(Wide, ZORVIC_ECALIGN_CENTERED);
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

    EXPECT_FALSE(Builder.FadeSpin->isEnabled());
    Builder.FadeCheck->setChecked(true);
    Builder.FadeSpin->setValue(7);
    EXPECT_EQ(Compile().FadeOutMS, 7);
    Builder.FadeCheck->setChecked(false);
    EXPECT_EQ(Builder.FadeSpin->value(), 0);
}

TEST_F(PresetBuilderTest, WhatIsTypedSurvivesChoosingPlacingAndRemovingAnAsset) {
    Preset preset;
    preset.Link = 3;
    Open(preset);
    TypeForm();
    QTest::mouseClick(Pane(1)->PaneWidget, Qt::LeftButton);
    ASSERT_TRUE(Browser()->isVisible());
    Choose(Wide);
    EXPECT_FALSE(Browser()->isVisible());
    EXPECT_EQ(Compile().Canvases.at(0).Assets.at(0).PinnedCoords, Placed(ZORVIC_ECALIGN_SCALED_CENTERED));
    EXPECT_EQ(Pane(1)->toolTip(), QString::fromUtf8(Wide));
    ExpectTypedForm();
    Pane(1)->TopArrow->click();
    ExpectTypedForm();
    QTest::mouseClick(Pane(1)->PaneWidget, Qt::LeftButton);
    EXPECT_TRUE(Compile().Canvases.empty());
    EXPECT_EQ(Pane(1)->GetButtonStates(), Simulator::SimButtonStates{});
    ExpectTypedForm();
    Builder.LinkSelect->setCurrentIndex(0);
    EXPECT_EQ(Compile().Link, 3);  // a choice that was taken back leaves no trace
}

TEST_F(PresetBuilderTest, AnAssetWithoutMetadataIsNotPlacedAndAnEmptyChoiceIsNone) {
    Builder.SetPreset({});
    emit Pane(0)->Clicked(Pane(0));
    emit Browser()->ItemsChosen({});
    Choose(Gone);
    EXPECT_TRUE(Logged("Unable to get asset metadata for asset " + std::string(Gone)));
    EXPECT_TRUE(Compile().Canvases.empty());
    EXPECT_TRUE(Browser()->isVisible());
}

TEST_F(PresetBuilderTest, AChoiceNeverLandsInAnotherPresetOrAClosedBuilder) {
    Open({});
    emit Pane(0)->Clicked(Pane(0));
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

TEST_F(PresetBuilderTest, APresetMayBeLoadedWhileAPaneDeliversItsOwnSignal) {
    Open(PresetWith(Wide, ZORVIC_ECALIGN_CENTERED));
    const auto load = [this] { Builder.SetPreset(PresetWith(Full, ZORVIC_ECALIGN_CENTERED)); };
    QObject::connect(Pane(0), &SimulatorPaneWidget::SizingChanged, &Builder, load);
    QTest::mouseClick(Pane(0)->LeftArrow, Qt::LeftButton);
    QObject::connect(Pane(0), &SimulatorPaneWidget::Clicked, &Builder, load);
    QTest::mouseClick(Pane(0)->PaneWidget, Qt::LeftButton);
    QObject::connect(Browser(), &AssetBrowser::ItemsChosen, &Builder, load);
    emit Pane(1)->Clicked(Pane(1));
    Choose(Wide);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    EXPECT_EQ(Pane(0)->toolTip(), QString::fromUtf8(Full));
}

TEST_F(PresetBuilderTest, KeysSaveAndCloseAfterHidingAndNotWhileHeldDown) {
    Open({});
    EXPECT_FALSE(Builder.CreateButton->isEnabled());
    std::vector<std::string> heard;
    const auto hear = [&](const char* what) { heard.emplace_back(Builder.isVisible() ? "visible" : what); };
    QObject::connect(&Builder, &PresetBuilder::CreateClicked, &Builder, [&] { hear("create"); });
    QObject::connect(&Builder, &PresetBuilder::CloseClicked, &Builder, [&] { hear("close"); });
    QTest::keyClick(Builder.LoopSpin, Qt::Key_Return);  // also without a name, and from a number box
    Builder.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&Builder));
    QTest::keyClick(Builder.PresetNameBox, Qt::Key_Escape);
    EXPECT_THAT(heard, testing::ElementsAre("create", "close"));

    Builder.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&Builder));
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
    metadata.AChannels = 2;
    metadata.ASampleRate = 48000;
    metadata.VideoFormat = "prores";
    metadata.AudioFormat = "pcm";
    Preset preset = PresetWith(Wide, ZORVIC_ECALIGN_CENTERED);
    preset.Canvases[0] = Canvas(0, {3840, 1080}, 2);
    AttachAssetToCanvas(ZORVIC_ECALIGN_CENTERED, Wide, {640, 300}, preset.Canvases[0]);
    preset.Canvases.push_back(Canvas(1));
    AttachAssetToCanvas(ZORVIC_ECALIGN_CENTERED, Full, {1920, 1080}, preset.Canvases[1]);
    preset.Canvases.push_back(Canvas(2));
    AttachAssetToCanvas(ZORVIC_ECALIGN_CENTERED, Gone, {1920, 1080}, preset.Canvases[2]);
    preset.Canvases.push_back(Canvas(3));  // beyond the last player
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

}  // namespace
