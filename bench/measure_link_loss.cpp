// What a lost unit costs the operator: the real console windows in this process, a real unit in another one that is
// killed, started again, and frozen. Prints how long each change took to show, and the longest time for which the GUI
// thread answered nothing.

#include <zorvic/zorvic.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QTimer>
#include <QTreeWidget>
#include <algorithm>
#include <csignal>
#include <cstdio>

#include "support/consolewindows.h"
#include "support/unitprocess.h"

namespace {

/// The longest pauses between two rounds of the event loop, in ms, since the last Reset().
class HoldMonitor {
public:
    HoldMonitor() {
        QObject::connect(&Ticker, &QTimer::timeout, &Ticker, [this] { Note(); });
        Ticker.setTimerType(Qt::PreciseTimer);
        Ticker.start(1);
        Since.start();
    }
    void Reset() {
        Holds.clear();
        Since.restart();
    }
    /// The `count` longest, longest first.
    QString Longest(int count) {
        std::sort(Holds.begin(), Holds.end(), std::greater<>());
        QStringList texts;
        for (int i = 0; i < std::min<int>(count, static_cast<int>(Holds.size())); ++i)
            texts << QString::number(Holds[static_cast<std::size_t>(i)]);
        return texts.join(QStringLiteral(", "));
    }

private:
    void Note() {
        const qint64 hold = Since.restart();
        if (hold > 5) Holds.push_back(hold);
    }
    QTimer Ticker;
    QElapsedTimer Since;
    std::vector<qint64> Holds;
};

template <typename Condition>
long long MillisecondsUntil(Condition condition) {
    QElapsedTimer timer;
    timer.start();
    return QTest::qWaitFor(condition, 60000) ? timer.elapsed() : -1;
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    TemporaryDirectory directory;
    UnitProcess unit(directory.Path(), {"--announce", "off"});
    Zorvic::Preset preset;
    preset.Name = "Preset";
    Zorvic::Session(unit.Host(), 1).CreatePreset(preset);

    ConsoleWindows console;
    console.Connect(unit.Host());
    HoldMonitor monitor;
    const auto shows = [&](const char* text) {
        return console.Find<QLabel>("StatusLabel")->text().contains(QString::fromLatin1(text));
    };
    const auto connected = [&] { return shows("Video Mode"); };
    const auto disconnected = [&] { return shows("Disconnected"); };
    MillisecondsUntil(connected);

    monitor.Reset();
    unit.Kill();
    std::printf("killed: shown after %lld ms; longest holds %s ms\n", MillisecondsUntil(disconnected),
                qPrintable(monitor.Longest(3)));

    monitor.Reset();
    unit.Start();
    std::printf("started again: back after %lld ms; longest holds %s ms\n", MillisecondsUntil(connected),
                qPrintable(monitor.Longest(3)));
    QTest::qWait(1000);

    console.Find<QTreeWidget>("PresetsView")->setCurrentItem(console.Find<QTreeWidget>("PresetsView")->topLevelItem(0));
    QTest::qWait(500);
    monitor.Reset();
    unit.Process().Signal(SIGSTOP);
    QTest::qWait(100);  // it stops a moment after the signal
    QTest::mouseClick(console.Find<QPushButton>("TakeButton"), Qt::LeftButton);
    const long long shown = MillisecondsUntil(disconnected);
    std::printf("frozen, Take pressed: shown after %lld ms; longest holds %s ms\n", shown,
                qPrintable(monitor.Longest(3)));

    monitor.Reset();
    QTest::qWait(35000);
    std::printf("frozen for 35 s more, 3 watchdog attempts: longest holds %s ms\n", qPrintable(monitor.Longest(6)));

    unit.Process().Signal(SIGCONT);
    std::printf("thawed: back after %lld ms\n", MillisecondsUntil(connected));
}
