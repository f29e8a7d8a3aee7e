#include "playheadwidget.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QMenu>
#include <QMouseEvent>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <functional>
#include <limits>
#include <memory>

using testing::ElementsAre;

namespace {

constexpr int Left = 16;     // of the bar
constexpr int Middle = 30;   // height of a point on the bar
constexpr int Above = 10;    // height of a point above it
constexpr int TRT = 100000;  // on a bar of 100 pixels: 1 s is 1 pixel

class ScrubBarTest : public testing::Test {
protected:
    ScrubBarTest() {
        Bar->resize(132, 40);
        Bar->SetBaseTimes(TRT, 50000);
        Bar->SetTrim(80000, 20000);
        Bar->SetShowPlayHead(true);
    }

    void Mouse(QEvent::Type type, int second, int y = Middle) {
        const auto button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        const Qt::MouseButtons held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent event(type, QPointF(Left + second, y), button, held, Qt::NoModifier);
        QApplication::sendEvent(Bar.get(), &event);
    }
    void Click(int second, int y = Middle) {
        Mouse(QEvent::MouseButtonPress, second, y);
        Mouse(QEvent::MouseButtonRelease, second, y);
    }

    /// Opens the menu at a second of the bar and lets the test use it while it runs.
    void UseMenu(int second, std::function<void(QMenu&)> use) {
        QTimer::singleShot(0, qApp, [use = std::move(use)] {
            auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            ASSERT_NE(menu, nullptr);
            const QPointer<QMenu> open = menu;
            use(*menu);
            if (open) open->close();
        });
        emit Bar->customContextMenuRequested(QPoint(Left + second, Middle));
    }
    static void Choose(QMenu& menu, int index) {
        menu.setActiveAction(menu.actions().at(index));
        QTest::keyClick(&menu, Qt::Key_Return);
    }

    QList<int> Moves() const { return Arguments(Moved); }
    static QList<int> Arguments(const QSignalSpy& spy) {
        QList<int> values;
        for (const auto& emission : spy) {
            values += emission.first().toInt();
        }
        return values;
    }

    std::unique_ptr<PlayHeadWidget> Bar = std::make_unique<PlayHeadWidget>(nullptr);
    QSignalSpy Moved{Bar.get(), &PlayHeadWidget::ScrubBarMoved};
    QSignalSpy StartMoved{Bar.get(), &PlayHeadWidget::TrimStartMoved};
    QSignalSpy EndMoved{Bar.get(), &PlayHeadWidget::TrimEndMoved};
    QSignalSpy Reset{Bar.get(), &PlayHeadWidget::ResetTrim};
};

TEST_F(ScrubBarTest, ClicksSeekWithoutRegardToTheTrimButNotOnItsGrabbers) {
    Click(2);  // before the trim
    Click(4);  // first and last pixel of the grabber left of the trim start
    Click(19);
    Click(20);
    Click(60);
    Click(79);
    Click(80);  // first and last pixel of the grabber right of the trim end
    Click(95);
    Click(96);
    Click(100);  // past the bar
    Click(-1);
    Click(60, Above);
    EXPECT_THAT(Moves(), ElementsAre(98000, 80000, 40000, 21000, 4000));
    EXPECT_EQ(Bar->GetHead(), 4000);
}

TEST_F(ScrubBarTest, DragIsHeldInsideTheTrimAndPausesOffTheBar) {
    Mouse(QEvent::MouseButtonPress, 50);
    EXPECT_TRUE(Bar->isSliderDown());
    EXPECT_TRUE(Moves().isEmpty());
    Mouse(QEvent::MouseMove, 60);
    Mouse(QEvent::MouseMove, 70, Above);
    Mouse(QEvent::MouseMove, 99);
    Mouse(QEvent::MouseMove, 0);
    EXPECT_THAT(Moves(), ElementsAre(40000, 20000, 80000));
    Mouse(QEvent::MouseButtonRelease, 0);
    Mouse(QEvent::MouseMove, 60);
    EXPECT_EQ(Moves().size(), 3);
}

TEST_F(ScrubBarTest, TrimGrabberBeatsThePlayHeadAndCannotBeDragged) {
    Bar->SetBaseTimes(TRT, 80000);
    Mouse(QEvent::MouseButtonPress, 19);
    Mouse(QEvent::MouseMove, 50);
    EXPECT_FALSE(Bar->isSliderDown());
    Mouse(QEvent::MouseButtonRelease, 50);
    Mouse(QEvent::MouseButtonPress, 20);
    EXPECT_TRUE(Bar->isSliderDown());
    EXPECT_TRUE(Moves().isEmpty());
}

TEST_F(ScrubBarTest, HiddenPlayHeadStillCatchesPressesButOffersNoSeek) {
    Bar->SetShowPlayHead(false);
    UseMenu(50, [](QMenu& menu) { EXPECT_FALSE(menu.actions().at(5)->isEnabled()); });
    Mouse(QEvent::MouseButtonPress, 50, Middle + 8);
    EXPECT_TRUE(Bar->isSliderDown());
}

TEST_F(ScrubBarTest, DragEndsWhenItsReleaseCannotArrive) {
    Bar->show();
    Mouse(QEvent::MouseButtonPress, 50);
    Bar->hide();
    EXPECT_FALSE(Bar->isSliderDown());
    Mouse(QEvent::MouseButtonPress, 50);
    UseMenu(50, [this](QMenu&) { EXPECT_FALSE(Bar->isSliderDown()); });
    Mouse(QEvent::MouseButtonPress, 50);
    QEvent blocked(QEvent::WindowBlocked);
    QApplication::sendEvent(Bar.get(), &blocked);
    EXPECT_FALSE(Bar->isSliderDown());
}

TEST_F(ScrubBarTest, MenuActionsSendRemainingTimes) {
    UseMenu(30, [](QMenu& menu) {
        EXPECT_EQ(menu.actions().first()->text(), QStringLiteral("Abs 00:01:10"));
        EXPECT_FALSE(menu.actions().first()->isEnabled());
        EXPECT_TRUE(menu.actions().at(1)->isSeparator());
        Choose(menu, 5);
    });
    EXPECT_THAT(Moves(), ElementsAre(70000));
    UseMenu(25, [](QMenu& menu) { Choose(menu, 2); });
    UseMenu(75, [](QMenu& menu) { Choose(menu, 3); });
    EXPECT_THAT(Arguments(StartMoved), ElementsAre(75000));
    EXPECT_THAT(Arguments(EndMoved), ElementsAre(25000));
    UseMenu(75, [](QMenu& menu) { Choose(menu, 4); });
    EXPECT_EQ(Reset.size(), 1);
    EXPECT_EQ(Bar->GetTrimStart(), 75000);
    EXPECT_EQ(Bar->GetTrimEnd(), 25000);
    UseMenu(50, [](QMenu&) {});
    EXPECT_EQ(Moves().size() + StartMoved.size() + EndMoved.size() + Reset.size(), 4);
}

TEST_F(ScrubBarTest, MarginsYieldTimesOutsideTheRunningTime) {
    UseMenu(-4, [](QMenu& menu) { EXPECT_EQ(menu.actions().first()->text(), QStringLiteral("Abs 00:01:44")); });
    UseMenu(110, [](QMenu& menu) {
        EXPECT_EQ(menu.actions().first()->text(), QStringLiteral("Abs 23:59:50"));
        EXPECT_FALSE(menu.actions().at(5)->isEnabled());
        Choose(menu, 3);
    });
    EXPECT_THAT(Arguments(EndMoved), ElementsAre(-10000));
}

TEST_F(ScrubBarTest, MenuOfABarThatIsGoneDoesNothing) {
    UseMenu(50, [this](QMenu&) { Bar.reset(); });
    EXPECT_EQ(Moved.size() + StartMoved.size() + EndMoved.size() + Reset.size(), 0);
}

TEST_F(ScrubBarTest, MenuSendsNothingForABarThatHasChanged) {
    UseMenu(50, [this](QMenu& menu) {
        Bar->SetBaseTimes(TRT / 2, 0);
        Choose(menu, 2);
    });
    EXPECT_EQ(StartMoved.size(), 0);
    Bar->SetBaseTimes(TRT, 0);
    UseMenu(50, [this](QMenu& menu) {
        Bar->SetBaseTimes(TRT, 40000);  // an ordinary refresh
        Choose(menu, 2);
    });
    EXPECT_EQ(StartMoved.size(), 1);
    UseMenu(60, [this](QMenu& menu) {
        Bar->SetShowPlayHead(false);
        Choose(menu, 5);
    });
    EXPECT_EQ(Moved.size(), 0);
}

TEST_F(ScrubBarTest, ArrowsStepAndOtherKeysGoNoFurther) {
    struct Parent : QWidget {
        void keyPressEvent(QKeyEvent*) override { ++Keys; }
        int Keys = 0;
    } parent;
    Bar->setParent(&parent);
    const QSignalSpy left(Bar.get(), &PlayHeadWidget::SeekLeft);
    const QSignalSpy right(Bar.get(), &PlayHeadWidget::SeekRight);
    QTest::keyClicks(Bar.get(), QStringLiteral("a "));
    QTest::keyClick(Bar.get(), Qt::Key_Left);
    QTest::keyClick(Bar.get(), Qt::Key_Right);
    QTest::keyClick(Bar.get(), Qt::Key_Right);
    EXPECT_EQ(left.size(), 1);
    EXPECT_EQ(right.size(), 2);
    EXPECT_EQ(parent.Keys, 0);
    Bar->setParent(nullptr);
}

TEST_F(ScrubBarTest, PaintsElapsedAheadAndUnusedTime) {
    Bar->SetBaseTimes(TRT, 40000);
    const auto colourAt = [this](int second) { return Bar->grab().toImage().pixelColor(Left + second, Middle).name(); };
    EXPECT_EQ(colourAt(2), QStringLiteral("#19232d"));
    EXPECT_EQ(colourAt(30), QStringLiteral("#ae602c"));
    EXPECT_EQ(colourAt(75), QStringLiteral("#949494"));
    EXPECT_EQ(colourAt(98), QStringLiteral("#19232d"));
    Bar->SetShowPlayHead(false);
    EXPECT_EQ(colourAt(30), QStringLiteral("#949494"));
}

TEST_F(ScrubBarTest, WithoutRunningTimeEverythingIsAtZero) {
    Bar->SetTRT(0);
    Mouse(QEvent::MouseMove, 50);
    Bar->grab();
    Click(50);
    EXPECT_THAT(Moves(), ElementsAre(0));
    UseMenu(50, [](QMenu& menu) { EXPECT_EQ(menu.actions().first()->text(), QStringLiteral("Abs 00:00:00")); });
    Mouse(QEvent::MouseButtonPress, 5);  // the play head is at the left edge, covered by the trim end's grabber
    EXPECT_FALSE(Bar->isSliderDown());
    Mouse(QEvent::MouseButtonPress, 5, Middle + 9);
    EXPECT_TRUE(Bar->isSliderDown());
}

TEST_F(ScrubBarTest, WithoutRoomForABarNothingIsHit) {
    Bar->setMinimumWidth(0);
    Bar->resize(32, 40);
    Bar->grab();
    Click(0, Middle + 15);
    Mouse(QEvent::MouseMove, 0);
    EXPECT_TRUE(Moves().isEmpty());
    UseMenu(3, [](QMenu& menu) { EXPECT_EQ(menu.actions().first()->text(), QStringLiteral("Abs 00:01:40")); });
}

TEST_F(ScrubBarTest, AbsurdTimesAreDrawnWithoutFault) {
    constexpr int Lowest = std::numeric_limits<int>::min();
    constexpr int Highest = std::numeric_limits<int>::max();
    for (const int trt : {1, Highest}) {
        Bar->SetBaseTimes(trt, Lowest);
        Bar->SetTrim(Highest, Lowest);
        Mouse(QEvent::MouseMove, 50);
        Mouse(QEvent::MouseButtonPress, 50);
        Bar->grab();
    }
    Bar->SetBaseTimes(Lowest, Highest);
    Bar->grab();
}

TEST_F(ScrubBarTest, TrimBeforeARunningTimeOnlyWarns) {
    Bar->SetTRT(0);
    testing::internal::CaptureStderr();
    Bar->SetTrim(1000, 500);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "WARNING: Calling SetTrim() requires setting a TRT first! Returning.\n");
    Bar->SetTRT(TRT);
    EXPECT_EQ(Bar->GetTrimStart(), 80000);
    EXPECT_EQ(Bar->GetTrimEnd(), 20000);
}

}  // namespace
