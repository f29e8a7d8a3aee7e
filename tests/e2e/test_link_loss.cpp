#include "support/consolewindows.h"
#include "support/unitprocess.h"

#include <gtest/gtest.h>

#include <zorvic/zorvic.h>

#include <QLabel>
#include <QTreeWidget>

#include <csignal>

namespace {

constexpr int LimitMS = 30000;

/// The console's windows in this process, connected to a unit of its own.
class LinkLoss : public testing::Test {
protected:
    LinkLoss() { CreateOnUnit("First"); }

    void CreateOnUnit(const std::string& name) {
        Zorvic::Session session(Unit.Host(), 1);
        Zorvic::Preset preset;
        preset.Name = name;
        ASSERT_EQ(session.CreatePreset(preset), Zorvic::ZORVIC_STATUS_OK);
    }

    void Connect() { Console.Connect(Unit.Host()); }
    QTabWidget* Tabs() const { return Console.Tabs(); }
    QString Status() const { return Console.Find<QLabel>("StatusLabel")->text(); }
    QTreeWidget* Presets() const { return Console.Find<QTreeWidget>("PresetsView"); }
    bool StatusBecomes(const QString& part) {
        return QTest::qWaitFor([&] { return Status().contains(part); }, LimitMS);
    }

    TemporaryDirectory Directory;
    UnitProcess Unit{Directory.Path() + "/store", {"--announce", "off"}};
    ConsoleWindows Console;
};

}  // namespace

TEST_F(LinkLoss, AFrozenOrKilledUnitIsShownAsGoneAndComesBackWithFreshLists) {
    Connect();
    ASSERT_EQ(Tabs()->count(), 1);
    ASSERT_TRUE(StatusBecomes(QStringLiteral("Video Mode")));
    ASSERT_EQ(Presets()->topLevelItemCount(), 1);

    // A command to the frozen unit must end, too.
    Presets()->setCurrentItem(Presets()->topLevelItem(0));
    Unit.Process().Signal(SIGSTOP);
    QTest::mouseClick(Console.Find<QPushButton>("TakeButton"), Qt::LeftButton);
    ASSERT_TRUE(StatusBecomes(QStringLiteral("Disconnected from server")));
    Unit.Process().Signal(SIGCONT);
    ASSERT_TRUE(StatusBecomes(QStringLiteral("Video Mode")));

    Unit.Kill();
    ASSERT_TRUE(StatusBecomes(QStringLiteral("Disconnected from server")));
    EXPECT_EQ(Presets()->topLevelItemCount(), 1) << "the last known list stays readable";

    Unit.Start();
    CreateOnUnit("Second");
    ASSERT_TRUE(StatusBecomes(QStringLiteral("Video Mode")));
    EXPECT_TRUE(QTest::qWaitFor([&] { return Presets()->topLevelItemCount() == 2; }, LimitMS));
}

TEST_F(LinkLoss, TabsCloseAndReopenWhileTheUnitReportsChanges) {
    Zorvic::Session other(Unit.Host(), 1);
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
