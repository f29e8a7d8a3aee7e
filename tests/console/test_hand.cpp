// What an operator's hand relies on: the selection, true positions, a link that is seen to be lost, and keys, wheel and
// drags that do what they are for and nothing else.

#include "fixtures.h"
#include "mainwindow.h"
#include "playheadwidget.h"
#include "zorvicchooser.h"

#include <QMenu>
#include <QSignalSpy>
#include <QWheelEvent>

using namespace Zorvic;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class HandTest : public ViewTest {
protected:
    QTreeWidget& List() const { return *View->PresetsView; }
    PlayHeadWidget& Bar() const { return *View->findChild<PlayHeadWidget*>(); }
    std::vector<int> Selected() const {
        std::vector<int> keys;
        for (const auto* row : List().selectedItems())
            keys.push_back(row->text(1).toInt());
        return keys;
    }
    void ClickRow(int pk, Qt::KeyboardModifiers modifiers = {}) {
        const auto place = List().visualItemRect(View->LookupPresetItem(pk)).center();
        QTest::mouseClick(List().viewport(), Qt::LeftButton, modifiers, place);
        // The unit answers a choice, and every answer brings a refresh.
        if (!FakeZorvic::Commands().empty()) SelectOnUnit(FakeZorvic::LastCall("SelectPreset").PK);
        Pump(ZORVIC_STATE_PRESETSTATES);
    }
    void Stand(int pk, int timeMS) {
        Unit.TimeCodes[pk].PK = pk;
        Unit.TimeCodes[pk].Time = timeMS;
        Unit.TimeCodes[pk].VUData = {70, 70};
    }
};

TEST_F(HandTest, TheSelectionChangesUnderTheOperatorsHandOnly) {
    Open();
    ClickRow(3);
    ClickRow(1, Qt::ShiftModifier);
    EXPECT_THAT(Selected(), ElementsAre(1, 2, 3));
    ClickRow(2, Qt::ControlModifier);
    EXPECT_THAT(Selected(), ElementsAre(1, 3));
    Preset(3).TabDisplayOrder[0].Index = -5;
    AddPreset("New", 1000);
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_THAT(Selected(), testing::UnorderedElementsAre(1, 3));
    SelectOnUnit(3);
    Pump(ZORVIC_STATE_PRESETSTATES);
    EXPECT_THAT(Selected(), ElementsAre(3, 1)) << "what the panes show is what seeks and trims act on";
    Forget(3);
    Pump(ZORVIC_STATE_PRESETSTATES);
    EXPECT_THAT(Selected(), ElementsAre(1)) << "no neighbour steps in";
    SelectOnUnit(2);
    Pump(ZORVIC_STATE_PRESETSTATES);
    EXPECT_THAT(Selected(), ElementsAre(2));
    EXPECT_EQ(List().currentItem(), View->LookupPresetItem(2));
}

TEST_F(HandTest, WhenTheLastSelectedPresetIsGoneEveryPaneSaysSo) {
    Preset(1).Gotos[1].Name = "Verse";
    Preset(1).Canvases = {Canvas(Full, ZORVIC_ECALIGN_STRETCHED)};
    Open();
    EXPECT_EQ(View->ActivePlayerSel->count(), 1);
    Forget(1);
    SelectOnUnit(0);
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_THAT(Selected(), IsEmpty());
    EXPECT_EQ(View->GotosPresetLabel->text(), QStringLiteral("No preset selected"));
    EXPECT_EQ(View->GotosView->topLevelItemCount(), 0);
    EXPECT_EQ(View->ActivePlayerSel->count(), 0);
    EXPECT_FALSE(View->LChannel->isEnabled());
    EXPECT_EQ(View->SeekBox->text(), QStringLiteral("00:00:00"));
    SelectOnUnit(2);
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_TRUE(View->LChannel->isEnabled());
}

TEST_F(HandTest, KeysKeepTheCurrentRowInView) {
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
    // What another console selects must not scroll the list away under the mouse.
    List().verticalScrollBar()->setValue(0);
    SelectOnUnit(80);
    Pump(ZORVIC_STATE_PRESETSTATES);
    EXPECT_EQ(List().verticalScrollBar()->value(), 0);
}

TEST_F(HandTest, APausedPresetShowsWhereItStands) {
    Preset(2).OutPosition = 1000;
    Preset(2).Countdowns[4] = {};
    Preset(2).Countdowns[4].ID = 4;
    Preset(2).Countdowns[4].TimeMS = 11000;
    State(2).IsPlaying = State(2).IsPaused = true;
    Stand(2, 31000);
    Open();
    ClickRow(2);
    for (const auto type : {ZORVIC_STATE_PRESETSTATES, ZORVIC_STATE_PRESETS, ZORVIC_STATE_TIMECODE}) {
        Pump(type);
        EXPECT_EQ(Bar().GetHead(), 31000);
        EXPECT_EQ(Bar().GetTrimStart(), 100000);
        EXPECT_EQ(View->SeekBox->text(), QStringLiteral("00:00:30"));
        EXPECT_EQ(View->LookupPresetItem(2)->text(4), QStringLiteral("00:00:30"));
        EXPECT_EQ(View->CountdownsView->topLevelItem(0)->text(3), QStringLiteral("00:00:20"));
        EXPECT_EQ(View->LChannelVol->value(), type == ZORVIC_STATE_TIMECODE ? 70 : 0);
    }
    Click("InPointButton");
    EXPECT_EQ(Preset(2).InPosition, 31000);
}

TEST_F(HandTest, ACueShowsUntilItIsDropped) {
    Open();
    Stand(1, 20000);
    Pump(ZORVIC_STATE_TIMECODE);
    const QImage cued = Bar().grab().toImage();
    EXPECT_EQ(Bar().GetHead(), 20000);
    EXPECT_EQ(View->SeekBox->text(), QStringLiteral("00:00:20"));
    EXPECT_EQ(View->LookupPresetItem(1)->text(4), QStringLiteral("00:00:20"));
    EXPECT_EQ(View->LChannelVol->value(), 0);
    State(1).IsPlaying = true;
    Pump(ZORVIC_STATE_PRESETSTATES);
    EXPECT_NE(Bar().grab().toImage(), cued);
    State(1).IsPlaying = false;
    Unit.TimeCodes.clear();
    Pump(ZORVIC_STATE_PRESETSTATES);
    Pump(ZORVIC_STATE_TIMECODE);
    EXPECT_EQ(View->SeekBox->text(), QStringLiteral("00:01:00"));
    EXPECT_EQ(View->LookupPresetItem(1)->text(4), QStringLiteral("00:01:00"));
}

TEST_F(HandTest, ALostUnitLooksLostAndLiveAgain) {
    Play(1, 5000);
    Unit.TimeCodes[1].VUData = {50, 50};
    Open();
    List().setFocus();
    Pump(ZORVIC_STATE_TIMECODE);
    EXPECT_EQ(View->LChannelVol->value(), 50);
    const QSignalSpy changes(View.get(), &ZorvicView::LinkChanged);
    const auto red = View->LookupPresetItem(1)->foreground(4);
    Unit.Reachable = false;
    View->UpdateStatus();
    EXPECT_FALSE(View->TakeButton->isEnabled());
    EXPECT_FALSE(List().isEnabled());
    EXPECT_EQ(View->LChannelVol->value(), 0);
    EXPECT_NE(View->LookupPresetItem(1)->foreground(4), red);
    EXPECT_EQ(View->LinkLabel->text(), QStringLiteral("No answer for 0 s"));
    Press(Qt::Key_Return);
    Unit.Reachable = true;
    FakeZorvic::ClearCalls();
    View->UpdateStatus();
    View->ProcessViewUpdateFlags();
    EXPECT_TRUE(List().hasFocus());
    EXPECT_EQ(View->LookupPresetItem(1)->foreground(4), red);
    EXPECT_FALSE(View->LinkLabel->isVisible());
    EXPECT_EQ(changes.count(), 2);
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
}

TEST_F(HandTest, ADragOrMenuOfTheBarEndsWithThePresetItBeganOn) {
    Play(1, 30000);
    Open();
    Pump(ZORVIC_STATE_TIMECODE);
    const QPoint head(16 + (Bar().width() - 32) / 2, 30);
    QTest::mousePress(&Bar(), Qt::LeftButton, {}, head);
    EXPECT_TRUE(Bar().isSliderDown());
    const auto elsewhere = [this] {
        SelectOnUnit(2);
        Pump(ZORVIC_STATE_PRESETSTATES);
    };
    elsewhere();
    QTest::mouseMove(&Bar(), head + QPoint(60, 0));
    QTest::mouseRelease(&Bar(), Qt::LeftButton, {}, head + QPoint(60, 0));
    QTimer::singleShot(0, qApp, [&] {
        const QPointer<QMenu> menu(qobject_cast<QMenu*>(QApplication::activePopupWidget()));
        SelectOnUnit(3);
        Pump(ZORVIC_STATE_PRESETSTATES);
        ASSERT_TRUE(!menu || !menu->isVisible());
    });
    emit Bar().customContextMenuRequested(head);
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
}

TEST_F(HandTest, TypedTimesGoWithTheFocusAndMenusDoNotUseThem) {
    MainWindow window;
    const std::unique_ptr<SessionHandle> handle(Sessions.CreateSessionByIP("host"));
    auto* const view = window.AddView(handle->GetSession());
    window.show();
    QApplication::setActiveWindow(&window);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    FakeZorvic::ClearCalls();
    view->SeekBox->setFocus();
    QTest::keyClicks(view->SeekBox, QStringLiteral("0:20"));
    QTest::mouseClick(window.menuBar(), Qt::LeftButton, {}, {10, 10});
    QTest::keyClick(QApplication::activePopupWidget() ? QApplication::activePopupWidget() : window.menuBar(),
                    Qt::Key_Escape);
    window.menuBar()->setFocus();
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape})
        QTest::keyClick(window.windowHandle(), key);
    if (auto* const menu = QApplication::activePopupWidget()) menu->close();
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
    view->PresetsView->setFocus();
    EXPECT_EQ(view->SeekBox->text(), QStringLiteral("00:01:00"));
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
}

TEST_F(HandTest, TheWheelSetsOnlyWhatHasTheKeyboard) {
    Open();
    List().setFocus();
    for (const bool focused : {false, true}) {
        if (focused) View->LChannel->setFocus();
        const int before = View->LChannel->value();
        QWheelEvent wheel({5, 5}, View->LChannel->mapToGlobal(QPoint(5, 5)), {}, {0, 120}, Qt::NoButton, {},
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(View->LChannel, &wheel);
        EXPECT_EQ(View->LChannel->value() != before, focused);
    }
}

TEST_F(HandTest, F2RenamesAMarkAndWhatIsTypedOutlivesARefresh) {
    Preset(1).Gotos[1].ID = 1;
    Preset(1).Gotos[1].Name = "Verse";
    Open();
    View->GCTabs->setCurrentIndex(1);
    View->GotosView->setFocus();
    View->GotosView->setCurrentItem(View->GotosView->topLevelItem(0));
    QTest::keyClick(View->GotosView, Qt::Key_F2);
    auto* const editor = View->GotosView->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    QTest::keyClicks(editor, QStringLiteral("Chorus"));
    Preset(1).Gotos[1].Name = "Renamed elsewhere";
    Pump(ZORVIC_STATE_PRESETS);
    QTest::keyClick(editor, Qt::Key_Return);
    QCoreApplication::processEvents();
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("RenameGoto 1 Chorus"));
}

TEST_F(HandTest, TheChooserTrimsTheAddressAndSaysWhyNothingHappens) {
    MainWindow window;
    ZorvicChooser chooser(&window);
    chooser.show();
    chooser.ZorvicIPBox->setText(QStringLiteral(" nobody "));
    chooser.OnConnectClicked();
    EXPECT_TRUE(chooser.isVisible());
    EXPECT_EQ(chooser.ResultLabel->text(), QStringLiteral("No unit answers at nobody."));
    chooser.ZorvicIPBox->setText(QStringLiteral("  host "));
    EXPECT_TRUE(chooser.ResultLabel->text().isEmpty());
    chooser.OnConnectClicked();
    EXPECT_FALSE(chooser.isVisible());
}

}  // namespace
