#include "fixtures.h"
#include "presetbuilder.h"

#include <QMenu>
#include <QPointer>

using namespace Zorvic;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class PresetListTest : public ViewTest {
protected:
    QTreeWidget& List() const { return *View->PresetsView; }
    std::vector<std::string> Names() const { return Column(View->PresetsView, 2); }

    /// Opens the context menu, lets something happen while it is open, and chooses an action.
    void RightClick(int action, const std::function<void()>& whileOpen) {
        QTimer::singleShot(0, qApp, [=, this] {
            const QPointer<QMenu> menu(qobject_cast<QMenu*>(QApplication::activePopupWidget()));
            EXPECT_EQ(menu->actions()[0]->isEnabled(), List().selectedItems().size() == 1);
            whileOpen();
            menu->actions()[action]->trigger();
            menu->close();
        });
        View->OnPresetRightClick({5, 5});
    }
};

TEST_F(PresetListTest, RowsShowThePresetsInTheOrderOfTheirTab) {
    Preset(1).TabDisplayOrder[0].Index = 9;
    Preset(2).Loop = -1;
    Preset(2).Link = 3;
    Preset(2).InPosition = 70000;
    Preset(2).OutPosition = 10000;
    Preset(3).Link = 77;
    Play(3, 5000);
    Open();
    EXPECT_THAT(Column(&List(), 1), ElementsAre("2", "3", "1"));
    EXPECT_THAT(Column(&List(), 4), ElementsAre("00:01:00", "00:01:40", "00:01:00"));
    EXPECT_THAT(Column(&List(), 5), ElementsAre("00:01:00", "00:01:40", "00:01:00"));
    EXPECT_THAT(Column(&List(), 6), ElementsAre("\u221E", "0", "0"));
    EXPECT_THAT(Column(&List(), 7), ElementsAre("3 - Finale", "", ""));
    EXPECT_FALSE(View->LookupPresetItem(3)->icon(0).isNull());
    EXPECT_TRUE(View->LookupPresetItem(1)->icon(0).isNull());
    EXPECT_EQ(View->GetSelectedPresetItem(), View->LookupPresetItem(1));
    EXPECT_EQ(View->VideoPresetLabel->text(), QStringLiteral("<b>Preset:</b> Opener"));
}

TEST_F(PresetListTest, ABadAnswerKeepsTheRows) {
    Open();
    Preset(2).TabDisplayOrder.clear();
    EXPECT_THROW(View->AcceptPresetStates(), std::out_of_range);
    EXPECT_TRUE(List().updatesEnabled());
    View->AcceptPresets({});
    EXPECT_THAT(Names(), ElementsAre("Opener", "Break", "Finale"));
    EXPECT_EQ(View->GotosPresetLabel->text(), QStringLiteral("No preset selected"));
}

TEST_F(PresetListTest, OnlyTheOperatorsChoiceSelectsOnTheUnit) {
    Open();
    SelectOnUnit(3);
    Pump(ZORVIC_STATE_PRESETSTATES);
    EXPECT_EQ(View->GetSelectedPresetItem(), View->LookupPresetItem(3));
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
    View->PresetsView->setCurrentItem(View->LookupPresetItem(2));
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("SelectPreset 2"));
    EXPECT_EQ(View->Times->text(), QStringLiteral("00:01:40"));
}

TEST_F(PresetListTest, ARefreshKeepsTheScrollPositionAndReachesTheBuilder) {
    for (int i = 0; i < 60; ++i)
        AddPreset("More", 1000);
    Open();
    List().verticalScrollBar()->setValue(300);
    AddPreset("Newest", 1000);
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_EQ(List().verticalScrollBar()->value(), 300);
    EXPECT_EQ(Names().back(), "Newest");
    EXPECT_TRUE(List().updatesEnabled());
    const QComboBox& links = *TopLevel<PresetBuilder>()->LinkSelect;
    EXPECT_EQ(links.itemText(links.count() - 1), QStringLiteral("64 - Newest"));
}

TEST_F(PresetListTest, AMenuActsOnTheRowsItWasOpenedForAndOutlivesItsView) {
    Open();
    SelectRows({2, 3});
    RightClick(2, [this] {
        Forget(3);
        SelectOnUnit(1);
        Pump(ZORVIC_STATE_PRESETSTATES);
    });
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("DeletePreset 2"));
    FakeZorvic::ClearCalls();
    SelectRows({2});
    RightClick(1, [this] {
        Forget(2);
        Pump(ZORVIC_STATE_PRESETSTATES);
    });
    EXPECT_EQ(View->GetSelectedPresetItem(), View->LookupPresetItem(1));
    RightClick(2, [this] { Close(); });
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
}

TEST_F(PresetListTest, CloningAndDeletingActOnWhatTheUnitStillHas) {
    Open();
    SelectRows({1, 2, 3});
    Forget(2);
    Forget(3);
    Click("DupPresetsButton");
    EXPECT_THAT(FakeZorvic::LastCall("CreatePreset").Sent->Volume, ElementsAre(100, 200));
    EXPECT_EQ(FakeZorvic::LastCall("CreatePreset").Sent->PK, 0);
    SelectRows({1, 3});
    Click("DeletePresetsButton");
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("CreatePreset Opener - copy", "DeletePreset 1", "DeletePreset 3"));
}

}  // namespace
