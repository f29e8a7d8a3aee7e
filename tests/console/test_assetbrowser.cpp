#include "assetbrowser.h"
#include "assetsloadingdialog.h"
#include "sessionmanager.h"
#include "support/fakezorvic.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <memory>
#include <thread>

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using Entries = std::vector<Zorvic::ExternalAsset>;

Zorvic::Drive MakeDrive(const std::string& mountpoint) {
    Zorvic::Drive drive;
    drive.Mountpoint = mountpoint;
    return drive;
}

Zorvic::ExternalAsset MakeEntry(const std::string& name, bool isDirectory) {
    Zorvic::ExternalAsset entry;
    entry.Filename = name;
    entry.IsDirectory = isDirectory;
    return entry;
}

Zorvic::Asset MakeAsset(const std::string& path, std::int64_t current, std::int64_t total) {
    Zorvic::Asset asset;
    asset.FullPath = path;
    asset.CurrentSize = current;
    asset.TotalSize = total;
    return asset;
}

class AssetBrowserTest : public testing::Test {
protected:
    AssetBrowserTest() {
        Unit.Drives = {MakeDrive("C"), MakeDrive("E")};
        Unit.Listings[{"C", ""}] = {MakeEntry("Assets", true)};
        Unit.Listings[{"C", "\\Assets"}] = {MakeEntry("z.mov", false), MakeEntry("b.mov", false)};
        Unit.Listings[{"E", ""}] = {MakeEntry("Sub", true), MakeEntry("b.mov", false), MakeEntry("a.mov", false)};
        Unit.Listings[{"E", "\\Sub"}] = {MakeEntry("Sub", true)};
        delete Sessions.CreateSessionByIP("host");
    }
    ~AssetBrowserTest() override { FakeZorvic::SetHook(nullptr); }

    /// The import browser, on drive E.
    void Open() {
        Browser = std::make_unique<AssetBrowser>("guid", false);
        Browser->DriveChoice->setCurrentText(QStringLiteral("E"));
    }
    QStringList Shown() const {
        QStringList names;
        for (int row = 0; row < Browser->AssetBrowserList->count(); ++row) {
            if (!Browser->AssetBrowserList->isRowHidden(row)) names += Browser->AssetBrowserList->item(row)->text();
        }
        return names;
    }
    void DoubleClick(int row) const {
        emit Browser->AssetBrowserList->itemDoubleClicked(Browser->AssetBrowserList->item(row));
    }
    void LetTimerFire() const { QMetaObject::invokeMethod(Browser->findChild<QTimer*>(), "timeout"); }

    FakeZorvic::Unit& Unit = (FakeZorvic::Reset(), FakeZorvic::AddUnit("host", "guid"));
    SessionManager Sessions;
    std::unique_ptr<AssetBrowser> Browser;
};

TEST_F(AssetBrowserTest, WalksFoldersDownAndUp) {
    Open();
    EXPECT_EQ(Shown(), QStringList({QStringLiteral("Sub"), QStringLiteral("b.mov"), QStringLiteral("a.mov")}));
    DoubleClick(0);
    EXPECT_EQ(Browser->PathChoice->text(), QStringLiteral("\\Sub"));
    EXPECT_EQ(Shown(), QStringList(QStringLiteral("Sub")));
    Browser->PathUpButton->click();
    EXPECT_EQ(Browser->PathChoice->text(), QString());
    EXPECT_EQ(Shown().size(), 3);
    FakeZorvic::ClearCalls();
    Browser->PathUpButton->click();
    EXPECT_THAT(FakeZorvic::Calls(), IsEmpty());
}

TEST_F(AssetBrowserTest, InternalModeStartsInTheUnitsAssetsAndReportsTheChosenFile) {
    Browser = std::make_unique<AssetBrowser>("guid", true);
    const QSignalSpy chosen(Browser.get(), &AssetBrowser::ItemsChosen);
    Browser->AssetBrowserList->item(1)->setSelected(true);
    DoubleClick(1);
    ASSERT_EQ(chosen.size(), 1);
    EXPECT_EQ(chosen.first().first().toStringList(), QStringList(QStringLiteral("C:\\Assets\\b.mov")));
}

TEST_F(AssetBrowserTest, RefreshKeepsWhatTheOperatorIsDoing) {
    auto& listing = Unit.Listings[{"E", ""}];
    for (int i = 0; i < 200; ++i) {
        listing.push_back(MakeEntry("take " + std::to_string(i) + ".mov", false));
    }
    Open();
    Browser->show();
    auto* const list = Browser->AssetBrowserList;
    const auto* const item = list->item(150);
    list->setCurrentRow(150);
    list->verticalScrollBar()->setValue(140);
    const QRect place = list->visualItemRect(item);
    QTest::mousePress(list->viewport(), Qt::LeftButton, {}, place.center());
    const int scrolled = list->verticalScrollBar()->value();
    listing.erase(listing.begin() + 160);
    listing.insert(listing.begin() + 155, MakeEntry("new.mov", false));
    Browser->RefreshAll();
    QApplication::processEvents();
    EXPECT_EQ(list->count(), 203);
    EXPECT_EQ(list->item(155)->text(), QStringLiteral("new.mov"));
    EXPECT_EQ(list->verticalScrollBar()->value(), scrolled);
    EXPECT_EQ(list->visualItemRect(item), place);
    EXPECT_EQ(list->currentItem(), item);
    const QSignalSpy clicked(list, &QListWidget::clicked);
    QTest::mouseRelease(list->viewport(), Qt::LeftButton, {}, place.center());
    EXPECT_EQ(clicked.size(), 1);
    EXPECT_EQ(Browser->GetSelectedPaths(), QStringList(QStringLiteral("E:\\take 147.mov")));
}

TEST_F(AssetBrowserTest, FilterHoldsForNewEntriesToo) {
    Open();
    testing::internal::CaptureStdout();
    Browser->FilterBox->setText(QStringLiteral("A.M"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Item Subfalse\nItem b.movfalse\nItem a.movtrue\n");
    Unit.Listings[{"E", ""}] = {MakeEntry("a.mov", false), MakeEntry("c.mov", false), MakeEntry("ba.mov", false)};
    Browser->RefreshAll();
    EXPECT_EQ(Shown(), QStringList({QStringLiteral("a.mov"), QStringLiteral("ba.mov")}));
}

TEST_F(AssetBrowserTest, RefillingTheDrivesListsNoOtherDrive) {
    Open();
    Browser->AssetBrowserList->item(1)->setSelected(true);
    Unit.Drives = {MakeDrive("C"), MakeDrive("D"), MakeDrive("E")};
    FakeZorvic::ClearCalls();
    Browser->RefreshAll();
    EXPECT_EQ(Browser->DriveChoice->count(), 3);
    ASSERT_EQ(FakeZorvic::Calls("GetDiskAssets").size(), 1U);
    EXPECT_THAT(FakeZorvic::LastCall("GetDiskAssets").Texts, ElementsAre("E", ""));
    EXPECT_EQ(Browser->GetSelectedPaths(), QStringList(QStringLiteral("E:\\b.mov")));
}

TEST_F(AssetBrowserTest, ChosenDriveIsInUseAgainAfterAnOutage) {
    Open();
    Unit.Fail("GetDisks", Zorvic::ZORVIC_STATUS_FAILED);
    Browser->RefreshAll();
    EXPECT_EQ(Browser->DriveChoice->count(), 0);
    EXPECT_EQ(Shown().size(), 3);
    Unit.Succeed("GetDisks");
    Browser->RefreshAll();
    EXPECT_EQ(Browser->DriveChoice->currentText(), QStringLiteral("E"));
}

TEST_F(AssetBrowserTest, AnotherDriveDoesNotStepInForOneThatIsGone) {
    Open();
    Browser->AssetBrowserList->item(1)->setSelected(true);
    Unit.Drives = {MakeDrive("C")};
    Unit.Listings.erase({"E", ""});
    Browser->RefreshAll();
    EXPECT_EQ(Shown().size(), 3);
    EXPECT_TRUE(Browser->GetSelectedPaths().isEmpty());
    Browser->DriveChoice->setCurrentIndex(0);
    EXPECT_EQ(Shown(), QStringList(QStringLiteral("Assets")));
}

TEST_F(AssetBrowserTest, FolderThatIsSlowToOpenIsEnteredOnce) {
    Open();
    Unit.Fail("GetDiskAssets", Zorvic::ZORVIC_STATUS_FAILED, 2);
    DoubleClick(0);
    DoubleClick(0);
    EXPECT_EQ(Shown().size(), 3);
    Browser->RefreshAll();
    EXPECT_EQ(Browser->PathChoice->text(), QStringLiteral("\\Sub"));
    EXPECT_EQ(Shown().size(), 1);
}

TEST_F(AssetBrowserTest, ReturnInThePathFieldListsAndElsewhereSelects) {
    Open();
    Browser->show();
    QApplication::setActiveWindow(Browser.get());
    const QSignalSpy chosen(Browser.get(), &AssetBrowser::ItemsChosen);
    Browser->PathChoice->setFocus();
    QTest::keyClicks(Browser->PathChoice, QStringLiteral("\\Sub"));
    QTest::keyClick(Browser->PathChoice, Qt::Key_Return);
    EXPECT_EQ(Shown().size(), 1);
    EXPECT_EQ(chosen.size(), 0);
    Browser->AssetBrowserList->setFocus();
    Browser->AssetBrowserList->selectAll();
    QTest::keyClick(Browser->AssetBrowserList, Qt::Key_Return);
    ASSERT_EQ(chosen.size(), 1);
    EXPECT_TRUE(chosen.first().first().toStringList().isEmpty());  // only a folder was selected
    QTest::keyClick(Browser->PathChoice, Qt::Key_Escape);
    EXPECT_FALSE(Browser->isVisible());
}

TEST_F(AssetBrowserTest, ImportInstallsEveryFileAndGoesOnAfterAFailure) {
    Open();
    QObject::connect(Browser.get(), &AssetBrowser::ItemsChosen, Browser.get(), &AssetBrowser::PerformImport);
    Browser->AssetBrowserList->selectAll();
    Unit.Fail("InstallAsset", Zorvic::ZORVIC_STATUS_FAILED, 1);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Browser->SelectButton->click();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Ingesting asset at \"E:\\b.mov\".\nIngesting asset at \"E:\\a.mov\".\n");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("Error ingesting asset E:\\b.mov\n"));
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("InstallAsset E:\\b.mov", "InstallAsset E:\\a.mov"));
}

TEST_F(AssetBrowserTest, ProgressCountsTheImportedFilesUntilTheyAreComplete) {
    Open();
    auto* const bar = Browser->IngestProgressBar;
    const auto* const all = Browser->AssetBrowserList;
    const auto import = [&] {
        Browser->AssetBrowserList->selectAll();
        Browser->PerformImport();
    };
    ASSERT_EQ(all->count(), 3);
    EXPECT_TRUE(bar->isHidden());
    import();
    const auto other = MakeAsset("C:\\Assets\\other.mov", 5000, 5000);
    Browser->UpdateIngestProgress({other, MakeAsset("C:\\Assets\\a.mov", 199, 200), MakeAsset("b.mov", 1, 100)});
    EXPECT_FALSE(bar->isHidden());
    EXPECT_EQ(bar->value(), 66);
    Browser->UpdateIngestProgress({MakeAsset("a.mov", 200, 200), MakeAsset("b.mov", 100, 100)});
    EXPECT_TRUE(bar->isHidden());
    Browser->UpdateIngestProgress({MakeAsset("a.mov", 1, 200)});
    EXPECT_TRUE(bar->isHidden());  // the import is over
    import();
    Browser->UpdateIngestProgress({MakeAsset("a.mov", 0, 0), other});
    EXPECT_TRUE(bar->isHidden());
    EXPECT_EQ(bar->value(), 0);
}

TEST_F(AssetBrowserTest, BrowserMayBeDestroyedInsideAnyOfItsCalls) {
    for (const std::string operation : {"GetDisks", "GetDiskAssets", "InstallAsset"}) {
        Open();
        Browser->AssetBrowserList->selectAll();
        FakeZorvic::SetHook([&](const FakeZorvic::Call& call) {
            if (call.Operation == operation) Browser.reset();
        });
        operation == "InstallAsset" ? Browser->PerformImport() : Browser->RefreshAll();
        FakeZorvic::SetHook(nullptr);
        EXPECT_EQ(Browser, nullptr) << operation;
    }
}

TEST_F(AssetBrowserTest, HiddenBrowserIsRefreshedUnlessItsDriveIsSlow) {
    Open();
    FakeZorvic::ClearCalls();
    LetTimerFire();
    EXPECT_EQ(FakeZorvic::Calls("GetDiskAssets").size(), 1U);
    FakeZorvic::SetHook([](const FakeZorvic::Call& call) {
        if (call.Operation == "GetDiskAssets") std::this_thread::sleep_for(60ms);  // what the measure is about
    });
    LetTimerFire();
    FakeZorvic::ClearCalls();
    LetTimerFire();
    EXPECT_THAT(FakeZorvic::Calls("GetDiskAssets"), IsEmpty());
    Browser->show();
    LetTimerFire();
    EXPECT_EQ(FakeZorvic::Calls("GetDiskAssets").size(), 1U);
}

TEST_F(AssetBrowserTest, NothingHappensWithoutASession) {
    Open();
    Sessions.DeleteSessionByGUID("guid");
    Browser->AssetBrowserList->selectAll();
    FakeZorvic::ClearCalls();
    LetTimerFire();
    Browser->PerformImport();
    EXPECT_THAT(FakeZorvic::Calls(), IsEmpty());
    EXPECT_EQ(Browser->DriveChoice->count(), 2);
    EXPECT_EQ(Shown().size(), 3);
}

TEST(AssetsLoadingDialogTest, CountsUpToTheTotal) {
    AssetsLoadingDialog dialog;
    dialog.SetTotal(40);
    dialog.Increment();
    dialog.Increment();
    EXPECT_EQ(dialog.PBar->text(), QStringLiteral("Asset 2 of 40 (5%)"));
}

}  // namespace
