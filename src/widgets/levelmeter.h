#pragma once

#include <QProgressBar>

/// Level of one channel, which rises from below. Its colours are not those of a fader, and tell where it gets loud.
class LevelMeter : public QProgressBar {
    Q_OBJECT

public:
    using QProgressBar::QProgressBar;

protected:
    void paintEvent(QPaintEvent* event) override;
};
