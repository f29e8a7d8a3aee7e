#include "fixtures.h"

namespace {

Zorvic::LANZorvic MakeUnit(const std::string& ip, const std::string& nickname = "Stage") {
    Zorvic::LANZorvic unit;
    unit.IP = ip;
    unit.GUID = "guid-" + ip;
    unit.Nickname = nickname;
    unit.CurrentRole = Zorvic::ZORVIC_ROLE_PRIMARY;
    unit.Type = Zorvic::ZORVIC_UTYPE_LUMEN;
    unit.CommunicatorVersion = "7.1";
    unit.APIVersion = "3";
    return unit;
}

/// The chooser in front of an empty main window; a unit answers at "host".
class Chooser : public UnitTest {
protected:
    Chooser() {
        FakeZorvic::Calls.clear();
        Window.RefreshLANZorvics();
        EXPECT_TRUE(FakeZorvic::Calls.empty()) << "no search while hidden";
        ShowActive();
    }

    /// What the list holds from now on, as the next periodic refresh finds it.
    void Find(const std::vector<Zorvic::LANZorvic>& units) {
        FakeZorvic::LANUnits = units;
        Window.RefreshLANZorvics();
    }
    void ShowActive() {
        Window.show();
        Window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&Window));
    }
    void Press(QTreeWidgetItem* item) {
        QTest::mouseClick(List->viewport(), Qt::LeftButton, {}, List->visualItemRect(item).center());
    }
    std::string Address() const { return Window.ZorvicIPBox->text().toStdString(); }

    MainWindow Main;
    ZorvicChooser Window{&Main};
    QTreeWidget* List = Window.ZorvicFinderList;
};

TEST_F(Chooser, ShowsWhatIsKnownOfUnitsAndOffersTheFirstWhenNothingIsTyped) {
    auto newer = MakeUnit("10.0.0.2", "guid-10.0.0.2");
    newer.Type = static_cast<Zorvic::UnitType>(17);
    newer.CurrentRole = Zorvic::ZORVIC_ROLE_MAX;
    Window.ZorvicIPBox->setText(QStringLiteral("192.168.7"));
    Find({MakeUnit("10.0.0.1"), newer});
    EXPECT_EQ(Row(List, 0), "10.0.0.1,Stage,Lumen,guid-10.0.0.1,Primary,7.1,3");
    EXPECT_EQ(Row(List, 1), "10.0.0.2,(none),,guid-10.0.0.2,,7.1,3");
    EXPECT_EQ(Address(), "192.168.7");
    Window.ZorvicIPBox->clear();
    Window.RefreshLANZorvics();
    EXPECT_EQ(Address(), "10.0.0.1");
}

TEST_F(Chooser, TheSelectionFollowsItsUnitAndEndsWithIt) {
    Find({MakeUnit("10.0.0.2"), MakeUnit("10.0.0.3")});
    auto* row = List->topLevelItem(1);
    Press(row);
    EXPECT_EQ(Address(), "10.0.0.3");
    Find({MakeUnit("10.0.0.1"), MakeUnit("10.0.0.3", "renamed"), MakeUnit("10.0.0.2")});
    EXPECT_EQ(List->topLevelItem(1), row) << "a row that a click is under way on must stay";
    EXPECT_EQ(row->text(1), QStringLiteral("renamed"));
    EXPECT_EQ(List->selectedItems(), QList<QTreeWidgetItem*>{row});
    QTest::keyClick(List, Qt::Key_Down);
    EXPECT_EQ(Address(), "10.0.0.2") << "the arrow keys choose, too";
    Find({MakeUnit("10.0.0.1"), MakeUnit("10.0.0.3")});
    EXPECT_TRUE(List->selectedItems().isEmpty());
}

TEST_F(Chooser, ReturnAnywhereAndADoubleClickConnectOnceWhereAUnitAnswers) {
    for (const char* nobody : {"", " 10.0.0.9 "}) {
        Window.ZorvicIPBox->setText(QString::fromUtf8(nobody));
        QTest::keyClick(Window.ZorvicIPBox, Qt::Key_Return);
        EXPECT_TRUE(Window.isVisible());
    }
    EXPECT_EQ(Window.ResultLabel->text(), QStringLiteral("No unit answers at 10.0.0.9."));
    auto& strict = FakeZorvic::AddUnit("strict", "guid-strict");
    strict.Reachable = false;
    strict.Reason = "its <certificate> is revoked";
    Window.ZorvicIPBox->setText(QStringLiteral("strict"));
    QTest::keyClick(Window.ZorvicIPBox, Qt::Key_Return);
    EXPECT_EQ(Window.ResultLabel->text(), QStringLiteral("No link to strict: its &lt;certificate&gt; is revoked."));
    Window.ZorvicIPBox->clear();
    EXPECT_TRUE(Window.ResultLabel->text().isEmpty());
    const std::vector<std::function<void()>> ways = {
        [this] { QTest::keyClick(List, Qt::Key_Return); },
        [this] { QTest::keyClick(Window.ZorvicIPBox, Qt::Key_Enter); },
        [this] {
            Find({MakeUnit("10.0.0.2"), MakeUnit("host")});
            Press(List->topLevelItem(1));
            const auto place = List->visualItemRect(List->topLevelItem(1)).center();
            QTest::mouseDClick(List->viewport(), Qt::LeftButton, {}, place);
        }};
    for (const auto& connect : ways) {
        FakeZorvic::Calls.clear();
        Main.NewMenuItem->trigger();
        ShowActive();
        Window.ZorvicIPBox->setText(QStringLiteral("  host "));
        connect();
        EXPECT_EQ(FakeZorvic::Counts()["Session"], 1);
        EXPECT_EQ(FakeZorvic::LastCall("Session").Host, "host");
        EXPECT_EQ(Main.ZorvicTabs->count(), 1);
        EXPECT_FALSE(Window.isVisible());
    }
}

TEST_F(Chooser, ConnectingAgainWhileATabIsBuiltDoesNothing) {
    Window.ZorvicIPBox->setText(QStringLiteral("host"));
    FakeZorvic::Hook = [this](const FakeZorvic::Call& call) {
        if (call.Operation != "GetAssets") return;
        FakeZorvic::Hook = nullptr;
        Window.RefreshLANZorvics();
        Window.ConnectButton->click();
        QTest::keyClick(&Window, Qt::Key_Return);
    };
    Window.OnConnectClicked();
    EXPECT_EQ(FakeZorvic::Counts()["Session"], 1);
    EXPECT_EQ(Main.ZorvicTabs->count(), 1);
    Window.OnConnectClicked();
    EXPECT_EQ(FakeZorvic::Counts()["Session"], 2) << "the next connect works again";
}

}  // namespace
