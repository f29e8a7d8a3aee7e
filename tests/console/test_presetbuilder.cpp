#include "presetbuilder.h"

#include "assetbrowser.h"
#include "fixtures.h"
#include "simulator.h"

#include <QAbstractItemView>
#include <QScreen>
#include <QSignalSpy>

#include <tuple>

using namespace Zorvic;
using Simulator::SimulatorPaneWidget;

namespace {

class PresetBuilderTest : public AuthoringTest {
protected:
    PresetBuilderTest() {
        for (const auto& [pk, name] : {std::pair(3, "Intro"), std::pair(12, "Storm")}) {
            Known.emplace_back().PK = pk;
            Known.back().Name = name;
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
    static AssetBrowser* Browser() { return TopLevel<AssetBrowser>(); }
    static void Choose(const char* path) { emit Browser()->ItemsChosen({QString::fromUtf8(path)}); }
    void Put(const char* path, int column) const {
        emit Pane(column)->Clicked(Pane(column));
        Choose(path);
    }
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

    Put(Wide, 2);
    EXPECT_EQ(Pane(2)->NoteLabel->text(), QStringLiteral("Saving moves this to Output 3"));
    const Preset saved = Compile();
    ASSERT_EQ(saved.Canvases.size(), 2U);
    EXPECT_EQ(saved.Canvases[1].Index, 1U);
    EXPECT_EQ(saved.Canvases[1].CanvasCfg.Dimensions, (Size2D{3840, 2160}));
    EXPECT_EQ(saved.Volume, std::vector<std::uint16_t>(16, 65535));
}

TEST_F(PresetBuilderTest, ItFitsAScreenThatHasNoRoomForThePanelsOfAllOutputs) {
    Open(PresetWith(Wide, ZORVIC_ECALIGN_CENTERED));
    const QSize screen = Builder.screen()->availableSize();
    ASSERT_LT(screen.width(), Builder.PanelsContents->sizeHint().width()) << "the screen is large enough";
    EXPECT_EQ(Builder.size().boundedTo(screen), Builder.size());
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

TEST_F(PresetBuilderTest, WhatNobodyTouchedComesBackEvenWhereABoxCannotHoldItAndWhatIsSetCounts) {
    using Fields = std::tuple<bool, int, int, int>;  // freeze, loop, fade out, link
    const std::vector<std::pair<Fields, Fields>> cases = {
        {{true, -1, 0, 0}, {true, 0, 0, 0}},
        {{false, -1, 0, 0}, {false, -1, 0, 0}},  // right after a frozen one
        {{true, 5, 9, 3}, {true, 0, 9, 3}},
        {{false, 150, 2000, 20}, {false, 150, 2000, 20}}};
    for (const auto& [opened, expected] : cases) {
        Preset preset;
        std::tie(preset.FreezeAtEnd, preset.Loop, preset.FadeOutMS, preset.Link) = opened;
        Builder.SetPreset(preset);
        const Preset saved = Compile();
        EXPECT_EQ(Fields(saved.FreezeAtEnd, saved.Loop, saved.FadeOutMS, saved.Link), expected);
    }
    Put(Wide, 0);
    EXPECT_EQ(Compile().FadeOutMS, 2000);
    Builder.LoopSpin->setValue(98);
    Builder.FadeCheck->setChecked(false);
    Builder.FadeCheck->setChecked(true);
    EXPECT_EQ(Compile().Loop, 98);
    EXPECT_EQ(Compile().FadeOutMS, 0);
    Builder.LoopForeverCheck->setChecked(true);
    EXPECT_EQ(Compile().Loop, -1);
    Builder.FreezeCheck->setChecked(true);
    EXPECT_FALSE(Builder.LoopForeverCheck->isChecked() || Builder.LoopForeverCheck->isEnabled());
    EXPECT_EQ(Compile().Loop, 0);
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
    Choose(Wide);
    EXPECT_FALSE(Browser()->isVisible());
    EXPECT_EQ(Compile().Canvases.at(0).Assets.at(0).PinnedCoords, Placed(ZORVIC_ECALIGN_SCALED_CENTERED));
    EXPECT_TRUE(HoldsTypedForm());
    Pane(1)->TopArrow->click();
    EXPECT_TRUE(HoldsTypedForm());
    QTest::mouseClick(Pane(1)->PaneWidget, Qt::LeftButton);
    EXPECT_TRUE(Compile().Canvases.empty());
    EXPECT_TRUE(HoldsTypedForm());
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

TEST_F(PresetBuilderTest, KeysAndTheFrameSaveAndCloseAndNotWhileHeldDown) {
    Open({});
    std::string heard;
    QObject::connect(&Builder, &PresetBuilder::CreateClicked, &Builder, [&] { heard += "create "; });
    QObject::connect(&Builder, &PresetBuilder::CloseClicked, &Builder,
                     [&] { heard += Builder.isVisible() ? "visible " : "close "; });
    QTest::keyClick(Builder.LoopSpin, Qt::Key_Return);  // also without a name, and from a number box
    EXPECT_FALSE(Builder.isVisible());
    Show();
    QTest::keyClick(Builder.PresetNameBox, Qt::Key_Escape);
    Show();
    Builder.close();
    Show();
    QTest::simulateEvent(&Builder, true, Qt::Key_Return, Qt::NoModifier, QString(), true);  // repeated
    emit Pane(0)->Clicked(Pane(0));
    ASSERT_TRUE(QTest::qWaitForWindowActive(Browser()));
    QTest::keyClick(Browser(), Qt::Key_Escape);
    EXPECT_TRUE(Builder.isVisible());
    EXPECT_EQ(heard, "create close close ");
}

TEST_F(PresetBuilderTest, SoundIsTakenAndWhatIsNotTakenSaysWhy) {
    Open({});
    emit Pane(0)->Clicked(Pane(0));
    Unit.Metadata.erase(Full);
    Unit.Metadata[Wide].Resolution = {640, 0};
    const std::tuple<const char*, AssetState, const char*> refused[] = {
        {Gone, ZORVIC_ASSETSTATE_READY, "<b>gone.mov was not taken: the unit does not know it"},
        {Full, ZORVIC_ASSETSTATE_INGESTING, "still being copied"},
        {Full, ZORVIC_ASSETSTATE_ERROR, "cannot read it"},
        {Wide, ZORVIC_ASSETSTATE_READY, "640x0 cannot be placed"}};
    for (const auto& [path, state, why] : refused) {
        Unit.Assets[1].Status = state;
        Choose(path);
        EXPECT_TRUE(Browser()->NoticeLabel->isVisible());
        EXPECT_THAT(Browser()->NoticeLabel->text().toStdString(), testing::HasSubstr(why));
        EXPECT_TRUE(Compile().Canvases.empty());
    }
    Choose(Sound);
    EXPECT_FALSE(Browser()->isVisible());
    EXPECT_EQ(Compile().Canvases.at(0).Assets.at(0).PinnedCoords, (Cube{{}, 0, 1}));
    EXPECT_FALSE(Pane(0)->TopArrow->isEnabled() || Pane(0)->SizingBox->isEnabled());
    Pane(0)->ClearButton->click();
    EXPECT_TRUE(Compile().Canvases.empty());
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
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
}

class BuilderInViewTest : public ViewTest {
protected:
    const PresetBuilder& Builder = (Open(), *TopLevel<PresetBuilder>());
    std::string Name() const { return Builder.PresetNameBox->text().toStdString(); }
    std::string Failure() const { return Builder.FailureLabel->text().toStdString(); }
    void Save() const { QTest::mouseClick(Builder.CreateButton, Qt::LeftButton); }
};

TEST_F(BuilderInViewTest, ASaveThatFailsKeepsTheFormAndSaysWhyUntilTheNextEdit) {
    Click("AddPresetButton");
    const std::tuple<StatusCode, int, const char*> cases[] = {
        {ZORVIC_STATUS_MISUSED, 257, "name is too long (257 bytes, at most 256)"},
        {ZORVIC_STATUS_MISUSED, 256, "refuses the preset"},
        {ZORVIC_STATUS_NETWORKERROR, 2, "does not answer"}};
    for (const auto& [status, nameLength, why] : cases) {
        const QString name(nameLength, QLatin1Char('n'));
        Builder.PresetNameBox->setText(name);
        EXPECT_EQ(Failure(), "");
        Unit.Fail("CreatePreset", status);
        Save();
        EXPECT_TRUE(Builder.isVisible());
        EXPECT_EQ(Name(), name.toStdString());
        EXPECT_THAT(Failure(), testing::HasSubstr(why));
    }
    Unit.Failures.clear();
    Disconnect();
    Save();
    EXPECT_TRUE(Builder.isVisible() && !Failure().empty());
    Reconnect();
    Save();
    EXPECT_FALSE(Builder.isVisible());
    EXPECT_EQ(FakeZorvic::LastCall("CreatePreset").Sent->Name, "nn");
    EXPECT_EQ(Name(), "");
}

TEST_F(BuilderInViewTest, SavingAnEditRevertsNobodyElse) {
    AddAsset(Wide, {640, 300});
    Preset(2).Canvases = {Canvas(Wide, ZORVIC_ECALIGN_CENTERED)};
    Preset(2).Notes = "two\nlines, <b>Ö</b>\t→";
    Preset(2).TabDisplayOrder[3] = TabOrdering(3, 7);
    SelectRows({2});
    Click("EditPresetButton");
    Builder.PresetNameBox->setText(QStringLiteral("Edited"));
    Builder.findChild<SimulatorPaneWidget*>()->TopArrow->click();
    Zorvic::Preset& stored = Preset(2);
    std::tie(stored.InPosition, stored.OutPosition, stored.FadeInMS, stored.Link) = std::tuple(9000, -1, 20, 3);
    stored.Gotos[1].TimeMS = stored.Countdowns[1].TimeMS = 500;
    stored.Volume = {7};
    stored.Canvases[0].Assets[0].Hue = 0.5F;
    const Zorvic::Preset theirs = stored;
    // Before what the unit holds is known, nothing is written over it.
    Unit.Fail("GetPresets", ZORVIC_STATUS_NETWORKERROR, 1);
    Save();
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
    Save();
    const auto kept = [](const Zorvic::Preset& p) {
        return std::tuple(p.PK, p.Notes, p.InPosition, p.OutPosition, p.FadeInMS, p.Link, p.Gotos.size(),
                          p.Countdowns.size(), p.TabDisplayOrder.at(3).Index, p.Volume, p.Canvases.at(0).Index,
                          p.Canvases.at(0).CanvasCfg.Dimensions, p.Canvases.at(0).Assets.at(0).Hue);
    };
    const Zorvic::Preset saved = *FakeZorvic::LastCall("UpdatePreset").Sent;
    EXPECT_EQ(kept(saved), kept(theirs));
    EXPECT_EQ(saved.Name, "Edited");
    EXPECT_EQ(saved.Canvases.at(0).Assets.at(0).PinnedCoords, Placed(ZORVIC_ECALIGN_TOPCENTER));
}

TEST_F(BuilderInViewTest, AnEditOfAPresetThatIsGoneIsKeptAndSavedAnewByTheNextSave) {
    SelectRows({2});
    Click("EditPresetButton");
    Forget(2);
    AddPreset("Newest", 1000);
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_NE(Builder.LinkSelect->findText(QStringLiteral("4 - Newest")), -1);
    Save();
    EXPECT_THAT(Failure(), testing::HasSubstr("deleted meanwhile"));
    EXPECT_TRUE(Builder.isVisible());
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
    Save();
    EXPECT_EQ(FakeZorvic::LastCall("CreatePreset").Sent->Name, "Break");
}

TEST_F(BuilderInViewTest, NothingOfAnEditStaysForThePresetMadeNext) {
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
