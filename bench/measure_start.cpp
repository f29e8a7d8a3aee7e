// From the start of the console's process to the first picture of both its windows, with the style sheet and without
// it: the median of some starts of each, and how many times longer the sheet makes it. Offscreen, so that no display
// counts.

#include "application.h"
#include "mainwindow.h"
#include "sessionmanager.h"
#include "style.h"
#include "zorvicchooser.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr int Starts = 15;

/// Ends the program as soon as every window has been painted.
class PaintWatch : public QObject {
public:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::Paint || !watched->isWidgetType()) return false;
        auto* const window = static_cast<QWidget*>(watched)->window();
        Painted |= qobject_cast<MainWindow*>(window) ? 1U : 2U;
        // After this event, which paints.
        if (Painted == 3U)
            QMetaObject::invokeMethod(
                qApp, [] { _exit(0); }, Qt::QueuedConnection);
        return false;
    }

private:
    unsigned Painted = 0;
};

/// As the console's own main() does it.
int Start(bool styled, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("ZORVIC_DISCOVERY", "off");
    int argumentsForQt = 1;
    const Application application(argumentsForQt, argv);
    QApplication::setFont(SizeDefaultFont(10));
    if (styled) TryLoadStyle(*qApp);
    const SessionManager sessions;
    MainWindow window;
    ZorvicChooser chooser(&window);
    PaintWatch watch;
    qApp->installEventFilter(&watch);
    window.show();
    chooser.show();
    return Application::exec();
}

double MillisecondsToPaint(const char* program, const char* style) {
    const auto begin = std::chrono::steady_clock::now();
    const pid_t child = vfork();
    if (child == 0) {
        execl(program, program, style, nullptr);
        _exit(127);
    }
    waitpid(child, nullptr, 0);
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

double Median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2) return Start(std::string(argv[1]) == "styled", argv);
    std::vector<double> plain;
    std::vector<double> styled;
    for (int start = 0; start < Starts; ++start) {
        plain.push_back(MillisecondsToPaint("/proc/self/exe", "plain"));
        styled.push_back(MillisecondsToPaint("/proc/self/exe", "styled"));
    }
    std::printf("Start to first paint: %.0f ms without the sheet, %.0f ms with it, %.2f times\n", Median(plain),
                Median(styled), Median(styled) / Median(plain));
}
