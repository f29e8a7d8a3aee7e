#include "fixtures.h"

#include <QDrag>
#include <QMenu>
#include <QPointer>

using namespace Zorvic;

namespace {

class PresetsTest : public ViewTest {
protected:
    std::vector<std::string> Names() const { return Column(&List(), 2); }
    std::vector<int> Selected() const {
        std::vector<int> keys;
        for (const auto* row : List().selectedItems())
            keys.push_back(row->text(1).toInt());
        return keys;
    }
    void ClickRow(int pk, Qt::KeyboardModifiers modifiers = {}) {
        const auto place = List().visualItemRect(View->LookupPresetItem(pk)).center();
        QTest::mouseClick(List().viewport(), Qt::LeftButton, modifiers, place);
        SelectElsewhere(FakeZorvic::LastCall("SelectPreset").PK);  // the unit answers a choice
    }
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

TEST_F(PresetsTest, RowsShowThePresetsInTheOrderOfTheirTabAndABadAnswerKeepsThem) {
    Preset(1).TabDisplayOrder[0].Index = 9;
    Preset(2).Loop = -1;
    Preset(2).Link = 3;
    Preset(2).InPosition = 70000;
    Preset(2).OutPosition = 10000;
    Preset(3).Link = 77;
    Open();
    EXPECT_EQ(Row(&List(), 0), ",2,Break,,00:01:00,00:01:00,\u221E,3 - Finale");
    EXPECT_EQ(Row(&List(), 1), ",3,Finale,,00:01:40,00:01:40,0,");
    EXPECT_EQ(View->GetSelectedPresetItem(), List().topLevelItem(2));
    Preset(2).TabDisplayOrder.clear();
    EXPECT_THROW(View->AcceptPresetStates(), std::out_of_range);
    EXPECT_TRUE(List().updatesEnabled());
    View->AcceptPresets({});
    EXPECT_THAT(Names(), ElementsAre("Break", "Finale", "Opener"));
}

TEST_F(PresetsTest, TheSelectionChangesUnderTheOperatorsHandOnlyAndRowsLiveOn) {
    Open();
    ClickRow(3);
    ClickRow(1, Qt::ShiftModifier);
    EXPECT_THAT(Selected(), ElementsAre(1, 2, 3));
    ClickRow(2, Qt::ControlModifier);
    EXPECT_THAT(Selected(), ElementsAre(1, 3));
    const auto* const row = View->LookupPresetItem(3);
    Preset(3).TabDisplayOrder[0].Index = -5;
    Preset(3).Name = "Renamed";
    Play(3, 5000);
    AddPreset("New", 1000);
    Sent();
    Pump(ZORVIC_STATE_PRESETS);
    ASSERT_EQ(View->LookupPresetItem(3), row);
    EXPECT_FALSE(row->icon(0).isNull());
    EXPECT_THAT(Names(), ElementsAre("Renamed", "Opener", "Break", "New"));
    EXPECT_THAT(Selected(), testing::UnorderedElementsAre(1, 3));
    SelectElsewhere(3);
    EXPECT_THAT(Selected(), ElementsAre(3, 1)) << "what the panes show is what seeks and trims act on";
    Forget(3);
    Pump(ZORVIC_STATE_PRESETSTATES);
    EXPECT_THAT(Selected(), ElementsAre(1)) << "no neighbour steps in";
    SelectElsewhere(2);
    EXPECT_THAT(Selected(), ElementsAre(2));
    EXPECT_EQ(List().currentItem(), View->LookupPresetItem(2));
    EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(PresetsTest, WhenTheLastSelectedPresetIsGoneEveryPaneSaysSo) {
    Preset(1).Gotos[1].Name = "Verse";
    Preset(1).Canvases = {Canvas(Full, ZORVIC_ECALIGN_STRETCHED)};
    Open();
    EXPECT_EQ(View->ActivePlayerSel->count(), 1);
    Forget(1);
    SelectElsewhere(0);
    EXPECT_THAT(Selected(), IsEmpty());
    EXPECT_EQ(View->GotosPresetLabel->text(), QStringLiteral("No preset selected"));
    EXPECT_EQ(View->GotosView->topLevelItemCount() + View->ActivePlayerSel->count(), 0);
    EXPECT_FALSE(View->LChannel->isEnabled());
}

TEST_F(PresetsTest, KeysKeepTheCurrentRowInViewAndRefreshesTheScrollPosition) {
    for (int i = 0; i < 80; ++i)
        AddPreset(i == 70 ? "Zebra" : "More", 1000);
    Open();
    List().setFocus();
    for (const auto key : {Qt::Key_End, Qt::Key_Home, Qt::Key_PageDown, Qt::Key_PageDown, Qt::Key_Z, Qt::Key_Down}) {
        Press(key);
        const QRect visible = List().viewport()->rect().adjusted(0, 0, 0, 1);  // Qt leaves a pixel out
        EXPECT_TRUE(visible.contains(List().visualItemRect(List().currentItem()))) << key;
        EXPECT_EQ(key == Qt::Key_Z, List().currentItem()->text(2) == QStringLiteral("Zebra"));
    }
    List().verticalScrollBar()->setValue(300);
    AddPreset("Newest", 1000);
    SelectElsewhere(1);
    EXPECT_EQ(List().verticalScrollBar()->value(), 300);
}

TEST_F(PresetsTest, AMenuActsOnTheRowsItWasOpenedForAndOutlivesItsView) {
    Open();
    SelectRows({2, 3});
    RightClick(2, [this] {
        Forget(3);
        SelectElsewhere(1);
    });
    EXPECT_THAT(Sent(), ElementsAre("DeletePreset 2"));
    SelectRows({2});
    RightClick(1, [this] {
        Forget(2);
        Pump(ZORVIC_STATE_PRESETSTATES);
    });
    EXPECT_EQ(View->GetSelectedPresetItem(), View->LookupPresetItem(1));
    RightClick(2, [this] { Close(); });
    EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(PresetsTest, CloningAndDeletingActOnWhatTheUnitStillHas) {
    Open();
    SelectRows({1, 2, 3});
    Forget(2);
    Forget(3);
    Click("DupPresetsButton");
    EXPECT_THAT(FakeZorvic::LastCall("CreatePreset").Sent->Volume, ElementsAre(100, 200));
    SelectRows({1, 3});
    Click("DeletePresetsButton");
    EXPECT_THAT(Sent(), ElementsAre("CreatePreset Opener - copy", "DeletePreset 1", "DeletePreset 3"));
}

TEST_F(PresetsTest, OnlyAMovedRowRenumbersThePresetsAndARefreshKeepsTheRowsOfADrag) {
    Open();
    delete new QWidget(&List());
    auto* const row = View->LookupPresetItem(3);
    const auto place = List().viewport()->mapTo(View.get(), List().visualItemRect(row).center());
    QTest::mousePress(View->windowHandle(), Qt::LeftButton, {}, place);
    EXPECT_THAT(Sent(), ElementsAre("SelectPreset 3"));
    Preset(1).Name = "Renamed";
    SelectElsewhere(3);
    auto drag = std::make_unique<QDrag>(&List());
    QTest::mouseRelease(View->windowHandle(), Qt::LeftButton, {}, {1, 1});
    Pump(ZORVIC_STATE_PRESETS, ZORVIC_STATE_PRESETSTATES);
    ASSERT_EQ(View->LookupPresetItem(3), row);
    EXPECT_TRUE(row->isSelected());
    List().insertTopLevelItem(0, List().takeTopLevelItem(2));
    Sent();
    drag.reset();
    EXPECT_THAT(Sent(), ElementsAre("UpdatePreset 3", "UpdatePreset 1", "UpdatePreset 2"));
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_THAT(Names(), ElementsAre("Finale", "Renamed", "Break"));
    Close();
    EXPECT_THAT(Sent(), IsEmpty());
}

}  // namespace
