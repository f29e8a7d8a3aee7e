#include "fixtures.h"

using namespace Zorvic;

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
    /// Opens the name of the first goto by F2, or by a double click on its position, and types another.
    void TypeBridge(bool byKey) const {
        auto* const view = View->GotosView;
        view->setCurrentItem(view->topLevelItem(0));
        if (byKey)
            QTest::keyClick(view, Qt::Key_F2);
        else
            emit view->itemDoubleClicked(view->topLevelItem(0), 3);
        ASSERT_NE(Editor(), nullptr);
        QTest::keyClicks(Editor(), QStringLiteral("Bridge"));
    }
};

TEST_F(MarksTest, TimecodesShowInEveryPlaceAndThoseOfPresetsThatAreGoneNowhere) {
    Preset(1).OutPosition = 5000;
    Play(1, 25500);
    Unit.TimeCodes[1].VUData = {40, 140};
    Play(2, 90000);
    SelectRows({2});
    Pump(ZORVIC_STATE_PRESETSTATES, ZORVIC_STATE_TIMECODE);
    EXPECT_THAT(Column(&List(), 4), ElementsAre("00:00:20", "00:01:30", "00:01:40"));
    EXPECT_EQ(View->LookupPresetItem(1)->foreground(4).color(), QColor(Qt::yellow));
    EXPECT_EQ(View->SeekBox->text(), QStringLiteral("00:00:20"));
    EXPECT_EQ(Bar().GetHead(), 25500);
    EXPECT_EQ(View->LChannelVol->value(), 40);
    EXPECT_THAT(Column(View->CountdownsView, 3), ElementsAre("00:00:05"));
    Play(1, 4000);
    Unit.TimeCodes[1].VUData = {7};
    Pump(ZORVIC_STATE_TIMECODE);
    EXPECT_EQ(View->LChannelVol->value(), 40);
    EXPECT_THAT(Column(View->CountdownsView, 3), ElementsAre("00:00:00"));
    Unit.States.erase(Unit.States.begin() + 1);
    EXPECT_NO_THROW(View->AcceptTimeCodes({{77, {}}, {2, Unit.TimeCodes[1]}}));
    EXPECT_EQ(View->LookupPresetItem(2)->text(4), QStringLiteral("00:01:30"));
}

TEST_F(MarksTest, TablesListMarksByNumberGoThereAndPutNewOnesAtThePlayPosition) {
    EXPECT_EQ(Row(View->GotosView, 0), "2,,Verse,00:00:45");
    EXPECT_EQ(Row(View->GotosView, 1), "10,,Chorus,00:00:30");
    QTest::mouseClick(View->GotosView->itemWidget(View->GotosView->topLevelItem(1), 1), Qt::LeftButton);
    Click("GotosNewButton");
    Play(1, 12000);
    Preset(1).OutPosition = 2000;
    View->GCTabs->setCurrentIndex(2);
    Click("CDNewButton");
    EXPECT_THAT(Sent(),
                ElementsAre("SeekTo 1 30000", "CreateGoto 1 60000 00:01:00", "CreateCountdown 1 12000 00:00:10"));
}

TEST_F(MarksTest, AnOpenEditorSurvivesARefreshAndKeepsItsKeys) {
    TypeBridge(false);
    Press(Qt::Key_Escape);
    QCoreApplication::processEvents();
    EXPECT_THAT(GotoNames(), ElementsAre("Verse", "Chorus"));
    EXPECT_THAT(Sent(), IsEmpty());
    TypeBridge(true);
    Preset(1).Gotos[2].Name = "Renamed elsewhere";
    Preset(1).Gotos[10].Name = "Outro";
    Pump(ZORVIC_STATE_PRESETSTATES);
    Press(Qt::Key_Return);
    QCoreApplication::processEvents();
    EXPECT_EQ(Editor(), nullptr);
    EXPECT_THAT(Sent(), ElementsAre("RenameGoto 1 45000 Bridge"));
    EXPECT_THAT(GotoNames(), ElementsAre("Bridge", "Outro"));
}

TEST_F(MarksTest, NeitherAnEditorNorATableEverCommitsToAnotherPreset) {
    View->GotosView->topLevelItem(0)->setSelected(true);
    SelectRows({2});
    Click("GotosDeleteButton");
    View->GotosView->topLevelItem(0)->setText(2, QStringLiteral("Bridge"));
    SelectRows({1});
    TypeBridge(true);
    Preset(2).Gotos[2].Name = "Solo";
    SelectElsewhere(2);
    QCoreApplication::processEvents();
    EXPECT_EQ(Editor(), nullptr);
    EXPECT_THAT(GotoNames(), ElementsAre("Solo", "Chorus"));
    EXPECT_THAT(Sent(), IsEmpty());
    View->GotosView->selectAll();
    Click("GotosDeleteButton");
    EXPECT_THAT(Sent(), ElementsAre("DeleteGoto 2 45000", "DeleteGoto 2 30000"));
}

TEST_F(MarksTest, ARefusedNameGoesBackWithoutAnotherTry) {
    Unit.Fail("RenameGoto", ZORVIC_STATUS_FAILED);
    View->GotosView->topLevelItem(0)->setText(2, QStringLiteral("Bridge"));
    EXPECT_THAT(GotoNames(), ElementsAre("Verse", "Chorus"));
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("RenameGoto 1 45000 Bridge"));
}

}  // namespace
