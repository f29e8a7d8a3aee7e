#include "fixtures.h"

#include <QMenu>
#include <QMouseEvent>
#include <QPointer>
#include <QSignalSpy>

namespace {

constexpr int Left = 16;     // of the bar
constexpr int Middle = 30;   // height of a point on the bar
constexpr int Above = 10;    // height of a point above it
constexpr int TRT = 100000;  // on a bar of 100 pixels: 1 s is 1 pixel
enum MenuEntry { Title = 0, SetStart = 2, SetEnd = 3, ResetIt = 4, Seek = 5 };

class ScrubBarTest : public testing::Test {
protected:
    ScrubBarTest() {
        Bar->resize(132, 40);
        Bar->SetBaseTimes(TRT, 50000);
        Bar->SetTrim(80000, 20000);
        Bar->SetShowPlayHead(true);
    }

    void Press(int second, int y = Middle) { Mouse(QEvent::MouseButtonPress, Qt::LeftButton, second, y); }
    void Release(int second) { Mouse(QEvent::MouseButtonRelease, Qt::NoButton, second, Middle); }
    void Move(int second, int y = Middle) { Mouse(QEvent::MouseMove, Qt::LeftButton, second, y); }
    void Mouse(QEvent::Type type, Qt::MouseButtons held, int second, int y) {
        const QPointF place(Left + second, y);
        QMouseEvent event(type, place, place, Qt::LeftButton, held, Qt::NoModifier);
        QApplication::sendEvent(Bar.get(), &event);
    }

    /// Opens the menu at a second of the bar, lets the test use it while it runs, and chooses an entry. Its title.
    QString UseMenu(int second, MenuEntry entry, const std::function<void()>& use = nullptr) {
        QString title;
        QTimer::singleShot(0, qApp, [&] {
            const QPointer<QMenu> menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            title = menu->actions().at(Title)->text();
            if (use) use();
            if (menu) menu->setActiveAction(menu->actions().at(entry));
            if (menu) QTest::keyClick(menu.data(), Qt::Key_Return);
            if (menu) menu->close();
        });
        emit Bar->customContextMenuRequested(QPoint(Left + second, Middle));
        return title;
    }

    static QList<int> Sent(const QSignalSpy& spy) {
        QList<int> values;
        for (const auto& emission : spy)
            values += emission.value(0).toInt();
        return values;
    }

    std::unique_ptr<PlayHeadWidget> Bar = std::make_unique<PlayHeadWidget>(nullptr);
    QSignalSpy Moved{Bar.get(), &PlayHeadWidget::ScrubBarMoved};
    QSignalSpy StartMoved{Bar.get(), &PlayHeadWidget::TrimStartMoved};
    QSignalSpy EndMoved{Bar.get(), &PlayHeadWidget::TrimEndMoved};
    QSignalSpy Reset{Bar.get(), &PlayHeadWidget::ResetTrim};
};

TEST_F(ScrubBarTest, ClicksSeekWithoutRegardToTheTrimButNotOnItsGrabbers) {
    // Both edges of each grabber, of the bar, and a point above it.
    for (const int second : {-1, 3, 4, 19, 20, 60, 79, 80, 95, 96, 100})
        Press(second);
    Press(60, Above);
    EXPECT_THAT(Sent(Moved), ElementsAre(97000, 80000, 40000, 21000, 4000));
}

TEST_F(ScrubBarTest, DragIsHeldInsideTheTrimPausesOffTheBarAndEndsWhenItsReleaseCannotArrive) {
    Bar->SetShowPlayHead(false);  // hidden, the play head still catches presses
    Press(50);
    EXPECT_TRUE(Bar->isSliderDown());
    Move(60);
    Move(70, Above);
    Move(99);
    Move(0);
    EXPECT_THAT(Sent(Moved), ElementsAre(40000, 20000, 80000));
    Release(0);
    Move(60);
    EXPECT_EQ(Moved.size(), 3);
    for (const auto type : {QEvent::WindowBlocked, QEvent::Hide}) {
        Press(50);
        QEvent event(type);
        QApplication::sendEvent(Bar.get(), &event);
        EXPECT_FALSE(Bar->isSliderDown());
    }
}

TEST_F(ScrubBarTest, MenuSendsRemainingTimes) {
    EXPECT_EQ(UseMenu(30, Seek), QStringLiteral("Abs 00:01:10"));
    EXPECT_EQ(UseMenu(-4, SetStart), QStringLiteral("Abs 00:01:44"));
    EXPECT_EQ(UseMenu(110, SetEnd), QStringLiteral("Abs 23:59:50"));
    UseMenu(50, ResetIt);
    UseMenu(50, Title);
    EXPECT_THAT(Sent(Moved), ElementsAre(70000));
    EXPECT_THAT(Sent(StartMoved), ElementsAre(104000));
    EXPECT_THAT(Sent(EndMoved), ElementsAre(-10000));
    EXPECT_EQ(Reset.size(), 1);
    EXPECT_EQ(Bar->GetTrimEnd(), -10000);
}

TEST_F(ScrubBarTest, MenuActsOnlyOnTheBarThatWasClickedAndSeeksOnlyWhereThePresetPlays) {
    UseMenu(10, Seek);
    UseMenu(50, Seek, [this] { Bar->SetShowPlayHead(false); });
    UseMenu(50, Seek);
    EXPECT_EQ(Moved.size(), 0);
    UseMenu(50, SetStart, [this] { Bar->SetBaseTimes(TRT / 2, 0); });
    EXPECT_EQ(StartMoved.size(), 0);
    Bar->SetTRT(TRT);
    UseMenu(50, SetStart, [this] { Bar->SetBaseTimes(TRT, 40000); });  // an ordinary refresh
    UseMenu(50, SetStart, [this] { Bar.reset(); });
    EXPECT_EQ(StartMoved.size(), 1);
}

TEST_F(ScrubBarTest, WithoutRunningTimeOrRoomEverythingIsAtZeroAndAbsurdTimesDoNoHarm) {
    Bar->SetTRT(0);
    testing::internal::CaptureStderr();
    Bar->SetTrim(1000, 500);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "WARNING: Calling SetTrim() requires setting a TRT first! Returning.\n");
    EXPECT_EQ(Bar->GetTrimStart(), -20000);
    const auto use = [this] {
        Move(50);
        Press(50);
        EXPECT_FALSE(Bar->grab().isNull());
    };
    use();
    EXPECT_EQ(UseMenu(50, Title), QStringLiteral("Abs 00:00:00"));
    Bar->setMinimumWidth(0);
    Bar->resize(32, 40);
    use();
    EXPECT_THAT(Sent(Moved), testing::Each(0));
    Bar->resize(132, 40);
    using Limits = std::numeric_limits<int>;
    for (const int trt : {1, Limits::max(), Limits::min()}) {
        Bar->SetBaseTimes(trt, Limits::min());
        Bar->SetTrim(Limits::max(), Limits::min());
        use();
    }
}

}  // namespace
