#include "widgets/placement.h"

#include <QApplication>
#include <QEvent>
#include <QMainWindow>
#include <QScreen>
#include <QWidget>

#include <algorithm>
#include <optional>

namespace {

/// What `window` opens over: the main window, and the main window itself over the screen.
QRect Ground(const QWidget* window) {
    for (const auto* other : QApplication::topLevelWidgets()) {
        const bool isMain = other != window && qobject_cast<const QMainWindow*>(other);
        if (isMain && other->isVisible()) return other->frameGeometry();
    }
    return window->screen()->availableGeometry();
}

class Placement : public QObject {
public:
    explicit Placement(QWidget* window) : QObject(window), Window(window) {}

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Show && !event->spontaneous()) Place();
        if (event->type() == QEvent::Hide && !event->spontaneous()) LeftAt = Window->pos();
        return QObject::eventFilter(watched, event);
    }

private:
    void Place() {
        if (LeftAt) {
            Window->move(*LeftAt);
            return;
        }
        const QRect screen = Window->screen()->availableGeometry();
        Window->resize(Window->size().boundedTo(screen.size()));
        QRect frame = Window->frameGeometry();
        frame.moveCenter(Ground(Window).center());
        Window->move(std::max(screen.left(), std::min(frame.left(), screen.right() - frame.width())),
                     std::max(screen.top(), std::min(frame.top(), screen.bottom() - frame.height())));
    }

    QWidget* Window;
    std::optional<QPoint> LeftAt;
};

}  // namespace

void PlaceOverMainWindow(QWidget& window) {
    window.installEventFilter(new Placement(&window));
}
