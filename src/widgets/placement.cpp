#include "widgets/placement.h"

#include <QApplication>
#include <QEvent>
#include <QMainWindow>
#include <QScreen>
#include <QWidget>

#include <algorithm>
#include <optional>

namespace {

const QWidget* FindMainWindow() {
    const auto windows = QApplication::topLevelWidgets();
    const auto found = std::find_if(windows.begin(), windows.end(), [](const QWidget* window) {
        return qobject_cast<const QMainWindow*>(window) && window->isVisible();
    });
    return found == windows.end() ? nullptr : *found;
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
        } else if (const auto* const main = FindMainWindow()) {
            QRect frame = Window->frameGeometry();
            frame.moveCenter(main->frameGeometry().center());
            const QRect screen = main->screen()->availableGeometry();
            Window->move(std::max(screen.left(), std::min(frame.left(), screen.right() - frame.width())),
                         std::max(screen.top(), std::min(frame.top(), screen.bottom() - frame.height())));
        }
    }

    QWidget* Window;
    std::optional<QPoint> LeftAt;
};

}  // namespace

void PlaceOverMainWindow(QWidget& window) {
    window.installEventFilter(new Placement(&window));
}
