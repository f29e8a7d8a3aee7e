#include "assetbrowser.h"
#include "sessionmanager.h"
#include "support/fakezorvic.h"

#include <gmock/gmock.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <memory>
#include <thread>

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

Zorvic::ExternalAsset MakeEntry(const std::string& name) {
    Zorvic::ExternalAsset entry;
    entry.Filename = name;
    entry.IsDirectory = name.find('.') == std::string::npos;
    return entry;
}

Zorvic::Asset MakeAsset(const std::string& path, std::int64_t current, std::int64_t total) {
    Zorvic::Asset asset;
    asset.FullPath = path;
    asset.CurrentSize = current;
    asset.TotalSize = total;
    return asset;
}

/// A browser on drive E of two. An entry without a dot is a folder.
class AssetBrowserTest : public testing::Test {
protected:
    AssetBrowserTest() {
        SetDrives({"C", "E"});
        SetFolder("C", "", {"Assets"});
        SetFolder("C", "\\Assets", {"z.mov", "b.mov"});
        SetFolder("E", "", {"Sub", "b.mov", "a.mov"});
        SetFolder("E", "\\Sub", {"Sub"});
        delete Sessions.CreateSessionByIP("host");
        Open(false);
        Browser->DriveChoice->setCurrentText(QStringLiteral("E"));
        FakeZorvic::ClearCalls();
    }
    ~AssetBrowserTest() override { FakeZorvic::SetHook(nullptr); }

    void SetDrives(const std::vector<std::string>& mountpoints) {
        Unit.Drives.assign(mountpoints.size(), {});
        for (std::size_t i = 0; i < mountpoints.size(); ++i)
            Unit.Drives[i].Mountpoint = mountpoints[i];
    }
    void SetFolder(const std::string& drive, const std::string& path, const std::vector<std::string>& names) {
        auto& listing = Unit.Listings[{drive, path}];
        listing.clear();
        for (const auto& name : names)
            listing.push_back(MakeEntry(name));
    }
    void Open(bool internalMode) {
        Browser = std::make_unique<AssetBrowser>("guid", internalMode);
        List = Browser->AssetBrowserList;
    }
    std::string Shown() const {
        QStringList names;
        for (int row = 0; row < List->count(); ++row) {
            if (!List->isRowHidden(row)) names += List->item(row)->text();
        }
        return names.join(QLatin1Char(' ')).toStdString();
    }
    std::string SelectedPaths() const { return Browser->GetSelectedPaths().join(QLatin1Char(' ')).toStdString(); }
    void DoubleClick(int row) const { emit List->itemDoubleClicked(List->item(row)); }
    std::size_t ListingsOfATimerTick() const {
        FakeZorvic::ClearCalls();
        QMetaObject::invokeMethod(Browser->findChild<QTimer*>(), "timeout");
        return FakeZorvic::Calls("GetDiskAssets").size();
    }

    FakeZorvic::Unit& Unit = (FakeZorvic::Reset(), FakeZorvic::AddUnit("host", "guid"));
    SessionManager Sessions;
    std::unique_ptr<AssetBrowser> Browser;
    QListWidget* List = nullptr;
};

TEST_F(AssetBrowserTest, WalksFoldersAndEntersOnceOneThatIsSlowToOpen) {
    Unit.Fail("GetDiskAssets", Zorvic::ZORVIC_STATUS_FAILED, 2);
    DoubleClick(0);
    DoubleClick(0);
    EXPECT_EQ(Shown(), "Sub b.mov a.mov");
    Browser->RefreshAll();
    EXPECT_EQ(Browser->PathChoice->text(), QStringLiteral("\\Sub"));
    EXPECT_EQ(Shown(), "Sub");
    Browser->PathUpButton->click();
    EXPECT_EQ(Shown(), "Sub b.mov a.mov");
    FakeZorvic::ClearCalls();
    Browser->PathUpButton->click();
    EXPECT_THAT(FakeZorvic::Calls(), IsEmpty());
}

TEST_F(AssetBrowserTest, InternalModeStartsInTheUnitsAssetsAndReportsTheChosenFile) {
    Open(true);
    const QSignalSpy chosen(Browser.get(), &AssetBrowser::ItemsChosen);
    List->item(1)->setSelected(true);
    DoubleClick(1);
    EXPECT_EQ(chosen.value(0).value(0).toStringList(), QStringList(QStringLiteral("C:\\Assets\\b.mov")));
}

TEST_F(AssetBrowserTest, RefreshKeepsWhatTheOperatorIsDoing) {
    auto& listing = Unit.Listings[{"E", ""}];
    for (int i = 0; i < 200; ++i)
        listing.push_back(MakeEntry(std::to_string(i) + ".mov"));
    Browser->RefreshAll();
    Browser->show();
    const auto* const item = List->item(150);
    List->scrollToItem(item);
    const QRect place = List->visualItemRect(item);
    const QSignalSpy clicked(List, &QListWidget::clicked);
    QTest::mousePress(List->viewport(), Qt::LeftButton, {}, place.center());
    listing.erase(listing.begin() + 160);
    listing.insert(listing.begin() + 155, MakeEntry("new.mov"));
    Browser->RefreshAll();
    QApplication::processEvents();
    EXPECT_EQ(List->item(155)->text(), QStringLiteral("new.mov"));
    EXPECT_EQ(List->count(), 203);
    EXPECT_EQ(List->visualItemRect(item), place);
    QTest::mouseRelease(List->viewport(), Qt::LeftButton, {}, place.center());
    EXPECT_EQ(clicked.size(), 1);
    EXPECT_EQ(SelectedPaths(), "E:\\147.mov");
}

TEST_F(AssetBrowserTest, FilterHoldsForNewEntriesToo) {
    testing::internal::CaptureStdout();
    Browser->FilterBox->setText(QStringLiteral("A.M"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Item Subfalse\nItem b.movfalse\nItem a.movtrue\n");
    SetFolder("E", "", {"a.mov", "c.mov", "ba.mov"});
    Browser->RefreshAll();
    EXPECT_EQ(Shown(), "a.mov ba.mov");
}

TEST_F(AssetBrowserTest, ChosenDriveStaysThroughARefillAndAnOutage) {
    List->item(1)->setSelected(true);
    SetDrives({"A", "C", "E"});
    Browser->RefreshAll();
    EXPECT_EQ(Browser->DriveChoice->count(), 3);
    ASSERT_EQ(FakeZorvic::Calls("GetDiskAssets").size(), 1U);
    EXPECT_THAT(FakeZorvic::LastCall("GetDiskAssets").Texts, ElementsAre("E", ""));
    EXPECT_EQ(SelectedPaths(), "E:\\b.mov");
    Unit.Fail("GetDisks", Zorvic::ZORVIC_STATUS_FAILED, 1);
    Browser->RefreshAll();
    EXPECT_EQ(Browser->DriveChoice->count(), 0);
    EXPECT_EQ(Shown(), "Sub b.mov a.mov");
    EXPECT_EQ(SelectedPaths(), "") << "no paths without a drive";
    SetDrives({"C"});
    Browser->RefreshAll();
    EXPECT_EQ(Shown(), "Sub b.mov a.mov") << "no other drive steps in";
    SetDrives({"C", "E"});
    Browser->RefreshAll();
    EXPECT_EQ(SelectedPaths(), "E:\\b.mov");
}

TEST_F(AssetBrowserTest, ReturnActsOnThePathFieldOrTheOpenDriveListAndElsewhereSelects) {
    Browser->show();
    QApplication::setActiveWindow(Browser.get());
    const QSignalSpy chosen(Browser.get(), &AssetBrowser::ItemsChosen);
    Browser->PathChoice->setFocus();
    Browser->PathChoice->setText(QStringLiteral("\\Sub"));
    QTest::keyClick(Browser->PathChoice, Qt::Key_Return);
    EXPECT_EQ(Shown(), "Sub");
    Browser->DriveChoice->showPopup();
    QTest::keyClick(Browser->DriveChoice->view(), Qt::Key_Return);
    EXPECT_EQ(chosen.size(), 0);
    QApplication::setActiveWindow(Browser.get());
    List->setFocus();
    List->selectAll();
    QTest::keyClick(List, Qt::Key_Return);
    ASSERT_EQ(chosen.size(), 1);
    EXPECT_TRUE(chosen.first().first().toStringList().isEmpty());  // only a folder was selected
    QTest::keyClick(Browser->PathChoice, Qt::Key_Escape);
    EXPECT_FALSE(Browser->isVisible());
}

TEST_F(AssetBrowserTest, ImportGoesOnAfterAFailureAndShowsItsProgress) {
    QObject::connect(Browser.get(), &AssetBrowser::ItemsChosen, Browser.get(), &AssetBrowser::PerformImport);
    List->selectAll();
    Unit.Fail("InstallAsset", Zorvic::ZORVIC_STATUS_FAILED, 1);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Browser->SelectButton->click();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Ingesting asset at \"E:\\b.mov\".\nIngesting asset at \"E:\\a.mov\".\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error ingesting asset E:\\b.mov\n");
    EXPECT_THAT(FakeZorvic::Commands(), ElementsAre("InstallAsset E:\\b.mov", "InstallAsset E:\\a.mov"));

    const auto* const bar = Browser->IngestProgressBar;
    const auto other = MakeAsset("C:\\Assets\\other.mov", 5000, 5000);
    Browser->UpdateIngestProgress({other, MakeAsset("C:\\Assets\\a.mov", 199, 200), MakeAsset("b.mov", 1, 100)});
    EXPECT_FALSE(bar->isHidden());
    EXPECT_EQ(bar->value(), 66);
    Browser->UpdateIngestProgress({MakeAsset("a.mov", 200, 200), MakeAsset("b.mov", 100, 100)});
    EXPECT_TRUE(bar->isHidden());
    Browser->UpdateIngestProgress({MakeAsset("a.mov", 1, 200)});  // no longer part of an import
    EXPECT_TRUE(bar->isHidden());
    Browser->PerformImport();
    Browser->UpdateIngestProgress({MakeAsset("a.mov", 0, 0), other});
    EXPECT_TRUE(bar->isHidden());
}

TEST_F(AssetBrowserTest, BrowserMayBeDestroyedInsideAnyOfItsCalls) {
    for (const std::string operation : {"GetDisks", "GetDiskAssets", "InstallAsset"}) {
        Open(true);
        List->selectAll();
        FakeZorvic::SetHook([&](const FakeZorvic::Call& call) {
            if (call.Operation == operation) Browser.reset();
        });
        operation == "InstallAsset" ? Browser->PerformImport() : Browser->RefreshAll();
        FakeZorvic::SetHook(nullptr);
        EXPECT_EQ(Browser, nullptr) << operation;
    }
}

TEST_F(AssetBrowserTest, HiddenBrowserIsRefreshedUnlessItsDriveIsSlowOrTheSessionGone) {
    EXPECT_EQ(ListingsOfATimerTick(), 1U);
    FakeZorvic::SetHook([](const FakeZorvic::Call& call) {
        if (call.Operation == "GetDiskAssets") std::this_thread::sleep_for(60ms);  // what is measured
    });
    EXPECT_EQ(ListingsOfATimerTick(), 1U);
    EXPECT_EQ(ListingsOfATimerTick(), 0U);
    Browser->show();
    EXPECT_EQ(ListingsOfATimerTick(), 1U);
    Sessions.DeleteSessionByGUID("guid");
    List->selectAll();
    Browser->PerformImport();
    EXPECT_EQ(ListingsOfATimerTick(), 0U);
    EXPECT_EQ(Browser->DriveChoice->count(), 2);
    EXPECT_EQ(Shown(), "Sub b.mov a.mov");
}

}  // namespace
