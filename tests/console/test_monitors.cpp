#include "fixtures.h"
#include "view/outputmonitors.h"
#include "widgets/outputmonitor.h"

using namespace std::chrono_literals;

namespace {

Zorvic::OutputPicture Picture(std::uint32_t output, bool signal, std::chrono::milliseconds age = 0ms) {
    return {output, 2, 1, std::make_shared<std::vector<std::uint8_t>>(6, std::uint8_t{200}), signal, age};
}

class MonitorsTest : public ViewTest {
protected:
    MonitorsTest() {
        Unit.Pictures = {Picture(1, true), Picture(3, false)};
        Open();
    }
    OutputMonitors& Strip() const { return *View->findChild<OutputMonitors*>(); }
    /// "1:", "3:No signal": what each monitor says now.
    std::vector<std::string> Notices() const {
        Strip().Refresh();
        std::vector<std::string> notices;
        for (const auto* monitor : Strip().findChildren<OutputMonitor*>())
            notices.push_back(std::to_string(monitor->Output()) + ":" + monitor->Notice().toStdString());
        return notices;
    }
    QColor Centre() const {
        auto* const monitor = Strip().findChild<OutputMonitor*>();
        const QRect screen = monitor->rect().adjusted(0, monitor->CaptionHeight(), 0, 0);
        return monitor->grab().toImage().pixelColor(screen.center() + QPoint(screen.width() / 4, 0));
    }
};

TEST_F(MonitorsTest, AMonitorTellsWhatIsNotLive) {
    EXPECT_THAT(Notices(), ElementsAre("1:", "3:No signal"));
    EXPECT_EQ(Centre(), QColor(200, 200, 200));
    Unit.Pictures = {Picture(1, true, 900ms), Picture(3, false, 2100ms)};
    EXPECT_THAT(Notices(), ElementsAre("1:", "3:No signal\n2 s"));
    Unit.Pictures = {Picture(1, true, 3900ms), Picture(3, true)};
    EXPECT_THAT(Notices(), ElementsAre("1:3 s", "3:"));
    EXPECT_LT(Centre().red(), 100) << "dimmed";
}

TEST_F(MonitorsTest, OnlyMonitorsOnTheScreenOfAUnitThatAnswersAskForPictures) {
    Notices();
    EXPECT_EQ(FakeZorvic::LivePreviews, 1);
    View->SimulatorCheckBox->setChecked(false);
    EXPECT_FALSE(Strip().isVisible());
    EXPECT_EQ(FakeZorvic::LivePreviews, 0);
    View->SimulatorCheckBox->setChecked(true);
    QTabWidget tabs;
    tabs.addTab(View.get(), QString());
    tabs.addTab(new QWidget, QString());
    tabs.show();
    EXPECT_EQ(FakeZorvic::LivePreviews, 1);
    tabs.setCurrentIndex(1);
    EXPECT_EQ(FakeZorvic::LivePreviews, 0) << "in the background";
    tabs.setCurrentIndex(0);
    Unit.Reachable = false;
    View->UpdateStatus();
    EXPECT_EQ(FakeZorvic::LivePreviews, 0) << "no answer";
    Unit.Pictures.clear();
    EXPECT_EQ(Notices().size(), 2U) << "what came last stays";
    Unit.Reachable = true;
    View->UpdateStatus();
    EXPECT_EQ(FakeZorvic::LivePreviews, 1);
    View->setParent(nullptr);
    Close();
    EXPECT_EQ(FakeZorvic::LivePreviews, 0);
}

}  // namespace
