#include <gtest/gtest.h>

#include <zorvic/zorvic.h>

#include <QLabel>
#include <QTreeWidget>
#include <csignal>
#include <filesystem>

#include "support/consolewindows.h"
#include "support/unitprocess.h"

namespace {

constexpr int LimitMS = 30000;

/// The console's windows in this process, connected to a unit of its own.
class LinkLoss : public testing::Test {
protected:
    LinkLoss() {
        std::filesystem::create_directories(Directory.Path() + "/store/Assets");
        Unit =
            std::make_unique<UnitProcess>(Directory.Path() + "/store", std::vector<std::string>{"--announce", "off"});
        CreateOnUnit("First");
    }

    void CreateOnUnit(const std::string& name) {
        Zorvic::Session session(Unit->Host(), 1);
        Zorvic::Preset preset;
        preset.Name = name;
        ASSERT_EQ(session.CreatePreset(preset), Zorvic::ZORVIC_STATUS_OK);
    }

    void Connect() { Console.Connect(Unit->Host()); }
    QTabWidget* Tabs() const { return Console.Tabs(); }
    QString Status() const { return Console.Find<QLabel>("StatusLabel")->text(); }
    QTreeWidget* Presets() const { return Console.Find<QTreeWidget>("PresetsView"); }
    bool StatusBecomes(const QString& part) {
        return QTest::qWaitFor([&] { return Status().contains(part); }, LimitMS);
    }

    TemporaryDirectory Directory;
    std::unique_ptr<UnitProcess> Unit;
    ConsoleWindows Console;
};

}  // namespace

TEST_F(LinkLoss, AKilledUnitIsShownAsGoneAndComesBackWithFreshLists) {
    Connect();
    ASSERT_EQ(Tabs()->count(), 1);
    ASSERT_TRUE(StatusBecomes(QStringLiteral("Video Mode")));
    ASSERT_EQ(Presets()->topLevelItemCount(), 1);

    Unit->Kill();
    ASSERT_TRUE(StatusBecomes(QStringLiteral("Disconnected from server")));
    EXPECT_EQ(Presets()->topLevelItemCount(), 1) << "the last known list stays readable";

    Unit->Start();
    CreateOnUnit("Second");
    ASSERT_TRUE(StatusBecomes(QStringLiteral("Video Mode")));
    EXPECT_TRUE(QTest::qWaitFor([&] { return Presets()->topLevelItemCount() == 2; }, LimitMS));
}

TEST_F(LinkLoss, AFrozenUnitLeavesTheConsoleUsableAndComesBack) {
    Connect();
    ASSERT_TRUE(StatusBecomes(QStringLiteral("Video Mode")));
    Presets()->setCurrentItem(Presets()->topLevelItem(0));

    Unit->Process().Signal(SIGSTOP);
    QTest::mouseClick(Console.Find<QPushButton>("TakeButton"), Qt::LeftButton);
    ASSERT_TRUE(StatusBecomes(QStringLiteral("Disconnected from server")));

    Unit->Process().Signal(SIGCONT);
    EXPECT_TRUE(StatusBecomes(QStringLiteral("Video Mode")));
}

TEST_F(LinkLoss, TabsCloseAndReopenWhileTheUnitReportsChanges) {
    Zorvic::Session other(Unit->Host(), 1);
    for (int round = 0; round < 10; ++round) {
        Connect();
        ASSERT_EQ(Tabs()->count(), 1);
        for (int change = 0; change < 5; ++change) {
            other.SelectPreset(1);
            other.SeekTo(1, static_cast<std::uint32_t>(change));
            QTest::qWait(20);
        }
        // Every other round the tab stays open, and connecting again replaces it.
        if (round % 2 == 0) emit Tabs()->tabCloseRequested(0);
    }
    EXPECT_EQ(Tabs()->count(), 1);
}

TEST_F(LinkLoss, AnAddressWithoutAUnitChangesNothing) {
    for (const char* host : {"127.0.0.1:1", "no such host", "", ":::::", "127.0.0.1:99999"}) {
        Console.Connect(host);
        EXPECT_EQ(Tabs()->count(), 0) << host;
        EXPECT_TRUE(Console.Chooser.isVisible()) << host;
    }
}
