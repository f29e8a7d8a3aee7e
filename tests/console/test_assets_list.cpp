#include "assetsloadingdialog.h"
#include "assettext.h"
#include "viewfixture.h"

using namespace Zorvic;
using testing::ElementsAre;
using testing::SizeIs;

namespace {

class AssetsListTest : public ViewTest {
protected:
    void AddAsset(const std::string& path, AssetState status, const std::string& audio) {
        Asset asset;
        asset.FullPath = path;
        asset.Checksum = "sum";
        asset.TotalSize = 1LL << 29;
        asset.Status = status;
        Unit.Assets.push_back(asset);
        auto& metadata = Unit.Metadata[path];
        metadata.Resolution = {1920, 1080};
        metadata.FPS = 30;
        metadata.VideoFormat = "h264";
        metadata.AudioFormat = audio;
        metadata.Duration = 61000;
        metadata.ASampleRate = 48000;
        metadata.AChannels = 2;
    }
    std::vector<std::string> Cells(int row) const {
        std::vector<std::string> cells(9);
        for (int column = 0; column < 9; ++column)
            cells[static_cast<std::size_t>(column)] = View->AssetsView->topLevelItem(row)->text(column).toStdString();
        return cells;
    }
};

TEST(AssetText, SizesTurnToGiBAtTheExactByte) {
    EXPECT_EQ(SizeText(1073741824), QStringLiteral("1.00GiB"));
    EXPECT_EQ(SizeText(1073741823), QStringLiteral("1024.00MiB"));
}

TEST_F(AssetsListTest, CellsShowWhatIsKnown) {
    AddAsset("C:\\Assets\\a.mov", ZORVIC_ASSETSTATE_READY, "aac");
    AddAsset("b.mov", ZORVIC_ASSETSTATE_READY, "");
    AddAsset("C:/Assets/c.mov", ZORVIC_ASSETSTATE_INGESTING, "aac");
    AddAsset("C:\\d.mov", static_cast<AssetState>(42), "aac");
    Open();
    EXPECT_THAT(Cells(0), ElementsAre("a.mov", "Ready", "C:\\Assets", "00:01:01", "512.00MiB", "1920x1080@30",
                                      "h264/aac", "48000", "2"));
    EXPECT_THAT(Cells(1),
                ElementsAre("b.mov", "Ready", "", "00:01:01", "512.00MiB", "1920x1080@30", "h264", "48000", "2"));
    EXPECT_THAT(Cells(2), ElementsAre("c.mov", "Ingesting", "C:/Assets", "", "512.00MiB", "", "", "", ""));
    EXPECT_THAT(Cells(3), ElementsAre("d.mov", "", "C:", "", "512.00MiB", "", "", "", ""));
    EXPECT_EQ(View->AssetsLabel->text(), QStringLiteral("<b>4</b> assets detected"));
    View->AcceptAssets({});
    EXPECT_EQ(View->AssetsLabel->text(), QStringLiteral("<b><font color=\"red\">No assets</font></b>"));
}

TEST_F(AssetsListTest, TheFirstScanCountsAndFillsTheCacheForTheList) {
    for (const char* path : {"C:\\a.mov", "C:\\b.mov", "C:\\c.mov"})
        AddAsset(path, ZORVIC_ASSETSTATE_READY, "aac");
    std::vector<std::string> counts;
    FakeZorvic::SetHook([&](const FakeZorvic::Call& call) {
        if (call.Operation != "ReadAssetMetadata") return;
        counts.emplace_back("no dialog");
        for (const auto* window : QApplication::topLevelWidgets()) {
            const auto* const dialog = qobject_cast<const AssetsLoadingDialog*>(window);
            if (dialog && dialog->isVisible()) counts.back() = dialog->PBar->text().toStdString();
        }
    });
    Open();
    EXPECT_THAT(counts, ElementsAre("Asset 1 of 3 (33%)", "Asset 2 of 3 (66%)", "Asset 3 of 3 (100%)"));
}

TEST_F(AssetsListTest, TheFirstScanSurvivesTheEndOfItsSession) {
    AddAsset("C:\\a.mov", ZORVIC_ASSETSTATE_READY, "aac");
    Handle.reset();
    QTimer::singleShot(0, qApp, [this] { Sessions.DeleteSessionByGUID("guid"); });
    const ZorvicView view("guid", "host");
    EXPECT_EQ(FakeZorvic::LiveSessions(), 0U);
    EXPECT_THAT(FakeZorvic::Calls("ReadAssetMetadata"), SizeIs(0));
}

TEST_F(AssetsListTest, DeletingGoesOnAfterARefusal) {
    AddAsset("C:\\a.mov", ZORVIC_ASSETSTATE_READY, "aac");
    AddAsset("C:\\b.mov", ZORVIC_ASSETSTATE_READY, "aac");
    Open();
    Unit.Fail("DeleteAsset", ZORVIC_STATUS_FAILED, 1);
    View->AssetsView->topLevelItem(0)->setSelected(true);
    View->AssetsView->topLevelItem(1)->setSelected(true);
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
        AddAsset("C:\\" + std::to_string(i), ZORVIC_ASSETSTATE_READY, "aac");
    Open();
    View->AssetsView->verticalScrollBar()->setValue(25);
    const auto older = Unit.Assets;
    QTimer::singleShot(0, qApp, [this] {
        AddAsset("C:\\newest", ZORVIC_ASSETSTATE_READY, "aac");
        View->AcceptAssets(Unit.Assets);
    });
    View->AcceptAssets(older);
    EXPECT_EQ(View->AssetsView->topLevelItemCount(), 91);
    EXPECT_EQ(View->AssetsView->verticalScrollBar()->value(), 25);
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
