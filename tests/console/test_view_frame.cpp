#include "viewfixture.h"

#include <QDrag>

#include <chrono>
#include <future>
#include <thread>

using Flags = ZorvicView::ViewUpdateFlags;
using namespace Zorvic;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class FrameTest : public ViewTest {
protected:
    std::vector<std::string> Operations() const {
        std::vector<std::string> names;
        for (const auto& call : FakeZorvic::Calls())
            names.push_back(call.Operation);
        return names;
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
    const auto names = Operations();
    EXPECT_EQ(names.front(), "GetPresets");
    EXPECT_THAT(FakeZorvic::Calls("GetTimeCode"), SizeIs(1));
    EXPECT_LT(std::find(names.begin(), names.end(), "GetAssets"), std::find(names.begin(), names.end(), "GetTimeCode"));
    FakeZorvic::ClearCalls();
    Unit.Fail("GetPresets", ZORVIC_STATUS_FAILED);
    Pump(ZORVIC_STATE_PRESETS, ZORVIC_STATE_ASSETS, ZORVIC_STATE_HWSTATE);
    EXPECT_THAT(Operations(), ElementsAre("GetPresets")) << "a failed list ends the round";
    EXPECT_EQ(View->PopViewUpdateFlags(), Flags::INVALID);
}

TEST_F(FrameTest, TheStatusLineTellsWhatIsWrongAndTheWatchdogReconnectsOnlyALostLink) {
    Open();
    const auto* label = View->StatusLabel;
    Unit.Hardware.Resolutions.fill(ZORVIC_RES_1080P);
    Unit.Hardware.RefreshRate = ZORVIC_REFRESH_50;
    const std::string mode = ResolutionMap.at(ZORVIC_RES_1080P) + ' ';
    View->UpdateStatus();
    EXPECT_EQ(label->text().toStdString(), "Video Mode: <b><font color=\"#00cd00\"> " + mode + mode + mode + mode +
                                               " @ " + RefreshMap.at(ZORVIC_REFRESH_50) + "fps</font></b>");
    Unit.Fail("GetKonaHardwareState", ZORVIC_STATUS_FAILED);
    View->UpdateStatus();
    EXPECT_EQ(label->text(), QStringLiteral("Error fetching unit status. Check connection."));
    View->CheckConnection();
    EXPECT_THAT(FakeZorvic::Calls("Reconnect"), IsEmpty());
    Unit.Reachable = false;
    View->UpdateStatus();
    EXPECT_EQ(label->text(), QStringLiteral("<b><font color=\"#cd0000\">Disconnected from server</font></b>"));
    View->CheckConnection();
    EXPECT_THAT(FakeZorvic::LastCall("Reconnect").Texts, ElementsAre(""));
    Handle.reset();
    Sessions.DeleteSessionByGUID("guid");
    View->UpdateStatus();
    EXPECT_THAT(label->text().toStdString(), HasSubstr("Disconnected"));
}

TEST_F(FrameTest, AVideoModeNobodyKnowsRaisesAndReleasesTheRegistry) {
    Open();
    Handle.reset();
    Unit.Hardware.Resolutions[2] = static_cast<ResolutionMode>(77);
    EXPECT_THROW(View->UpdateStatus(), std::out_of_range);
    auto other = std::async(std::launch::async, [this] { delete Sessions.GetSessionByGUID("guid"); });
    EXPECT_EQ(other.wait_for(30s), std::future_status::ready);
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

TEST_F(FrameTest, RowsStayPutFromThePressToTheEndOfADrag) {
    Open();
    Preset(1).Name = "Renamed";
    const auto name = [this] {
        Pump(ZORVIC_STATE_PRESETS, ZORVIC_STATE_PRESETSTATES);
        return View->LookupPresetItem(1)->text(2).toStdString();
    };
    const auto place = View->PresetsView->visualItemRect(View->LookupPresetItem(2)).center();
    QTest::mousePress(View->windowHandle(), Qt::LeftButton, {},
                      View->PresetsView->viewport()->mapTo(View.get(), place));
    EXPECT_EQ(FakeZorvic::LastCall("SelectPreset").PK, 2);
    EXPECT_EQ(name(), "Opener");
    auto drag = std::make_unique<QDrag>(View->PresetsView);
    QTest::mouseRelease(View->windowHandle(), Qt::LeftButton, {}, {1, 1});
    EXPECT_EQ(name(), "Opener");
    drag.reset();
    EXPECT_EQ(name(), "Renamed");
}

TEST_F(FrameTest, AViewMayBeClosedInsideItsOwnRefresh) {
    Play(2, 5000);
    for (const auto type : {ZORVIC_STATE_PRESETS, ZORVIC_STATE_PRESETSTATES, ZORVIC_STATE_ASSETS}) {
        Open();
        QTimer::singleShot(0, qApp, [this] { Close(); });
        Pump(type, ZORVIC_STATE_TIMECODE);
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

}  // namespace
