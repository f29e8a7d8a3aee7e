#include "presetbuilder.h"

#include "assetbrowser.h"
#include "authoringunit.h"
#include "playerpanelwidget.h"
#include "simulator.h"
#include "viewfixture.h"

#include <QAbstractItemView>
#include <QSignalSpy>
#include <QTest>

#include <array>
#include <random>
#include <sstream>
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

    void Open(const Preset& preset) {
        Builder.SetPreset(preset);
        Builder.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&Builder));
    }
    SimulatorPaneWidget* Pane(int column) const { return Builder.findChildren<SimulatorPaneWidget*>().at(column); }
    PlayerPanelWidget* Panel(int position) const {
        return qobject_cast<PlayerPanelWidget*>(Builder.PlayerPanelsLayout->itemAt(position)->widget());
    }
    static AssetBrowser* Browser() { return TopLevel<AssetBrowser>(); }
    static void Choose(const char* path) { emit Browser()->ItemsChosen({QString::fromUtf8(path)}); }
    Preset Compile() { return *std::unique_ptr<Preset>(Builder.CompilePreset()); }
    void ExpectTypedForm() {
        const Preset saved = Compile();
        EXPECT_EQ(std::tie(saved.Name, saved.Notes), std::tuple("Typed", "Said"));
        EXPECT_EQ(std::tie(saved.Link, saved.Loop, saved.FadeOutMS), std::tuple(12, 5, 9));
    }

    std::vector<Preset> Known;
    PresetBuilder Builder{"GUID", Cache};
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
    Registry.DeleteSessionByGUID("GUID");
    Builder.SetPreset({});
    EXPECT_EQ(Builder.PresetNameBox->text(), QStringLiteral("Act"));
    const PresetBuilder unconnected("unknown", Cache);
    EXPECT_FALSE(unconnected.CreateButton->isEnabled());
}

/// Presets as a unit may hold them.
class Generator {
public:
    Preset Make() {
        Preset preset;
        preset.PK = Number(1, 100000);
        preset.Name = Text(200);
        preset.Notes = Text(60000);
        preset.Link = Number(-1, 20);
        preset.Loop = Number(-1, Number(0, 120));
        preset.FreezeAtEnd = Number(0, 3) == 0;
        for (auto* time : {&preset.FadeInMS, &preset.FadeOutMS, &preset.InPosition, &preset.OutPosition})
            *time = Number(-10, 300);
        preset.Volume.resize(static_cast<std::size_t>(Number(1, 32)), static_cast<std::uint16_t>(Number(0, 65535)));
        for (int id = Number(0, 2); id < 3; ++id) {
            preset.TabDisplayOrder[id] = TabOrdering(id, Number(0, 500));
            preset.Gotos[id].TimeMS = preset.Countdowns[id].ID = Number(0, 100000);
        }
        for (std::uint32_t i = 0; Number(0, 9) > 0; ++i) {
            preset.Canvases.push_back(Canvas(i, {Number(0, 8000), 1}, static_cast<std::uint32_t>(Number(0, 4))));
            preset.Canvases.back().Assets.resize(static_cast<std::size_t>(Number(0, 2)));
            for (PinnedAsset& asset : preset.Canvases.back().Assets) {
                asset.FullPath = Text(200);
                asset.PinnedCoords.X = Number(-500, 500);
                asset.Hue = static_cast<float>(Number(-100, 100)) / 100.0F;
            }
        }
        return preset;
    }

private:
    int Number(int low, int high) { return std::uniform_int_distribution(low, high)(Random); }
    std::string Text(std::size_t most) {
        std::string text(Number(0, 9) == 0 ? most : 0, 'x');
        while (Number(0, 9) > 0)
            text += std::array{"a", " ", "\n", "\t", "&", "<b>", "é", "→", "12 - ", "\""}.at(
                static_cast<std::size_t>(Number(0, 9)));
        return text;
    }

    std::mt19937 Random{1};
};

/// Everything that a save carries over, as comparable text.
std::string Carried(const Preset& preset) {
    std::ostringstream text;
    text << preset.Name << '|' << preset.Notes;
    for (const auto value : {preset.PK, std::max(preset.Link, 0), std::int32_t{preset.FreezeAtEnd}, preset.FadeInMS,
                             preset.InPosition, preset.OutPosition})
        text << '|' << value;
    for (const auto volume : preset.Volume)
        text << " v" << volume;
    for (const auto& [tab, order] : preset.TabDisplayOrder)
        text << " t" << tab << ',' << order.Index << ',' << preset.Gotos.at(tab).TimeMS << ','
             << preset.Countdowns.at(tab).ID;
    for (const CanvasInfo& canvas : preset.Canvases) {
        if (!canvas.Assets.empty())
            text << "\nc" << canvas.CanvasCfg.Dimensions.Width << ' ' << canvas.CanvasCfg.NumOutputs;
        for (const PinnedAsset& asset : canvas.Assets)
            text << " a" << asset.FullPath << asset.PinnedCoords.X << ',' << asset.Hue;
    }
    return text.str();
}

TEST_F(PresetBuilderTest, APresetOpenedAndSavedUnchangedComesBackAsItWas) {
    Generator generator;
    bool afterFrozen = false;
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        const Preset preset = generator.Make();
        Builder.SetPreset(preset);
        const Preset saved = Compile();
        EXPECT_EQ(Carried(saved), Carried(preset));
        for (std::size_t i = 0; i < saved.Canvases.size(); ++i)
            EXPECT_EQ(saved.Canvases[i].Index, i);
        // What the form limits: its boxes hold 0 to 99, a frozen preset does not loop, and one that is opened right
        // after a frozen one does not loop forever.
        EXPECT_EQ(saved.FadeOutMS, std::clamp(preset.FadeOutMS, 0, 99));
        const int loop = std::clamp(preset.Loop, preset.Loop == -1 && !afterFrozen ? -1 : 0, 99);
        EXPECT_EQ(saved.Loop, preset.FreezeAtEnd ? 0 : loop);
        afterFrozen = preset.FreezeAtEnd;
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
}

TEST_F(PresetBuilderTest, AnOpenListStaysThroughARefreshAndKeepsItsKeys) {
    Open({});
    Builder.LinkSelect->showPopup();
    Builder.UpdateCachedPresets(std::vector(Known));
    EXPECT_TRUE(Builder.LinkSelect->view()->isVisible());
    // Neither the key that picks nor the one that gives up goes on to the window.
    for (QComboBox* const box : {Builder.LinkSelect, Pane(0)->SizingBox}) {
        Builder.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&Builder));
        box->showPopup();
        QTest::keyClick(box->view(), Qt::Key_Return);
        EXPECT_FALSE(box->view()->isVisible());
        EXPECT_TRUE(Builder.isVisible());
    }
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

    Builder.FadeCheck->setChecked(true);
    Builder.FadeSpin->setValue(7);
    Builder.FadeCheck->setChecked(false);
    EXPECT_FALSE(Builder.FadeSpin->isEnabled());
    EXPECT_EQ(Builder.FadeSpin->value(), 0);
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

class BuilderInViewTest : public ViewTest {
protected:
    BuilderInViewTest() { Open(); }
    static PresetBuilder& Builder() { return *TopLevel<PresetBuilder>(); }
    void Save() const { QTest::mouseClick(Builder().CreateButton, Qt::LeftButton); }
};

TEST_F(BuilderInViewTest, WhatNoUnitCouldHearStaysInTheFormAndWhatOneRefusedDoesNot) {
    Click("AddPresetButton");
    Builder().PresetNameBox->setText(QStringLiteral("New"));
    Handle.reset();
    Sessions.DeleteSessionByGUID("guid");
    Save();
    EXPECT_FALSE(Builder().isVisible());
    EXPECT_EQ(Builder().PresetNameBox->text(), QStringLiteral("New"));

    Handle.reset(Sessions.CreateSessionByIP("host"));
    Unit.Fail("CreatePreset", ZORVIC_STATUS_FAILED);
    testing::internal::CaptureStderr();
    Save();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("Failed to create preset with Name New\n"));
    EXPECT_EQ(Builder().PresetNameBox->text(), QString());
}

TEST_F(BuilderInViewTest, NothingOfAnEditStaysForThePresetMadeNext) {
    SelectRows({});
    Click("EditPresetButton");
    EXPECT_FALSE(Builder().isVisible());
    for (const char* done : {"CloseButton", "AddPresetButton"}) {
        SelectRows({2});
        Click("EditPresetButton");
        EXPECT_EQ(Builder().PresetNameBox->text(), QStringLiteral("Break"));
        auto* const button = Builder().findChild<QPushButton*>(QString::fromLatin1(done));
        QTest::mouseClick(button ? button : View->AddPresetButton, Qt::LeftButton);
        EXPECT_FALSE(Builder().isVisible());
        EXPECT_EQ(std::unique_ptr<Zorvic::Preset>(Builder().CompilePreset())->PK, 0);
    }
}

}  // namespace
