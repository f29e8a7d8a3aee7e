#include "assetbrowser.h"

#include "fixtures.h"

#include <QSignalSpy>

#include <thread>

using namespace std::chrono_literals;

namespace {

/// A browser on drive E of two. An entry without a dot is a folder.
class AssetBrowserTest : public UnitTest {
protected:
    AssetBrowserTest() {
        SetDrives({"C", "E"});
        SetFolder("C", "\\Assets", {"z.mov", "b.mov"});
        SetFolder("E", "", {"Sub", "b.mov", "a.mov"});
        SetFolder("E", "\\Sub", {"Sub"});
        Browser.RefreshAll();
        Browser.DriveChoice->setCurrentText(QStringLiteral("E"));
        FakeZorvic::Calls.clear();
    }

    void SetDrives(const std::vector<std::string>& mountpoints) {
        Unit.Drives.clear();
        for (const auto& mountpoint : mountpoints)
            Unit.Drives.emplace_back().Mountpoint = mountpoint;
    }
    void SetFolder(const std::string& drive, const std::string& path, const std::vector<std::string>& names) {
        auto& entries = Unit.Listings[{drive, path}];
        entries.clear();
        for (const auto& name : names) {
            entries.emplace_back().Filename = name;
            entries.back().IsDirectory = name.find('.') == std::string::npos;
        }
    }
    std::string Shown() const {
        QStringList names;
        for (int row = 0; row < List->count(); ++row)
            if (!List->isRowHidden(row)) names += List->item(row)->text();
        return names.join(QLatin1Char(' ')).toStdString();
    }
    std::string SelectedPaths() const { return Browser.GetSelectedPaths().join(QLatin1Char(' ')).toStdString(); }
    int ListingsOfATimerTick() const {
        FakeZorvic::Calls.clear();
        QMetaObject::invokeMethod(Browser.findChild<QTimer*>(), "timeout");
        return FakeZorvic::Counts()["GetDiskAssets"];
    }

    AssetBrowser Browser{"guid", false};
    QListWidget* List = Browser.AssetBrowserList;
};

TEST_F(AssetBrowserTest, WalksFoldersAndEntersOnceOneThatIsSlowToOpen) {
    Unit.Fail("GetDiskAssets", Zorvic::ZORVIC_STATUS_FAILED, 2);
    emit List->itemDoubleClicked(List->item(0));
    emit List->itemDoubleClicked(List->item(0));
    EXPECT_EQ(Shown(), "Sub b.mov a.mov");
    Browser.RefreshAll();
    EXPECT_EQ(Browser.PathChoice->text(), QStringLiteral("\\Sub"));
    EXPECT_EQ(Shown(), "Sub");
    Browser.PathUpButton->click();
    EXPECT_EQ(Shown(), "Sub b.mov a.mov");
}

TEST_F(AssetBrowserTest, InternalModeStartsInTheUnitsAssetsAndReportsTheChosenFile) {
    AssetBrowser browser("guid", true);
    const QSignalSpy chosen(&browser, &AssetBrowser::ItemsChosen);
    browser.AssetBrowserList->setCurrentRow(1);
    emit browser.AssetBrowserList->itemDoubleClicked(browser.AssetBrowserList->item(1));
    EXPECT_EQ(chosen.value(0).value(0).toStringList(), QStringList(QStringLiteral("C:\\Assets\\b.mov")));
}

TEST_F(AssetBrowserTest, RefreshKeepsAPressedRowAndFiltersNewOnes) {
    Browser.show();
    Browser.FilterBox->setText(QStringLiteral("B.M"));
    const QPoint place = List->visualItemRect(List->item(1)).center();
    const QSignalSpy clicked(List, &QListWidget::clicked);
    QTest::mousePress(List->viewport(), Qt::LeftButton, {}, place);
    SetFolder("E", "", {"Sub", "b.mov", "c.mov", "bb.mov"});
    Browser.RefreshAll();
    EXPECT_EQ(Shown(), "b.mov bb.mov");
    QTest::mouseRelease(List->viewport(), Qt::LeftButton, {}, place);
    EXPECT_EQ(clicked.size(), 1);
    EXPECT_EQ(SelectedPaths(), "E:\\b.mov");
}

TEST_F(AssetBrowserTest, ChosenDriveStaysThroughARefillAndAnOutage) {
    List->item(1)->setSelected(true);
    SetDrives({"A", "C", "E"});
    Browser.RefreshAll();
    EXPECT_EQ(Browser.DriveChoice->count(), 3);
    EXPECT_EQ(SelectedPaths(), "E:\\b.mov");
    SetDrives({"C"});
    for (const int drives : {1, 0}) {
        Browser.RefreshAll();
        EXPECT_EQ(Browser.DriveChoice->count(), drives);
        EXPECT_EQ(Shown(), "Sub b.mov a.mov") << "no other drive steps in";
        EXPECT_EQ(SelectedPaths(), "") << "no paths without a drive";
        Unit.Fail("GetDisks", Zorvic::ZORVIC_STATUS_FAILED, 1);
    }
}

TEST_F(AssetBrowserTest, ReturnActsOnThePathFieldAndElsewhereSelects) {
    Browser.show();
    QApplication::setActiveWindow(&Browser);
    const QSignalSpy chosen(&Browser, &AssetBrowser::ItemsChosen);
    Browser.PathChoice->setFocus();
    List->item(1)->setSelected(true);
    Browser.PathChoice->setText(QStringLiteral("\\Sub"));
    EXPECT_EQ(SelectedPaths(), "") << "the typed folder is not the listed one";
    QTest::keyClick(Browser.PathChoice, Qt::Key_Return);
    EXPECT_EQ(Shown(), "Sub");
    EXPECT_EQ(chosen.size(), 0);
    List->setFocus();
    QTest::keyClick(List, Qt::Key_Return);
    EXPECT_EQ(chosen.size(), 1);
    QTest::keyClick(Browser.PathChoice, Qt::Key_Escape);
    EXPECT_FALSE(Browser.isVisible());
}

TEST_F(AssetBrowserTest, ImportGoesOnAfterAFailureAndShowsItsProgress) {
    QObject::connect(&Browser, &AssetBrowser::ItemsChosen, &Browser, &AssetBrowser::PerformImport);
    List->selectAll();
    Unit.Fail("InstallAsset", Zorvic::ZORVIC_STATUS_FAILED, 1);
    testing::internal::CaptureStderr();
    Browser.SelectButton->click();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error ingesting asset E:\\b.mov\n");
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("InstallAsset E:\\b.mov", "InstallAsset E:\\a.mov"));

    AddAsset("C:\\Assets\\other.mov").TotalSize = 5000;  // of no file of the import
    AddAsset("C:\\Assets\\a.mov");
    const auto progress = [this](int current, int total) {
        Unit.Assets[1].CurrentSize = current;
        Unit.Assets[1].TotalSize = total;
        Browser.UpdateIngestProgress(Unit.Assets);
        return Browser.IngestProgressBar->isHidden() ? -1 : Browser.IngestProgressBar->value();
    };
    EXPECT_EQ(progress(199, 300), 66);
    EXPECT_EQ(progress(300, 300), -1);
    EXPECT_EQ(progress(1, 300), -1) << "no longer part of an import";
}

TEST_F(AssetBrowserTest, HiddenBrowserIsRefreshedUnlessItsDriveIsSlowOrTheSessionGone) {
    EXPECT_EQ(ListingsOfATimerTick(), 1);
    FakeZorvic::Hook = [](const FakeZorvic::Call& call) {
        if (call.Operation == "GetDiskAssets") std::this_thread::sleep_for(60ms);  // what is measured
    };
    EXPECT_EQ(ListingsOfATimerTick(), 1);
    EXPECT_EQ(ListingsOfATimerTick(), 0);
    Browser.show();
    EXPECT_EQ(ListingsOfATimerTick(), 1);
    Disconnect();
    List->selectAll();
    Browser.PerformImport();
    EXPECT_EQ(ListingsOfATimerTick(), 0);
}

TEST(ImportRate, IsThatOfTheLastSecondsAndTellsWhatIsLeft) {
    constexpr std::int64_t MiB = 1 << 20;
    ImportRate rate;
    ImportSums sums{.Files = 5, .FilesDone = 2, .Total = 1024 * MiB, .Current = 100 * MiB};
    rate.Note(sums.Current, 0);
    EXPECT_EQ(ImportText(sums, rate.BytesPerSecond()), QStringLiteral("2 of 5 files, 100.00MiB of 1.00GiB"));
    for (int second = 1; second <= 20; ++second)
        rate.Note((100 + (second < 10 ? 0 : 10 * (second - 10))) * MiB, 1000 * second);
    sums.Current = 200 * MiB;
    EXPECT_EQ(rate.BytesPerSecond(), 10 * MiB) << "not what it was when it stood still";
    EXPECT_EQ(ImportText(sums, rate.BytesPerSecond()),
              QStringLiteral("2 of 5 files, 200.00MiB of 1.00GiB, 10.00MiB/s, 00:01:22 left"));
    rate.Note(0, 21000);
    EXPECT_EQ(rate.BytesPerSecond(), 0) << "another import";
}

}  // namespace
