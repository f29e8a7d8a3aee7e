#include "assetsloadingdialog.h"
#include "fixtures.h"

using namespace Zorvic;
using testing::ElementsAre;

namespace {

class AssetsListTest : public ViewTest {
protected:
    std::string Cells(int row) const {
        QStringList cells;
        for (int column = 0; column < View->AssetsView->columnCount(); ++column)
            cells += View->AssetsView->topLevelItem(row)->text(column);
        return cells.join(QLatin1Char(',')).toStdString();
    }
};

TEST_F(AssetsListTest, CellsShowWhatIsKnown) {
    AddAsset("C:\\Assets\\a.mov").TotalSize = 1073741824;
    AddAsset("b.mov").TotalSize = 1073741823;
    AddAsset("C:/Assets/c.mov").Status = ZORVIC_ASSETSTATE_INGESTING;
    AddAsset("C:\\d.mov").Status = static_cast<AssetState>(42);
    for (auto& [path, metadata] : Unit.Metadata) {
        metadata.FPS = 30;
        metadata.VideoFormat = "h264";
        metadata.AudioFormat = path == "b.mov" ? "" : "aac";
        metadata.Duration = 61000;
        metadata.ASampleRate = 48000;
        metadata.AChannels = 2;
    }
    Open();
    EXPECT_EQ(Cells(0), "a.mov,Ready,C:\\Assets,00:01:01,1.00GiB,1920x1080@30,h264/aac,48000,2");
    EXPECT_EQ(Cells(1), "b.mov,Ready,,00:01:01,1024.00MiB,1920x1080@30,h264,48000,2");
    EXPECT_EQ(Cells(2), "c.mov,Ingesting,C:/Assets,,0.00MiB,,,,");
    EXPECT_EQ(Cells(3), "d.mov,,C:,,0.00MiB,,,,");
    EXPECT_EQ(View->AssetsLabel->text(), QStringLiteral("<b>4</b> assets detected"));
    View->AcceptAssets({});
    EXPECT_EQ(View->AssetsLabel->text(), QStringLiteral("<b><font color=\"red\">No assets</font></b>"));
}

TEST_F(AssetsListTest, TheFirstScanCountsAndSurvivesTheEndOfItsDialogAndSession) {
    for (const char* path : {"C:\\a.mov", "C:\\b.mov", "C:\\c.mov"})
        AddAsset(path);
    std::vector<std::string> counts;
    FakeZorvic::SetHook([&](const FakeZorvic::Call& call) {
        auto* const dialog = TopLevel<AssetsLoadingDialog>();
        if (call.Operation != "ReadAssetMetadata" || !dialog || !dialog->isVisible()) return;
        counts.push_back(dialog->PBar->text().toStdString());
        if (counts.size() < 2) return;
        QTimer::singleShot(0, dialog, &QWidget::close);
        QTimer::singleShot(0, qApp, [this] { Disconnect(); });
    });
    Open();
    EXPECT_THAT(counts, ElementsAre("Asset 1 of 3 (33%)", "Asset 2 of 3 (66%)"));
    EXPECT_EQ(FakeZorvic::LiveSessions(), 0);
}

TEST_F(AssetsListTest, DeletingGoesOnAfterARefusal) {
    AddAsset("C:\\a.mov");
    AddAsset("C:\\b.mov");
    Open();
    Unit.Fail("DeleteAsset", ZORVIC_STATUS_FAILED, 1);
    View->AssetsView->selectAll();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Click("AssetDeleteButton");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Marking asset \"C:\\a.mov\" for deletion\nMarking asset \"C:\\b.mov\" for deletion\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Warning: Failed to delete asset \"C:\\b.mov\"!\n");
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("DeleteAsset C:\\b.mov", "DeleteAsset C:\\a.mov"));
}

TEST_F(AssetsListTest, ANestedRefreshWins) {
    for (int i = 0; i < 90; ++i)
        AddAsset("C:\\" + std::to_string(i));
    Open();
    auto* const scrollBar = View->AssetsView->verticalScrollBar();
    scrollBar->setValue(25);
    const auto older = Unit.Assets;
    AddAsset("C:\\newest");
    QTimer::singleShot(0, qApp, [=, this] {
        scrollBar->setValue(30);
        View->AcceptAssets(Unit.Assets);
    });
    View->AcceptAssets(older);
    EXPECT_EQ(View->AssetsView->topLevelItemCount(), 91);
    EXPECT_EQ(scrollBar->value(), 30);
    EXPECT_TRUE(View->AssetsView->updatesEnabled());
}

TEST_F(AssetsListTest, WideningLeavesOnlyTheAssets) {
    Open();
    for (const bool restored : {false, true}) {
        Click("ToggleAssetsViewButton");
        EXPECT_EQ(View->PresetsGridWidget->isVisible(), restored);
        EXPECT_EQ(View->PropertiesTabs->isVisible(), restored);
        EXPECT_EQ(View->GCTabs->isTabEnabled(2), restored);
        EXPECT_TRUE(View->GCTabs->isTabEnabled(0));
    }
}

}  // namespace
