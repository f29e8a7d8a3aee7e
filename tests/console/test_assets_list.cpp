#include "assetsloadingdialog.h"
#include "viewfixture.h"

using namespace Zorvic;
using testing::ElementsAre;

namespace {

class AssetsListTest : public ViewTest {
protected:
    void AddAsset(const std::string& path, AssetState status = ZORVIC_ASSETSTATE_READY) {
        auto& asset = Unit.Assets.emplace_back();
        asset.FullPath = path;
        asset.Checksum = "sum";
        asset.TotalSize = 1LL << 29;
        asset.Status = status;
        auto& metadata = Unit.Metadata[path];
        metadata.Resolution = {1920, 1080};
        metadata.FPS = 30;
        metadata.VideoFormat = "h264";
        metadata.AudioFormat = "aac";
        metadata.Duration = 61000;
        metadata.ASampleRate = 48000;
        metadata.AChannels = 2;
    }
    std::string Cells(int row) const {
        QStringList cells;
        for (int column = 0; column < View->AssetsView->columnCount(); ++column)
            cells += View->AssetsView->topLevelItem(row)->text(column);
        return cells.join(QLatin1Char(',')).toStdString();
    }
};

TEST_F(AssetsListTest, CellsShowWhatIsKnown) {
    AddAsset("C:\\Assets\\a.mov");
    AddAsset("b.mov");
    AddAsset("C:/Assets/c.mov", ZORVIC_ASSETSTATE_INGESTING);
    AddAsset("C:\\d.mov", static_cast<AssetState>(42));
    Unit.Assets[0].TotalSize = 1073741824;
    Unit.Assets[1].TotalSize = 1073741823;
    Unit.Metadata["b.mov"].AudioFormat.clear();
    Open();
    EXPECT_EQ(Cells(0), "a.mov,Ready,C:\\Assets,00:01:01,1.00GiB,1920x1080@30,h264/aac,48000,2");
    EXPECT_EQ(Cells(1), "b.mov,Ready,,00:01:01,1024.00MiB,1920x1080@30,h264,48000,2");
    EXPECT_EQ(Cells(2), "c.mov,Ingesting,C:/Assets,,512.00MiB,,,,");
    EXPECT_EQ(Cells(3), "d.mov,,C:,,512.00MiB,,,,");
    EXPECT_EQ(View->AssetsLabel->text(), QStringLiteral("<b>4</b> assets detected"));
    View->AcceptAssets({});
    EXPECT_EQ(View->AssetsLabel->text(), QStringLiteral("<b><font color=\"red\">No assets</font></b>"));
}

TEST_F(AssetsListTest, TheFirstScanCountsAndSurvivesTheEndOfItsDialogAndSession) {
    for (const char* path : {"C:\\a.mov", "C:\\b.mov", "C:\\c.mov"})
        AddAsset(path);
    Handle.reset();
    std::vector<std::string> counts;
    FakeZorvic::SetHook([&](const FakeZorvic::Call& call) {
        if (call.Operation != "ReadAssetMetadata") return;
        for (auto* window : QApplication::topLevelWidgets()) {
            auto* const dialog = qobject_cast<AssetsLoadingDialog*>(window);
            if (!dialog || !dialog->isVisible()) continue;
            counts.push_back(dialog->PBar->text().toStdString());
            if (counts.size() == 2) QTimer::singleShot(0, dialog, &QWidget::close);
            if (counts.size() == 2) QTimer::singleShot(0, qApp, [this] { Sessions.DeleteSessionByGUID("guid"); });
        }
    });
    Open();
    EXPECT_THAT(counts, ElementsAre("Asset 1 of 3 (33%)", "Asset 2 of 3 (66%)"));
    EXPECT_EQ(FakeZorvic::LiveSessions(), 0U);
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
    View->AssetsView->verticalScrollBar()->setValue(25);
    const auto older = Unit.Assets;
    AddAsset("C:\\newest");
    QTimer::singleShot(0, qApp, [this] {
        View->AssetsView->verticalScrollBar()->setValue(30);
        View->AcceptAssets(Unit.Assets);
    });
    View->AcceptAssets(older);
    EXPECT_EQ(View->AssetsView->topLevelItemCount(), 91);
    EXPECT_EQ(View->AssetsView->verticalScrollBar()->value(), 30);
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
