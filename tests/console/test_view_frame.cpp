#include "assetsloadingdialog.h"
#include "fixtures.h"

#include <future>
#include <thread>

using Flags = ZorvicView::ViewUpdateFlags;
using namespace Zorvic;
using namespace std::chrono_literals;

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
    EXPECT_EQ(View->PopViewUpdateFlags(), Flags::INVALID);
}

TEST_F(FrameTest, ARoundRefreshesPresetsFirstAndTimecodesLast) {
    Open();
    Play(2, 5000);
    Pump(ZORVIC_STATE_TIMECODE, ZORVIC_STATE_ASSETS, ZORVIC_STATE_PRESETSTATES);
    const auto calls = std::exchange(FakeZorvic::Calls, {});
    EXPECT_EQ(calls.front().Operation, "GetPresets");
    EXPECT_EQ(calls[calls.size() - 3].Operation, "GetAssets");
    EXPECT_EQ(calls[calls.size() - 2].ToString(), "GetTimeCode 2");
    Unit.Fail("GetPresets", ZORVIC_STATUS_FAILED);
    Pump(ZORVIC_STATE_PRESETS, ZORVIC_STATE_ASSETS, ZORVIC_STATE_HWSTATE);
    EXPECT_EQ(FakeZorvic::Counts()["GetAssets"], 0) << "a failed list ends the round";
    EXPECT_EQ(View->PopViewUpdateFlags(), Flags::INVALID);
}

TEST_F(FrameTest, TheStatusLineTellsWhatIsWrongAndTheWatchdogReconnectsOnlyALostLink) {
    Open();
    Unit.Hardware.Resolutions.fill(ZORVIC_RES_1080P);
    Unit.Hardware.RefreshRate = ZORVIC_REFRESH_50;
    EXPECT_THAT(Status(), testing::HasSubstr(" @ " + RefreshMap.at(ZORVIC_REFRESH_50) + "fps"));
    Unit.Hardware.Resolutions[2] = static_cast<ResolutionMode>(77);
    EXPECT_THROW(View->UpdateStatus(), std::out_of_range);
    auto other = std::async(std::launch::async, [this] { delete Sessions.GetSessionByGUID("guid"); });
    EXPECT_EQ(other.wait_for(30s), std::future_status::ready) << "the registry is released";
    Unit.Fail("GetKonaHardwareState", ZORVIC_STATUS_FAILED);
    EXPECT_EQ(Status(), "Error fetching unit status. Check connection.");
    View->CheckConnection();
    EXPECT_EQ(FakeZorvic::Counts()["Reconnect"], 0);
    Unit.Reachable = false;
    EXPECT_THAT(Status(), testing::HasSubstr("Disconnected from server"));
    View->CheckConnection();
    EXPECT_THAT(FakeZorvic::LastCall("Reconnect").Texts, ElementsAre(""));
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
        FakeZorvic::Calls.clear();
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

TEST_F(FrameTest, AssetRowsShowWhatIsKnown) {
    AddAsset("C:\\Assets\\a.mov").TotalSize = 1073741824;
    AddAsset("b.mov").TotalSize = 1073741823;
    AddAsset("C:/Assets/c.mov").Status = ZORVIC_ASSETSTATE_INGESTING;
    for (auto& [path, metadata] : Unit.Metadata) {
        metadata.FPS = 30;
        metadata.VideoFormat = "h264";
        metadata.AudioFormat = path == "b.mov" ? "" : "aac";
        metadata.Duration = 61000;
        metadata.ASampleRate = 48000;
        metadata.AChannels = 2;
    }
    Open();
    EXPECT_EQ(Row(View->AssetsView, 0), "a.mov,Ready,C:\\Assets,00:01:01,1.00GiB,1920x1080@30,h264/aac,48000,2");
    EXPECT_EQ(Row(View->AssetsView, 1), "b.mov,Ready,,00:01:01,1024.00MiB,1920x1080@30,h264,48000,2");
    EXPECT_EQ(Row(View->AssetsView, 2), "c.mov,Ingesting,C:/Assets,,0.00MiB,,,,");
    EXPECT_EQ(View->AssetsLabel->text(), QStringLiteral("<b>3</b> assets detected"));
    View->AcceptAssets({});
    EXPECT_EQ(View->AssetsLabel->text(), QStringLiteral("<b><font color=\"red\">No assets</font></b>"));
}

TEST_F(FrameTest, TheFirstScanCountsAndSurvivesTheEndOfItsDialogAndSession) {
    for (const char* path : {"C:\\a.mov", "C:\\b.mov", "C:\\c.mov"})
        AddAsset(path);
    std::vector<std::string> counts;
    FakeZorvic::Hook = [&](const FakeZorvic::Call& call) {
        auto* const dialog = TopLevel<AssetsLoadingDialog>();
        if (call.Operation != "ReadAssetMetadata" || !dialog || !dialog->isVisible()) return;
        counts.push_back(dialog->PBar->text().toStdString());
        if (counts.size() < 2) return;
        QTimer::singleShot(0, dialog, &QWidget::close);
        QTimer::singleShot(0, qApp, [this] { Disconnect(); });
    };
    Open();
    EXPECT_THAT(counts, ElementsAre("Asset 1 of 3 (33%)", "Asset 2 of 3 (66%)"));
    EXPECT_EQ(FakeZorvic::LiveSessions(), 0);
}

TEST_F(FrameTest, DeletingAssetsGoesOnAfterARefusal) {
    AddAsset("C:\\a.mov");
    AddAsset("C:\\b.mov");
    Open();
    Unit.Fail("DeleteAsset", ZORVIC_STATUS_FAILED, 1);
    View->AssetsView->selectAll();
    testing::internal::CaptureStderr();
    Click("AssetDeleteButton");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Warning: Failed to delete asset \"C:\\b.mov\"!\n");
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("DeleteAsset C:\\b.mov", "DeleteAsset C:\\a.mov"));
}

TEST_F(FrameTest, ANestedRefreshOfTheAssetsWins) {
    for (int i = 0; i < 90; ++i)
        AddAsset("C:\\" + std::to_string(i));
    Open();
    const auto older = Unit.Assets;
    AddAsset("C:\\newest");
    QTimer::singleShot(0, qApp, [this] { View->AcceptAssets(Unit.Assets); });
    View->AcceptAssets(older);
    EXPECT_EQ(View->AssetsView->topLevelItemCount(), 91);
    EXPECT_TRUE(View->AssetsView->updatesEnabled());
}

TEST_F(FrameTest, ARefusedCommandIsNamedWithItsReasonBesideTheStatusForAWhile) {
    Open();
    View->UpdateStatus();
    const auto status = Status();
    const std::tuple<StatusCode, const char*, const char*> cases[] = {
        {ZORVIC_STATUS_FAILED, "the store is full", "Not done: Take (the store is full)"},
        {ZORVIC_STATUS_MISUSED, "", "Not done: Take (the unit refuses it)"},
        {ZORVIC_STATUS_FAILED, "", "Not done: Take (the unit could not do it)"},
        {ZORVIC_STATUS_NETWORKERROR, "of before", "Not done: Take (the unit does not answer)"}};
    for (const auto& [code, reason, text] : cases) {
        Unit.Reason = reason;
        Unit.Fail("Take", code, 1);
        Click("TakeButton");
        EXPECT_EQ(View->RefusalLabel->text().toStdString(), text);
        EXPECT_TRUE(View->RefusalLabel->isVisible());
    }
    View->UpdateStatus();
    EXPECT_EQ(Status(), status);
    View->RefusalLabel->findChild<QTimer*>()->start(1);  // as when it is over
    QTest::qWait(50);
    EXPECT_FALSE(View->RefusalLabel->isVisible());
}

TEST_F(FrameTest, TheFirstScanCanBeLeft) {
    for (int number = 0; number < 50; ++number)
        AddAsset("C:\\Assets\\" + std::to_string(number));
    int reads = 0;
    FakeZorvic::Hook = [&](const FakeZorvic::Call& call) {
        if (call.Operation == "ReadAssetMetadata" && ++reads == 3) TopLevel<AssetsLoadingDialog>()->SkipButton->click();
    };
    View = std::make_unique<ZorvicView>("guid", "host");
    EXPECT_EQ(reads, 3);
}

}  // namespace
