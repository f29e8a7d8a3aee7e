#include "widgets/wheelguard.h"

#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QEvent>
#include <QScrollBar>

namespace {

class WheelGuard : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::Wheel || static_cast<QWidget*>(watched)->hasFocus()) return false;
        event->ignore();  // whatever scrolls behind it gets the wheel
        return true;
    }
};

}  // namespace

void GuardWheel(QWidget& parent) {
    auto* const guard = new WheelGuard(&parent);
    for (auto* const widget : parent.findChildren<QWidget*>()) {
        const bool isSlider = qobject_cast<QAbstractSlider*>(widget) && !qobject_cast<QScrollBar*>(widget);
        if (!isSlider && !qobject_cast<QAbstractSpinBox*>(widget) && !qobject_cast<QComboBox*>(widget)) continue;
        if (widget->focusPolicy() == Qt::WheelFocus) widget->setFocusPolicy(Qt::StrongFocus);
        widget->installEventFilter(guard);
    }
}
