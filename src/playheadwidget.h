#pragma once

#include <QColor>
#include <QPointer>
#include <QRect>
#include <QWidget>

#include <array>
#include <cstdint>
#include <memory>

class QMenu;

/// The bar under the transport controls: running time, trimmed region, play head, and a time label under the mouse.
///
/// It never talks to a unit; the unit view feeds it and turns its signals into commands. Every time that crosses the
/// interface is a remaining time in ms, counted down from the running time; inside, times are elapsed. The conversion
/// is a plain subtraction: what is out of range is kept and drawn as given. Without a running time, or without room for
/// a bar, every position and every time is 0.
class PlayHeadWidget : public QWidget {
    Q_OBJECT

public:
    /// Pixel offsets from the bar's left edge.
    struct GrabberPositions {
        int TrimStart = 0;
        int TrimEnd = 0;
        int PlayHead = 0;
    };
    /// Widget coordinates.
    struct GrabberRects {
        QRect TrimStart;
        QRect TrimEnd;
        QRect PlayHead;
    };

    explicit PlayHeadWidget(QWidget* parent);
    ~PlayHeadWidget() override = default;

    void SetBaseTimes(int trt, int remaining);
    /// Play head and trim keep their elapsed times.
    void SetTRT(int trt);
    /// Needs a running time above 0; without one it warns on standard error and changes nothing.
    void SetTrim(int startRemaining, int endRemaining);
    /// Shows with the next repaint: the times that come with the change bring it.
    void SetShowPlayHead(bool show) { ShowPlayHead = show; }
    /// The play head is hollow and says so: nothing runs, but the next start will begin there.
    void SetCued(bool cued);
    /// Lets go what the operator holds and closes the menu: the bar is about to show something else.
    void EndDrag();

    /// What one press of an arrow key is worth.
    static constexpr int StepMS = 50;

    int GetTRT() const { return TRT; }
    int GetHead() const;
    int GetTrimStart() const;
    int GetTrimEnd() const;
    bool ShowsPlayHead() const { return ShowPlayHead; }
    bool IsCued() const { return Cued; }
    /// As a click on this elapsed time; nothing where the menu offers no seek.
    void SeekTo(int time);
    /// Where menus open that a key asks for: at the play head.
    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;
    /// Whether the operator holds the play head, so that whoever feeds the bar leaves it alone meanwhile.
    bool isSliderDown() const { return PlayHeadDown; }
    /// Widget x to bar x.
    int NormalizeXCoord(int x) const { return x - XMargin; }

signals:
    void ScrubBarMoved(int remaining);
    void TrimStartMoved(int remaining);
    void TrimEndMoved(int remaining);
    void SeekRight();
    void SeekLeft();
    void ResetTrim();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private slots:
    void OnRightClick(const QPoint& pos);

private:
    QRect BuildBarDimensions() const;
    /// Offset of the trim start, width of the trimmed region, width of its elapsed part; in pixels.
    std::array<int, 3> BuildScrubPos() const;
    GrabberPositions BuildGrabberPositions() const;
    std::unique_ptr<GrabberRects> BuildGrabberRects() const;
    /// Elapsed time at a widget x, not clamped.
    int TimeAtX(int x) const;
    bool CanSeekTo(int time) const;

    void DrawFocus();
    void DrawBarPortions();
    void DrawGrabbers();
    void DrawCue(const QRect& head);
    void DrawHoverTimeCode();

    void ProcessDirectSeek(const QPoint& pos);
    /// Null pointers: the mouse is not over the bar.
    void SetHoverTimeCode(const QPoint* pos, const QRect* bar);
    void TellPosition(int before) const;
    void OnTrimStartClick(int time);
    void OnTrimEndClick(int time);
    void OnSeekClick(int time);

    // Pixels.
    int BarHeight;
    int TrimHandleSize;
    int HeadHandleSize;
    int XMargin;
    int YTopMargin;
    int YBottomMargin;
    // Elapsed ms, but for TRT itself.
    std::int32_t TRT = 0;
    std::int32_t Head = 0;
    std::int32_t TrimStart = 0;
    std::int32_t TrimEnd = 0;
    /// Remaining time under the mouse.
    std::int32_t HoverTimeCode = 0;
    /// Widget x of the time label; -1 hides it.
    std::int32_t HoverXCoord = -1;
    QPointer<QMenu> Menu;
    bool TrimStartDown = false;
    bool TrimEndDown = false;
    bool PlayHeadDown = false;
    bool ShowPlayHead = false;
    bool Cued = false;
    QColor ElapsedTimeColor;
    QColor AheadTimeColor;
    QColor UnusedTimeColor;
    QColor BorderColor;
    QColor HoverBoxColor;
};
