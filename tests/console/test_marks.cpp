#include "fixtures.h"
#include "playheadwidget.h"

using namespace Zorvic;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// The presets 1 and 2 have two gotos and a countdown each.
class MarksTest : public ViewTest {
protected:
    MarksTest() {
        const auto add = [](auto& marks, int id, int timeMS, const char* name) {
            marks[id].ID = id;
            marks[id].TimeMS = timeMS;
            marks[id].Name = name;
        };
        for (const int pk : {1, 2}) {
            add(Preset(pk).Gotos, 10, 30000, "Chorus");
            add(Preset(pk).Gotos, 2, 45000, "Verse");
            add(Preset(pk).Countdowns, 1, 20000, "Lights");
        }
        Open();
        View->GCTabs->setCurrentIndex(1);
    }
    std::vector<std::string> GotoNames() const { return Column(View->GotosView, 2); }
    QLineEdit* Editor() const {
        for (auto* editor : View->GotosView->findChildren<QLineEdit*>())
            if (editor->isVisible()) return editor;
        return nullptr;
    }
    /// Double-clicks the position of the first goto and types a name.
    void TypeBridge() const {
        auto* view = View->GotosView;
        const auto place = view->visualItemRect(view->topLevelItem(0)).center();
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, place);
        emit view->itemDoubleClicked(view->topLevelItem(0), 3);
        ASSERT_NE(Editor(), nullptr);
        QTest::keyClicks(Editor(), QStringLiteral("Bridge"));
    }
};

TEST_F(MarksTest, TimecodesShowInEveryPlace) {
    Preset(1).OutPosition = 5000;
    Play(1, 25500);
    Unit.TimeCodes[1].VUData = {40, 140};
    Play(2, 90000);
    SelectRows({2});
    Pump(ZORVIC_STATE_PRESETSTATES, ZORVIC_STATE_TIMECODE);
    EXPECT_THAT(Column(View->PresetsView, 4), ElementsAre("00:00:20", "00:01:30", "00:01:40"));
    EXPECT_EQ(View->LookupPresetItem(1)->foreground(4).color(), QColor(Qt::yellow));
    EXPECT_EQ(View->SeekBox->text(), QStringLiteral("00:00:20"));
    EXPECT_EQ(View->SeekBox->styleSheet(), QStringLiteral("color: yellow;"));
    EXPECT_EQ(View->findChild<PlayHeadWidget*>()->GetHead(), 25500);
    EXPECT_EQ(View->LChannelVol->value(), 40);
    EXPECT_EQ(View->RChannelVol->value(), 100);
    EXPECT_THAT(Column(View->CountdownsView, 3), ElementsAre("00:00:05"));
    Play(1, 4000);
    Unit.TimeCodes[1].VUData = {7};
    Pump(ZORVIC_STATE_TIMECODE);
    EXPECT_EQ(View->SeekBox->text(), QStringLiteral("23:59:59"));
    EXPECT_EQ(View->LChannelVol->value(), 40);
    EXPECT_THAT(Column(View->CountdownsView, 3), ElementsAre("00:00:00"));
}

TEST_F(MarksTest, ATimecodeOfAPresetThatIsGoneIsSkipped) {
    std::unordered_map<int, TimeCode> codes;
    codes[77] = codes[2];
    codes[2].Time = 90000;
    EXPECT_NO_THROW(View->AcceptTimeCodes(codes));
    Unit.States.erase(Unit.States.begin() + 1);
    EXPECT_NO_THROW(View->AcceptTimeCodes(codes));
    EXPECT_EQ(View->LookupPresetItem(2)->text(4), QStringLiteral("00:01:30"));
}

TEST_F(MarksTest, TablesListMarksByNumberAndGoThere) {
    EXPECT_THAT(Column(View->GotosView, 0), ElementsAre("2", "10"));
    EXPECT_THAT(Column(View->GotosView, 3), ElementsAre("00:00:45", "00:00:30"));
    QTest::mouseClick(View->GotosView->itemWidget(View->GotosView->topLevelItem(1), 1), Qt::LeftButton);
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("SeekTo 1 30000"));
}

TEST_F(MarksTest, NewMarksStandAtThePlayPositionUnderItsName) {
    Click("GotosNewButton");
    Play(1, 12000);
    Preset(1).OutPosition = 2000;
    View->GCTabs->setCurrentIndex(2);
    Click("CDNewButton");
    Unit.TimeCodes.clear();
    Click("CDNewButton");
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("CreateGoto 1 60000 00:01:00", "CreateCountdown 1 12000 00:00:10"));
}

TEST_F(MarksTest, AnOpenEditorSurvivesARefreshAndKeepsItsKeys) {
    TypeBridge();
    Press(Qt::Key_Escape);
    QCoreApplication::processEvents();
    EXPECT_THAT(GotoNames(), ElementsAre("Verse", "Chorus"));
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
    TypeBridge();
    Preset(1).Gotos[10].Name = "Outro";
    Pump(ZORVIC_STATE_PRESETSTATES);
    ASSERT_NE(Editor(), nullptr);
    EXPECT_EQ(Editor()->text(), QStringLiteral("Bridge"));
    Press(Qt::Key_Return);
    QCoreApplication::processEvents();
    EXPECT_EQ(Editor(), nullptr);
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("RenameGoto 1 45000 Bridge"));
    EXPECT_THAT(GotoNames(), ElementsAre("Bridge", "Outro"));
}

TEST_F(MarksTest, ARefusedNameGoesBackWithoutAnotherTry) {
    Unit.Fail("RenameGoto", ZORVIC_STATUS_FAILED);
    View->GotosView->topLevelItem(0)->setText(2, QStringLiteral("Bridge"));
    EXPECT_THAT(GotoNames(), ElementsAre("Verse", "Chorus"));
    View->GotosView->topLevelItem(0)->setText(0, QStringLiteral("99"));
    EXPECT_NO_THROW(View->GotosView->topLevelItem(0)->setText(2, QStringLiteral("Nobody")));
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("RenameGoto 1 45000 Bridge"));
}

TEST_F(MarksTest, NeitherAnEditorNorATableEverCommitsToAnotherPreset) {
    View->GotosView->topLevelItem(0)->setSelected(true);
    SelectRows({2});
    Click("GotosDeleteButton");
    View->GotosView->topLevelItem(0)->setText(2, QStringLiteral("Bridge"));
    SelectRows({1});
    TypeBridge();
    SelectOnUnit(2);
    Preset(2).Gotos[2].Name = "Solo";
    Pump(ZORVIC_STATE_PRESETSTATES);
    QCoreApplication::processEvents();
    EXPECT_EQ(Editor(), nullptr);
    EXPECT_THAT(GotoNames(), ElementsAre("Solo", "Chorus"));
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
    View->GotosView->selectAll();
    Click("GotosDeleteButton");
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("DeleteGoto 2 45000", "DeleteGoto 2 30000"));
}

}  // namespace
