#include "assetbrowser.h"
#include "consoleonunit.h"
#include "presetbuilder.h"
#include "simulatorpane.h"

#include <QTreeWidget>

namespace {

void ChooseClipFor(int column) {
    const auto panes = TopLevel<PresetBuilder>()->findChildren<Simulator::SimulatorPaneWidget*>();
    QTest::mouseClick(panes.at(column)->PaneWidget, Qt::LeftButton);
    const auto* const browser = TopLevel<AssetBrowser>();
    ASSERT_TRUE(QTest::qWaitFor([=] { return browser->isVisible() && browser->AssetBrowserList->count() == 1; }));
    browser->AssetBrowserList->setCurrentRow(0);
    QTest::mouseClick(browser->SelectButton, Qt::LeftButton);
}

}  // namespace

TEST_F(ConsoleOnUnit, ABuiltPresetPlaysAndItsEditsReachTheUnit) {
    Connect();
    const auto& builder = *TopLevel<PresetBuilder>();
    ASSERT_TRUE(Becomes([this] { return Unit.ClipReady(); }));
    Click("AddPresetButton");
    QTest::keyClicks(builder.focusWidget(), QStringLiteral("Opening"));
    ChooseClipFor(1);
    QTest::mouseClick(builder.CreateButton, Qt::LeftButton);
    ASSERT_TRUE(Becomes([this] { return Unit.Preset().Name == "Opening"; }));
    ASSERT_EQ(Unit.Preset().Canvases.size(), 1U);
    EXPECT_EQ(Unit.Preset().Canvases.front().Assets.at(0).FullPath, "C:\\Assets\\clip.mov");

    auto* const rows = Console.Find<QTreeWidget>("PresetsView");
    ASSERT_TRUE(Becomes([=] { return rows->topLevelItemCount() == 1; }));
    rows->setCurrentItem(rows->topLevelItem(0));
    Click("TakeButton");
    ASSERT_TRUE(Becomes([this] { return Unit.State().IsPlaying; }));
    EXPECT_NEAR(Unit.State().TRT, 3000, 200);

    Click("EditPresetButton");
    ChooseClipFor(2);
    builder.NotesBox->setText(QStringLiteral("twice"));
    QTest::mouseClick(builder.CreateButton, Qt::LeftButton);
    EXPECT_TRUE(Becomes([this] { return Unit.Preset().Notes == "twice" && Unit.Preset().Canvases.size() == 2; }));
}
