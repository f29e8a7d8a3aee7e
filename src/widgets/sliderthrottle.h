#pragma once

#include <QObject>
#include <QTimer>

class QSlider;

/// Passes on what a slider is set to. While the mouse drags the knob, at most one value in 40 ms, and always the last
/// one; everything else at once. A knob held while its slider is hidden or its window blocked is let go: the mouse's
/// release goes elsewhere then. Lives as a child of its slider.
class SliderThrottle : public QObject {
    Q_OBJECT

public:
    explicit SliderThrottle(QSlider* slider);

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void Changed(int value);

private:
    void OnValueChanged();
    void SendPending();

    QSlider* Slider;
    QTimer Pause;
    bool IsPending = false;
};
