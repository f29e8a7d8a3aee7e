#include "playheadwidget.h"
#include "seektime.h"
#include "viewfixture.h"

#include <QAbstractItemView>

using namespace Zorvic;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST(SeekTime, ReadsWhatOperatorsType) {
    const auto timeMS = [](const char* text) { return ParseSeekTime(text).msecsSinceStartOfDay(); };
    EXPECT_EQ(timeMS("1:02:03"), 3723000);
    EXPECT_EQ(timeMS("2:30"), 150000);
    EXPECT_EQ(timeMS("45"), 45000);
    EXPECT_EQ(timeMS(" 7x"), 7000);
    EXPECT_EQ(timeMS(":30"), 30000);
    EXPECT_EQ(timeMS("1::"), 3600000);
    EXPECT_EQ(timeMS("1.5:20:00"), 3920000);
    for (const auto* invalid : {"", "90", "1:75", "-5", "1:2:3:4", "99999999999", "24:00:00"}) {
        EXPECT_EQ(timeMS(invalid), 0) << invalid;
    }
}

class TransportTest : public ViewTest {
protected:
    PlayHeadWidget* Bar() const { return View->findChild<PlayHeadWidget*>(); }
    void Type(const char* text) const {
        View->SeekBox->setFocus();
        View->SeekBox->selectAll();
        QTest::keyClicks(View->SeekBox, QString::fromLatin1(text));
    }
};

TEST_F(TransportTest, ButtonsActOnEverySelectedPresetThatIsLeft) {
    Open();
    SelectRows({1, 2, 3});
    Forget(2);
    Click("TakeButton");
    Click("PauseButton");
    Click("EndButton");
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("Take 1", "Take 3", "Pause 1", "Pause 3", "End 1", "End 3"));
}

TEST_F(TransportTest, ReturnTogglesEachSelectedPreset) {
    Play(2, 5000);
    Open();
    SelectRows({1, 2});
    View->PresetsView->setFocus();
    Press(Qt::Key_Return);
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("Take 1", "Pause 2"));
    Press(Qt::Key_Enter);
    Press(Qt::Key_Escape);
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("Take 1", "Pause 2", "Pause 1", "Pause 2", "End 1", "End 2"));
}

TEST_F(TransportTest, KeysInAnOpenListOrMenuStayThere) {
    Open();
    View->ActivePlayerSel->addItems({QStringLiteral("Player 1"), QStringLiteral("Player 2")});
    for (const auto key : {Qt::Key_Return, Qt::Key_Escape}) {
        View->ActivePlayerSel->showPopup();
        QTest::keyClick(View->ActivePlayerSel->view(), key);
        EXPECT_FALSE(View->ActivePlayerSel->view()->isVisible());
        QTimer::singleShot(0, qApp, [key] { QTest::keyClick(QApplication::activePopupWidget(), key); });
        QTimer::singleShot(1, qApp, [] {
            if (auto* menu = QApplication::activePopupWidget()) menu->close();
        });
        View->OnPresetRightClick({5, 5});
    }
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
}

TEST_F(TransportTest, ReturnInTheSeekBoxSeeksOnceAndLeavesIt) {
    Preset(1).OutPosition = 500;
    Open();
    SelectRows({1, 2});
    Type("0:20");
    Press(Qt::Key_Return);
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("SeekTo 1 20500"));
    EXPECT_TRUE(Bar()->hasFocus());
    // What was typed has been used: Escape is the end key again.
    View->SeekBox->setFocus();
    Press(Qt::Key_Escape);
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("SeekTo 1 20500", "End 1", "End 2"));
}

TEST_F(TransportTest, LeavingTheSeekBoxSeeksNothing) {
    Open();
    Type("0:20");
    QTest::mouseClick(View->PresetsView->viewport(), Qt::LeftButton);
    View->PresetsView->setFocus();
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
}

TEST_F(TransportTest, EscapeInATypedSeekBoxTakesTheTextBack) {
    Open();
    const auto shown = View->SeekBox->text();
    Type("0:20");
    Press(Qt::Key_Escape);
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
    EXPECT_EQ(View->SeekBox->text(), shown);
    EXPECT_TRUE(Bar()->hasFocus());
    Press(Qt::Key_Escape);
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("End 1"));
}

TEST_F(TransportTest, TheGotoButtonsKeepTheirTwoWays) {
    Preset(1).OutPosition = 1000;
    Open();
    Unit.FollowsCommands = false;
    Click("Goto30Button");
    EXPECT_EQ(Bar()->GetHead(), 31000);
    Click("Goto10Button");
    EXPECT_EQ(Bar()->GetHead(), 11000);
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("SeekTo 1 89000", "SeekTo 1 11000"));
    SelectRows({});
    Click("Goto30Button");
    EXPECT_THAT(FakeZorvic::Calls("SeekTo"), testing::SizeIs(2));
}

TEST_F(TransportTest, AStepOfAPausedPresetShowsAtOnceAndIsNotClamped) {
    Play(1, 0);
    State(1).IsPaused = true;
    Open();
    Bar()->SetBaseTimes(60000, 0);
    Bar()->setFocus();
    Press(Qt::Key_Right);
    EXPECT_EQ(FakeZorvic::LastCall("SeekTo").Number, 4294967246);
    EXPECT_EQ(View->SeekBox->text(), QStringLiteral("23:59:59"));
    Press(Qt::Key_Left);
    EXPECT_EQ(FakeZorvic::LastCall("SeekTo").Number, 0);
}

TEST_F(TransportTest, TrimEditsSendTheWholePreset) {
    Open();
    Bar()->SetBaseTimes(60000, 12000);
    Click("InPointButton");
    Bar()->SetBaseTimes(60000, 3000);
    Click("OutPointButton");
    EXPECT_EQ(Preset(1).InPosition, 12000);
    EXPECT_EQ(Preset(1).OutPosition, 3000);
    EXPECT_EQ(Preset(1).Name, "Opener");
    Click("ResetTrimButton");
    EXPECT_EQ(Preset(1).InPosition, 60000);
    EXPECT_EQ(Preset(1).OutPosition, 0);
    Forget(1);
    Handle.reset();
    Sessions.DeleteSessionByGUID("guid");
    FakeZorvic::ClearCalls();
    Click("InPointButton");
    Click("TakeButton");
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
}

}  // namespace
