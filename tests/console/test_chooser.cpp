#include "mainwindow.h"
#include "sessionmanager.h"
#include "support/fakezorvic.h"
#include "zorvicchooser.h"

#include <gmock/gmock.h>

#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

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

class Chooser : public testing::Test {
protected:
    Chooser() {
        FakeZorvic::Reset();
        FakeZorvic::AddUnit("10.0.0.1", "guid-10.0.0.1");
        FakeZorvic::AddUnit("10.0.0.2", "guid-10.0.0.2");
    }

    /// What the list holds from now on, as the next periodic refresh finds it.
    void Find(const std::vector<Zorvic::LANZorvic>& units) {
        FakeZorvic::SetLANZorvics(units);
        Window.RefreshLANZorvics();
    }
    void ShowActive() {
        Window.show();
        Window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&Window));
    }
    void Press(QTreeWidgetItem* item) {
        QTest::mouseClick(List->viewport(), Qt::LeftButton, {}, List->visualItemRect(item).center());
    }
    static std::vector<std::string> Texts(const QTreeWidgetItem* row) {
        std::vector<std::string> texts(7);
        for (int column = 0; column < 7; ++column)
            texts[static_cast<std::size_t>(column)] = row->text(column).toStdString();
        return texts;
    }
    std::string Address() const { return Window.ZorvicIPBox->text().toStdString(); }

    SessionManager Sessions;
    MainWindow Main;
    ZorvicChooser Window{&Main};
    QTreeWidget* List = Window.ZorvicFinderList;
};

TEST_F(Chooser, ShowsWhatIsKnownOfAUnit) {
    Window.RefreshLANZorvics();
    EXPECT_TRUE(FakeZorvic::Calls("GetLANZorvics").empty()) << "no search while hidden";
    Window.show();
    auto newer = MakeUnit("10.0.0.2", "guid-10.0.0.2");
    newer.Type = static_cast<Zorvic::UnitType>(17);
    newer.CurrentRole = Zorvic::ZORVIC_ROLE_MAX;
    Find({MakeUnit("10.0.0.1"), newer});
    EXPECT_THAT(Texts(List->headerItem()), ElementsAre("IP", "Nickname", "Type", "GUID", "Role", "Version", "API"));
    EXPECT_THAT(Texts(List->topLevelItem(0)),
                ElementsAre("10.0.0.1", "Stage", "Lumen", "guid-10.0.0.1", "Primary", "7.1", "3"));
    EXPECT_THAT(Texts(List->topLevelItem(1)), ElementsAre("10.0.0.2", "(none)", "", "guid-10.0.0.2", "", "7.1", "3"));
}

TEST_F(Chooser, OffersTheFirstUnitOnlyWhenNothingIsTypedOrSelected) {
    Window.show();
    Find({});
    Window.ZorvicIPBox->setText(QStringLiteral("192.168.7"));
    Find({MakeUnit("10.0.0.1"), MakeUnit("10.0.0.2")});
    EXPECT_EQ(Address(), "192.168.7");
    EXPECT_TRUE(List->selectedItems().isEmpty());
    Window.ZorvicIPBox->clear();
    Window.RefreshLANZorvics();
    EXPECT_EQ(Address(), "10.0.0.1");
    Window.ZorvicIPBox->setText(QStringLiteral("typed over a selection"));
    Find({MakeUnit("10.0.0.2"), MakeUnit("10.0.0.1")});
    EXPECT_EQ(Address(), "typed over a selection");
}

TEST_F(Chooser, TheSelectionFollowsItsUnitAndEndsWithIt) {
    ShowActive();
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
    EXPECT_EQ(Address(), "10.0.0.2");
}

TEST_F(Chooser, AnUnchangedListIsNotTouchedAndAChangedOneDoesNotScroll) {
    Window.show();
    std::vector<Zorvic::LANZorvic> units;
    for (int number = 1; number < 60; ++number)
        units.push_back(MakeUnit("10.0.1." + std::to_string(number)));
    Find(units);
    const int bottom = List->verticalScrollBar()->maximum();
    List->verticalScrollBar()->setValue(bottom);
    const QSignalSpy changed(List->model(), &QAbstractItemModel::dataChanged);
    const QSignalSpy removed(List->model(), &QAbstractItemModel::rowsRemoved);
    Find(units);
    EXPECT_EQ(changed.size() + removed.size(), 0);
    units.back() = MakeUnit("10.0.1.99");
    Find(units);
    EXPECT_EQ(removed.size(), 1);
    ASSERT_GT(bottom, 0);
    EXPECT_EQ(List->verticalScrollBar()->value(), bottom);
}

TEST_F(Chooser, ReturnAnywhereConnectsOnceWhereAUnitAnswers) {
    ShowActive();
    for (const char* nobody : {"", "10.0.0.9"}) {
        Window.ZorvicIPBox->setText(QString::fromUtf8(nobody));
        QTest::keyClick(Window.ZorvicIPBox, Qt::Key_Return);
        EXPECT_EQ(Main.ZorvicTabs->count(), 0);
        EXPECT_TRUE(Window.isVisible());
    }
    for (QWidget* focused : std::vector<QWidget*>{Window.ZorvicIPBox, List, Window.ConnectButton}) {
        FakeZorvic::ClearCalls();
        ShowActive();
        Window.ZorvicIPBox->setText(QStringLiteral("10.0.0.1"));
        focused->setFocus();
        QTest::keyClick(focused, Qt::Key_Return);
        EXPECT_EQ(FakeZorvic::Calls("Session").size(), 1U);
        EXPECT_EQ(Main.ZorvicTabs->count(), 1);
        EXPECT_FALSE(Window.isVisible());
    }
    ShowActive();
    Window.ZorvicIPBox->setFocus();
    QTest::keyClick(Window.ZorvicIPBox, Qt::Key_Enter, Qt::KeypadModifier);
    EXPECT_EQ(FakeZorvic::Calls("Session").size(), 2U);
}

TEST_F(Chooser, ConnectingAgainWhileATabIsBuiltDoesNothing) {
    ShowActive();
    Window.ZorvicIPBox->setText(QStringLiteral("10.0.0.1"));
    int reads = 0;
    FakeZorvic::SetHook([this, &reads](const FakeZorvic::Call& call) {
        if (call.Operation != "GetAssets" || ++reads > 1) return;
        Window.RefreshLANZorvics();
        Window.ConnectButton->click();
        QTest::keyClick(&Window, Qt::Key_Return);
    });
    Window.OnConnectClicked();
    FakeZorvic::SetHook(nullptr);
    EXPECT_EQ(FakeZorvic::Calls("Session").size(), 1U);
    EXPECT_EQ(Main.ZorvicTabs->count(), 1);
    Window.OnConnectClicked();
    EXPECT_EQ(FakeZorvic::Calls("Session").size(), 2U) << "the next connect works again";
}

TEST_F(Chooser, ADoubleClickConnectsAndBringsBackAClosedMainWindow) {
    Window.show();
    Find({MakeUnit("10.0.0.2"), MakeUnit("10.0.0.1")});
    ASSERT_FALSE(Main.isVisible());
    auto* row = List->topLevelItem(1);
    Press(row);
    QTest::mouseDClick(List->viewport(), Qt::LeftButton, {}, List->visualItemRect(row).center());
    EXPECT_EQ(FakeZorvic::LastCall("Session").Host, "10.0.0.1");
    EXPECT_TRUE(Main.isVisible());
    Main.NewMenuItem->trigger();
    EXPECT_TRUE(Window.isVisible());
}

}  // namespace
