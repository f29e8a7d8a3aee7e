#include "fixtures.h"

#include <QSignalSpy>
#include <QWheelEvent>

using namespace Zorvic;

namespace {

class TransportTest : public ViewTest {
protected:
    void Type(const char* text) const {
        View->SeekBox->setFocus();
        View->SeekBox->selectAll();
        QTest::keyClicks(View->SeekBox, QString::fromLatin1(text));
    }
    std::string TimeOf(int pk) const { return View->LookupPresetItem(pk)->text(4).toStdString(); }
    std::string Seek() const { return View->SeekBox->text().toStdString(); }
};

TEST_F(TransportTest, TheSeekBoxReadsWhatOperatorsType) {
    Open();
    const std::vector<std::pair<const char*, int>> seconds = {
        {"1:02:03", 3723}, {"45", 45}, {" 7x", 7}, {":30", 30}, {"1::", 3600},      {"1.5:20:00", 3920},
        {"", 0},           {"90", 0},  {"-5", 0},  {"1:75", 0}, {"99999999999", 0}, {"24:00:00", 0}};
    for (const auto& [text, expected] : seconds) {
        View->SeekBox->setText(QString::fromLatin1(text));
        EXPECT_EQ(View->GetSeekBoxTime().msecsSinceStartOfDay(), expected * 1000) << text;
    }
}

TEST_F(TransportTest, WhatIsTypedInTheSeekBoxIsUsedOnceByReturnOnly) {
    Preset(1).OutPosition = 500;
    Play(1, 25500);
    Open();
    SelectRows({1, 2});
    Type("0:20");
    List().setFocus();
    EXPECT_EQ(Seek(), "00:00:25");
    Type("0:20");
    Pump(ZORVIC_STATE_TIMECODE);
    EXPECT_EQ(Seek(), "0:20");
    EXPECT_EQ(Bar().GetHead(), 25500);
    Press(Qt::Key_Escape);
    EXPECT_EQ(Seek(), "00:00:25");
    EXPECT_TRUE(Bar().hasFocus());
    EXPECT_THAT(Sent(), IsEmpty());
    Type("0:20");
    Press(Qt::Key_Return);
    EXPECT_TRUE(Bar().hasFocus());
    View->SeekBox->setFocus();
    Press(Qt::Key_Escape);  // the end key again
    EXPECT_THAT(Sent(), ElementsAre("SeekTo 1 20500", "End 1", "End 2"));
}

TEST_F(TransportTest, ATimeThatWasTypedForAnotherPresetIsGone) {
    Play(1, 25500);
    Play(2, 8000);
    Open();
    for (const auto key : {Qt::Key_Return, Qt::Key_Escape}) {
        SelectElsewhere(1);
        Type("0:20");
        SelectElsewhere(2);
        Pump(ZORVIC_STATE_TIMECODE);
        EXPECT_EQ(Seek(), "00:00:08");
        Press(key);
    }
    Type("0:07");
    Press(Qt::Key_Return);
    EXPECT_THAT(Sent(), ElementsAre("SeekTo 2 7000"));
}

TEST_F(TransportTest, ButtonsAndKeysActOnEverySelectedPresetThatIsLeft) {
    Play(3, 5000);
    Open();
    SelectRows({1, 2, 3});
    Forget(2);
    List().setFocus();
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape})
        Press(key);
    for (const char* button : {"TakeButton", "PauseButton", "EndButton"})
        Click(button);
    EXPECT_THAT(Sent(), ElementsAre("Take 1", "Pause 3", "Pause 1", "Pause 3", "End 1", "End 3",  // keys
                                    "Take 1", "Take 3", "Pause 1", "Pause 3", "End 1", "End 3"));
}

TEST_F(TransportTest, GotoButtonsAndArrowKeysKeepTheirOddWays) {
    Preset(1).OutPosition = 1000;
    Open();
    Click("Goto30Button");
    EXPECT_EQ(Bar().GetHead(), 31000);
    Click("Goto10Button");
    EXPECT_EQ(Bar().GetHead(), 11000);
    SelectRows({});
    Click("Goto30Button");
    EXPECT_THAT(Sent(), ElementsAre("SeekTo 1 89000", "SeekTo 1 11000"));
    Preset(1).OutPosition = 0;
    State(1).IsPaused = true;
    Play(1, 0);
    SelectElsewhere(1);
    Bar().SetBaseTimes(60000, 0);
    Bar().setFocus();
    Press(Qt::Key_Space);
    Press(Qt::Key_Right);
    EXPECT_EQ(Seek(), "23:59:59") << "shown at once, not clamped";
    Press(Qt::Key_Left);
    EXPECT_THAT(Sent(), ElementsAre("SeekTo 1 4294967246", "SeekTo 1"));
}

TEST_F(TransportTest, TrimEditsSendTheWholePreset) {
    Open();
    Bar().SetBaseTimes(60000, 12000);
    Click("InPointButton");
    Bar().SetBaseTimes(60000, 3000);
    Click("OutPointButton");
    EXPECT_EQ(std::pair(Preset(1).InPosition, Preset(1).OutPosition), std::pair(12000, 3000));
    EXPECT_EQ(Preset(1).Name, "Opener");
    Click("ResetTrimButton");
    EXPECT_EQ(std::pair(Preset(1).InPosition, Preset(1).OutPosition), std::pair(60000, 0));
    Sent();
    Disconnect();
    Click("InPointButton");
    Click("TakeButton");
    EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(TransportTest, APausedOrCuedPresetShowsWhereItStands) {
    Preset(2).OutPosition = 1000;
    Preset(2).Countdowns[4].ID = 4;
    Preset(2).Countdowns[4].TimeMS = 11000;
    State(2).IsPaused = true;
    Play(2, 31000, 70);
    Open();
    SelectOnUnit(2);
    for (const auto type : {ZORVIC_STATE_PRESETSTATES, ZORVIC_STATE_PRESETS, ZORVIC_STATE_TIMECODE}) {
        Pump(type);
        EXPECT_EQ(Bar().GetHead(), 31000);
        EXPECT_EQ(Bar().GetTrimStart(), 100000);
        EXPECT_EQ(Seek(), "00:00:30");
        EXPECT_EQ(TimeOf(2), "00:00:30");
        EXPECT_THAT(Column(View->CountdownsView, 3), ElementsAre("00:00:20"));
        EXPECT_EQ(View->LChannelVol->value(), type == ZORVIC_STATE_TIMECODE ? 70 : 0);
    }
    State(2).IsPaused = State(2).IsPlaying = false;
    Pump(ZORVIC_STATE_PRESETSTATES);
    EXPECT_EQ(Seek() + ' ' + TimeOf(2), "00:00:30 00:00:30") << "as a cue";
    EXPECT_EQ(View->LChannelVol->value(), 0);
    Unit.TimeCodes.clear();
    Pump(ZORVIC_STATE_PRESETSTATES, ZORVIC_STATE_TIMECODE);
    EXPECT_EQ(Seek() + ' ' + TimeOf(2), "00:01:39 00:01:39");
}

TEST_F(TransportTest, ALostUnitLooksLostAndLiveAgain) {
    Play(1, 5000, 50);
    Open();
    List().setFocus();
    Pump(ZORVIC_STATE_TIMECODE);
    EXPECT_EQ(View->LChannelVol->value(), 50);
    const QSignalSpy changes(View.get(), &ZorvicView::LinkChanged);
    const auto red = View->LookupPresetItem(1)->foreground(4);
    Unit.Reachable = false;
    View->UpdateStatus();
    EXPECT_FALSE(View->TakeButton->isEnabled() || List().isEnabled());
    EXPECT_EQ(View->LChannelVol->value(), 0);
    EXPECT_NE(View->LookupPresetItem(1)->foreground(4), red);
    EXPECT_EQ(View->LinkLabel->text(), QStringLiteral("No answer for 0 s"));
    Unit.Reason = "it is revoked";
    View->UpdateStatus();
    EXPECT_EQ(View->LinkLabel->text(), QStringLiteral("No answer for 0 s: it is revoked"));
    Press(Qt::Key_Return);
    Unit.Reachable = true;
    View->UpdateStatus();
    View->ProcessViewUpdateFlags();
    EXPECT_TRUE(List().hasFocus());
    EXPECT_EQ(View->LookupPresetItem(1)->foreground(4), red);
    EXPECT_EQ(changes.count(), 2);
    EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(TransportTest, TheWheelSetsOnlyWhatHasTheKeyboard) {
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

}  // namespace
