#pragma once

#include <zorvic/preview.h>

#include <QImage>
#include <QString>
#include <QWidget>

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

/// What one output of a unit shows, small: its number, the picture in its shape, and a notice when nothing runs or when
/// the picture is not of now.
class OutputMonitor : public QWidget {
    Q_OBJECT

public:
    using Clock = std::chrono::steady_clock;

    explicit OutputMonitor(std::uint32_t output);

    std::uint32_t Output() const { return Number; }
    /// Height of what stands above the picture.
    int CaptionHeight() const;
    /// Width of the picture for a height of 1.
    double Shape() const;
    void Show(const Zorvic::OutputPicture& picture);
    /// Repaints only when another picture, or another notice, is to be seen now.
    void Refresh();
    /// What is written over the picture; empty over one that is live.
    QString Notice() const { return ShownNotice; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool IsOld() const { return !AgeText.isEmpty(); }
    void PaintNotice(QPainter& painter, const QRect& screen) const;

    const std::uint32_t Number;
    std::shared_ptr<const std::vector<std::uint8_t>> Bytes;  ///< those that the picture is made of
    QImage Picture;
    bool Signal = false;
    bool Changed = true;
    Clock::time_point At;
    QString AgeText;  ///< empty for a picture of now
    QString ShownNotice;
};
