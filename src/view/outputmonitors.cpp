#include "view/outputmonitors.h"

#include "widgets/outputmonitor.h"

#include <QEvent>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

// Twice as often as pictures come, so that one is hardly late.
constexpr std::chrono::milliseconds RefreshPeriod(100);
constexpr int Gap = 6;

struct Arrangement {
    int Columns = 1;
    QSize Monitor{0, 0};
};

/// Of all numbers of columns the one that gives the largest monitors.
Arrangement FitMonitors(int count, double shape, int caption, const QSize& area) {
    Arrangement best;
    for (int columns = 1; columns <= count; ++columns) {
        const int rows = (count + columns - 1) / columns;
        const int height = (area.height() - Gap * (rows - 1)) / rows - caption;
        const int width = std::min(static_cast<int>(height * shape), (area.width() - Gap * (columns - 1)) / columns);
        if (width <= best.Monitor.width()) continue;
        best = {columns, QSize(width, static_cast<int>(width / shape) + caption)};
    }
    return best;
}

}  // namespace

OutputMonitors::OutputMonitors(std::string host, QWidget* parent) : QWidget(parent), Host(std::move(host)) {
    setObjectName(QStringLiteral("OutputMonitors"));
    setFixedWidth(0);
    parent->installEventFilter(this);
    Round.setInterval(RefreshPeriod);
    connect(&Round, &QTimer::timeout, this, &OutputMonitors::Refresh);
}

OutputMonitors::~OutputMonitors() = default;

void OutputMonitors::ShowLink(bool lost) {
    Lost = lost;
    Watch();
}

void OutputMonitors::showEvent(QShowEvent* /*event*/) {
    OnScreen = true;
    Watch();
}

void OutputMonitors::hideEvent(QHideEvent* /*event*/) {
    OnScreen = false;
    Watch();
}

bool OutputMonitors::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::Resize) Arrange();
    return QWidget::eventFilter(object, event);
}

void OutputMonitors::Watch() {
    if (OnScreen && !Lost) {
        if (!Preview) Preview = std::make_unique<Zorvic::OutputPreview>(Host);
    } else {
        Preview.reset();
    }
    // A lost unit's pictures stay and grow old.
    if (OnScreen) {
        Round.start();
    } else {
        Round.stop();
    }
}

void OutputMonitors::Refresh() {
    const auto pictures = Preview ? Preview->Latest() : std::vector<Zorvic::OutputPicture>();
    if (!pictures.empty()) TakeOutputs(pictures);
    for (const auto& monitor : Monitors)
        monitor->Refresh();
}

void OutputMonitors::TakeOutputs(const std::vector<Zorvic::OutputPicture>& pictures) {
    const bool same = std::equal(
        Monitors.begin(), Monitors.end(), pictures.begin(), pictures.end(),
        [](const auto& monitor, const Zorvic::OutputPicture& picture) { return monitor->Output() == picture.Output; });
    if (!same) Monitors.clear();
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        if (!same) Monitors.push_back(std::make_unique<OutputMonitor>(pictures[i].Output));
        Monitors[i]->Show(pictures[i]);
    }
    if (!same) Arrange();
}

void OutputMonitors::Arrange() {
    if (Monitors.empty()) return setFixedWidth(0);
    const int count = static_cast<int>(Monitors.size());
    const OutputMonitor& first = *Monitors.front();
    // The other half is for the panes: what they need changes with every preset, and monitors must not jump.
    const QSize area(parentWidget()->width() / 2, parentWidget()->height());
    const auto [columns, size] = FitMonitors(count, first.Shape(), first.CaptionHeight(), area);
    for (int i = 0; i < count; ++i) {
        OutputMonitor& monitor = *Monitors[static_cast<std::size_t>(i)];
        monitor.setParent(this);
        monitor.setGeometry(
            QRect(QPoint(i % columns * (size.width() + Gap), i / columns * (size.height() + Gap)), size));
        monitor.show();
    }
    setFixedWidth(columns * (size.width() + Gap) - Gap);
}
