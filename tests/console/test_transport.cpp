#include "fixtures.h"
#include "playheadwidget.h"

using namespace Zorvic;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class TransportTest : public ViewTest {
protected:
    PlayHeadWidget* Bar() const { return View->findChild<PlayHeadWidget*>(); }
    void Type(const char* text) const {
        View->SeekBox->setFocus();
        View->SeekBox->selectAll();
        QTest::keyClicks(View->SeekBox, QString::fromLatin1(text));
    }
};

TEST_F(TransportTest, TheSeekBoxReadsWhatOperatorsType) {
    Open();
    const std::vector<std::pair<const char*, int>> seconds = {
        {"1:02:03", 3723},   {"2:30", 150},  {"45", 45}, {" 7x", 7},  {":30", 30}, {"1::", 3600},
        {"1.5:20:00", 3920}, {"", 0},        {"90", 0},  {"1:75", 0}, {"-5", 0},   {"1:2:3:4", 0},
        {"99999999999", 0},  {"24:00:00", 0}};
    for (const auto& [text, expected] : seconds) {
        View->SeekBox->setText(QString::fromLatin1(text));
        EXPECT_EQ(View->GetSeekBoxTime().msecsSinceStartOfDay(), expected * 1000) << text;
    }
}

TEST_F(TransportTest, ButtonsAndKeysActOnEverySelectedPresetThatIsLeft) {
    Play(3, 5000);
    Open();
    SelectRows({1, 2, 3});
    Forget(2);
    View->PresetsView->setFocus();
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape})
        Press(key);
    for (const char* button : {"TakeButton", "PauseButton", "EndButton"})
        Click(button);
    EXPECT_THAT(FakeZorvic::Commands(),
                ElementsAre("Take 1", "Pause 3", "Pause 1", "Pause 3", "End 1", "End 3",  // keys
                            "Take 1", "Take 3", "Pause 1", "Pause 3", "End 1", "End 3"));
}

TEST_F(TransportTest, ReturnInTheSeekBoxSeeksOnceAndLeavesIt) {
    Preset(1).OutPosition = 500;
    Open();
    SelectRows({1, 2});
    Type("0:20");
    Press(Qt::Key_Return);
    EXPECT_TRUE(Bar()->hasFocus());
    // What was typed has been used: Escape is the end key again.
    View->SeekBox->setFocus();
    Press(Qt::Key_Escape);
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("SeekTo 1 20500", "End 1", "End 2"));
}

TEST_F(TransportTest, WhatIsTypedInTheSeekBoxStaysThereUntilReturn) {
    Play(1, 25500);
    Open();
    Type("0:20");
    View->PresetsView->setFocus();
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
    Type("0:20");
    Pump(ZORVIC_STATE_TIMECODE);
    EXPECT_EQ(View->SeekBox->text(), QStringLiteral("0:20"));
    EXPECT_EQ(Bar()->GetHead(), 25500);
    Press(Qt::Key_Escape);
    EXPECT_EQ(View->SeekBox->text(), QStringLiteral("00:00:25"));
    EXPECT_TRUE(Bar()->hasFocus());
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
    Press(Qt::Key_Escape);
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("End 1"));
}

TEST_F(TransportTest, TheGotoButtonsKeepTheirTwoWays) {
    Preset(1).OutPosition = 1000;
    Open();
    Click("Goto30Button");
    EXPECT_EQ(Bar()->GetHead(), 31000);
    Click("Goto10Button");
    EXPECT_EQ(Bar()->GetHead(), 11000);
    SelectRows({});
    Click("Goto30Button");
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("SeekTo 1 89000", "SeekTo 1 11000"));
}

TEST_F(TransportTest, AStepOfAPausedPresetShowsAtOnceAndIsNotClamped) {
    Play(1, 0);
    State(1).IsPaused = true;
    Open();
    Bar()->SetBaseTimes(60000, 0);
    Bar()->setFocus();
    Press(Qt::Key_Space);
    Press(Qt::Key_Right);
    EXPECT_EQ(View->SeekBox->text(), QStringLiteral("23:59:59"));
    Press(Qt::Key_Left);
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("SeekTo 1 4294967246", "SeekTo 1"));
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
    Disconnect();
    FakeZorvic::ClearCalls();
    Click("InPointButton");
    Click("TakeButton");
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
}

}  // namespace
