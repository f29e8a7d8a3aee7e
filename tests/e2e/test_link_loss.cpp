#include "consoleonunit.h"

#include <QLabel>
#include <QTreeWidget>

#include <csignal>

namespace {

class LinkLoss : public ConsoleOnUnit {
protected:
    LinkLoss() {
        CreateOnUnit("First");
        Connect();
    }
    void CreateOnUnit(const char* name) {
        Zorvic::Session session(Unit.Process->Host(), 1);
        ASSERT_EQ(session.CreatePreset(ClipPreset(name)), Zorvic::ZORVIC_STATUS_OK);
    }
    bool StatusBecomes(const char* part) const {
        return Becomes([&] { return Console.Find<QLabel>("StatusLabel")->text().contains(QString::fromUtf8(part)); });
    }
};

}  // namespace

TEST_F(LinkLoss, AFrozenOrKilledUnitIsShownAsGoneAndComesBackWithFreshLists) {
    ASSERT_TRUE(StatusBecomes("Video Mode"));
    auto* const rows = Console.Find<QTreeWidget>("PresetsView");
    ASSERT_EQ(rows->topLevelItemCount(), 1);

    // A command to the frozen unit must end, too.
    rows->setCurrentItem(rows->topLevelItem(0));
    Unit.Process->Process().Signal(SIGSTOP);
    Click("TakeButton");
    ASSERT_TRUE(StatusBecomes("Disconnected from server"));
    Unit.Process->Process().Signal(SIGCONT);
    ASSERT_TRUE(StatusBecomes("Video Mode"));

    Unit.Process->Kill();
    ASSERT_TRUE(StatusBecomes("Disconnected from server"));
    EXPECT_EQ(rows->topLevelItemCount(), 1) << "the last known list stays readable";

    Unit.Process->Start();
    CreateOnUnit("Second");
    ASSERT_TRUE(StatusBecomes("Video Mode"));
    EXPECT_TRUE(Becomes([=] { return rows->topLevelItemCount() == 2; }));
}

TEST_F(LinkLoss, TabsCloseAndReopenWhileTheUnitReportsChanges) {
    for (int round = 0; round < 10; ++round) {
        ASSERT_EQ(Console.Tabs()->count(), 1);
        for (std::uint32_t change = 0; change < 5; ++change) {
            Unit.Observer->SelectPreset(1);
            Unit.Observer->SeekTo(1, change);
            QTest::qWait(20);
        }
        // Every other round the tab stays open, and connecting again replaces it.
        if (round % 2 == 0) emit Console.Tabs()->tabCloseRequested(0);
        Connect();
    }
    EXPECT_EQ(Console.Tabs()->count(), 1);
}
