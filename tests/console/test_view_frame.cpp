#include "fixtures.h"

#include <QDrag>

#include <future>
#include <thread>

using Flags = ZorvicView::ViewUpdateFlags;
using namespace Zorvic;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class FrameTest : public ViewTest {
protected:
    std::string Status() const {
        View->UpdateStatus();
        return View->StatusLabel->text().toStdString();
    }
};

TEST_F(FrameTest, EventsOfManyThreadsCollapseIntoOneWord) {
    Open();
    for (int i = 0; i < 3; ++i) {
        const std::jthread library([this] { ZorvicView::OnStateEvent(ZORVIC_STATE_ASSETS, View.get()); });
        ZorvicView::OnStateEvent(ZORVIC_STATE_INVALID, View.get());
        ZorvicView::OnStateEvent(ZORVIC_STATE_TIMECODE, View.get());
    }
    EXPECT_EQ(View->PopViewUpdateFlags(), static_cast<Flags>(4 | 16));
    View->SetViewUpdateFlag(ZORVIC_STATE_PRESETS);
    View->SetViewUpdateFlag(ZORVIC_STATE_HWSTATE);
    View->ClearViewUpdateFlag(ZORVIC_STATE_PRESETS);
    EXPECT_EQ(View->PopViewUpdateFlags(), Flags::HWSTATE);
    EXPECT_EQ(View->PopViewUpdateFlags(), Flags::INVALID);
}

TEST_F(FrameTest, ARoundRefreshesPresetsFirstAndTimecodesLast) {
    Open();
    Play(2, 5000);
    Pump(ZORVIC_STATE_TIMECODE, ZORVIC_STATE_ASSETS, ZORVIC_STATE_PRESETSTATES);
    const auto calls = FakeZorvic::Calls();
    EXPECT_EQ(calls.front().Operation, "GetPresets");
    EXPECT_EQ(calls[calls.size() - 3].Operation, "GetAssets");
    EXPECT_EQ(calls[calls.size() - 2].ToString(), "GetTimeCode 2");
    FakeZorvic::ClearCalls();
    Unit.Fail("GetPresets", ZORVIC_STATUS_FAILED);
    Pump(ZORVIC_STATE_PRESETS, ZORVIC_STATE_ASSETS, ZORVIC_STATE_HWSTATE);
    EXPECT_EQ(FakeZorvic::Counts()["GetAssets"], 0) << "a failed list ends the round";
    EXPECT_EQ(View->PopViewUpdateFlags(), Flags::INVALID);
}

TEST_F(FrameTest, TheStatusLineTellsWhatIsWrongAndTheWatchdogReconnectsOnlyALostLink) {
    Open();
    Unit.Hardware.Resolutions.fill(ZORVIC_RES_1080P);
    Unit.Hardware.RefreshRate = ZORVIC_REFRESH_50;
    const std::string mode = ResolutionMap.at(ZORVIC_RES_1080P) + ' ';
    EXPECT_EQ(Status(), "Video Mode: <b><font color=\"#00cd00\"> " + mode + mode + mode + mode + " @ " +
                            RefreshMap.at(ZORVIC_REFRESH_50) + "fps</font></b>");
    Unit.Hardware.Resolutions[2] = static_cast<ResolutionMode>(77);
    EXPECT_THROW(View->UpdateStatus(), std::out_of_range);
    auto other = std::async(std::launch::async, [this] { delete Sessions.GetSessionByGUID("guid"); });
    EXPECT_EQ(other.wait_for(30s), std::future_status::ready) << "the registry is released";
    Unit.Fail("GetKonaHardwareState", ZORVIC_STATUS_FAILED);
    EXPECT_EQ(Status(), "Error fetching unit status. Check connection.");
    View->CheckConnection();
    EXPECT_EQ(FakeZorvic::Counts()["Reconnect"], 0);
    Unit.Reachable = false;
    const std::string disconnected = "<b><font color=\"#cd0000\">Disconnected from server</font></b>";
    EXPECT_EQ(Status(), disconnected);
    View->CheckConnection();
    EXPECT_THAT(FakeZorvic::LastCall("Reconnect").Texts, ElementsAre(""));
    Disconnect();
    EXPECT_EQ(Status(), disconnected);
}

TEST_F(FrameTest, OnlyAMovedRowRenumbersThePresets) {
    Open();
    delete new QWidget(View->PresetsView);
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
    auto* row = View->PresetsView->takeTopLevelItem(2);
    View->PresetsView->insertTopLevelItem(0, row);
    delete new QDrag(View->PresetsView);
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("UpdatePreset 3", "UpdatePreset 1", "UpdatePreset 2"));
    EXPECT_EQ(Preset(3).TabDisplayOrder.at(0).Index, 0);
    EXPECT_EQ(Preset(2).TabDisplayOrder.at(0).Index, 2);
    FakeZorvic::ClearCalls();
    Close();
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
}

// The press that may start a drag selects on the unit, which answers with a refresh.
TEST_F(FrameTest, ARefreshKeepsTheRowsOfADragAndTheOrderItDropsThemIn) {
    Open();
    auto* const row = View->LookupPresetItem(2);
    const auto place = View->PresetsView->visualItemRect(row).center();
    QTest::mousePress(View->windowHandle(), Qt::LeftButton, {},
                      View->PresetsView->viewport()->mapTo(View.get(), place));
    EXPECT_EQ(FakeZorvic::LastCall("SelectPreset").PK, 2);
    SelectOnUnit(2);
    Preset(1).Name = "Renamed";
    Pump(ZORVIC_STATE_PRESETS, ZORVIC_STATE_PRESETSTATES);
    auto drag = std::make_unique<QDrag>(View->PresetsView);
    QTest::mouseRelease(View->windowHandle(), Qt::LeftButton, {}, {1, 1});
    Pump(ZORVIC_STATE_PRESETS, ZORVIC_STATE_PRESETSTATES);
    ASSERT_EQ(View->LookupPresetItem(2), row);
    EXPECT_TRUE(row->isSelected());
    View->PresetsView->insertTopLevelItem(2, View->PresetsView->takeTopLevelItem(1));
    drag.reset();
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_THAT(Column(View->PresetsView, 2), ElementsAre("Renamed", "Finale", "Break"));
}

TEST_F(FrameTest, AViewMayBeClosedInsideItsOwnRefresh) {
    Play(2, 5000);
    for (const auto type : {ZORVIC_STATE_PRESETS, ZORVIC_STATE_ASSETS}) {
        Open();
        QTimer::singleShot(0, qApp, [this] { Close(); });
        Pump(type, ZORVIC_STATE_TIMECODE);
        QCoreApplication::processEvents();
        EXPECT_EQ(View, nullptr);
    }
}

TEST_F(FrameTest, AClosingViewSendsNothing) {
    Open();
    View->SeekBox->setFocus();
    QTest::keyClicks(View->SeekBox, QStringLiteral("12"));
    Close();
    Preset(1).Gotos[1].Name = "Verse";
    Open();
    View->GCTabs->setCurrentIndex(1);
    View->GotosView->editItem(View->GotosView->topLevelItem(0), 2);
    QTest::keyClicks(View->GotosView->findChild<QLineEdit*>(), QStringLiteral("typed"));
    Close();
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
}

TEST_F(FrameTest, ARoundAndAGestureReadTheListsOnceAndLookTheSessionUpAnew) {
    Open();
    Play(2, 5000);
    const auto reads = [](const std::function<void()>& act) {
        FakeZorvic::ClearCalls();
        act();
        auto counts = FakeZorvic::Counts();
        return std::pair(counts["GetPresets"], counts["GetPresetStates"]);
    };
    EXPECT_EQ(reads([this] { Pump(ZORVIC_STATE_PRESETS, ZORVIC_STATE_PRESETSTATES, ZORVIC_STATE_TIMECODE); }),
              std::pair(1, 1));
    EXPECT_EQ(reads([this] { Pump(ZORVIC_STATE_TIMECODE); }), std::pair(1, 1));
    View->PresetsView->setFocus();
    EXPECT_EQ(reads([this] { Press(Qt::Key_Return); }), std::pair(0, 1)) << "only what plays decides";
    EXPECT_EQ(reads([this] { Click("Goto10Button"); }), std::pair(1, 1));
    // Another connection replaces the session in the event loop of the assets' refresh.
    QTimer::singleShot(0, qApp, [this] { Reconnect(); });
    Pump(ZORVIC_STATE_ASSETS, ZORVIC_STATE_TIMECODE);
    EXPECT_EQ(View->LookupPresetItem(2)->text(4), QStringLiteral("00:00:05"));
}

TEST_F(FrameTest, ARefreshChangesRowsInsteadOfReplacingThem) {
    Open();
    SelectRows({1, 2});
    auto* const row = View->LookupPresetItem(2);
    AddPreset("Newest", 1000);
    Preset(2).Name = "Renamed";
    Preset(1).TabDisplayOrder[0].Index = 9;
    Play(2, 5000);
    Pump(ZORVIC_STATE_PRESETS);
    ASSERT_EQ(View->LookupPresetItem(2), row);
    EXPECT_FALSE(row->icon(0).isNull());
    EXPECT_THAT(Column(View->PresetsView, 2), ElementsAre("Renamed", "Finale", "Newest", "Opener"));
    EXPECT_THAT(View->GetSelectedPresetItems(), testing::UnorderedElementsAre(row, View->LookupPresetItem(1)));
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
}

}  // namespace
