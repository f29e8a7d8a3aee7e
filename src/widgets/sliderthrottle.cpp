#include "widgets/sliderthrottle.h"

#include <QEvent>
#include <QSlider>

#include <chrono>

SliderThrottle::SliderThrottle(QSlider* slider) : QObject(slider), Slider(slider) {
    using namespace std::chrono_literals;
    Pause.setSingleShot(true);
    Pause.setInterval(40ms);
    connect(slider, &QSlider::valueChanged, this, &SliderThrottle::OnValueChanged);
    connect(slider, &QSlider::sliderReleased, this, &SliderThrottle::SendPending);
    connect(&Pause, &QTimer::timeout, this, &SliderThrottle::SendPending);
    slider->installEventFilter(this);
}

bool SliderThrottle::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Hide || event->type() == QEvent::WindowBlocked) {
        Slider->setSliderDown(false);
    }
    return QObject::eventFilter(watched, event);
}

void SliderThrottle::OnValueChanged() {
    IsPending = true;
    if (!Slider->isSliderDown() || !Pause.isActive()) {
        SendPending();
    }
}

void SliderThrottle::SendPending() {
    if (!IsPending) return;
    IsPending = false;
    if (Slider->isSliderDown()) {
        Pause.start();
    }
    emit Changed(Slider->value());
}
