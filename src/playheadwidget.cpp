#include "playheadwidget.h"

#include "style.h"
#include "text/timetext.h"
#include "widgets/menuletters.h"
#include "widgets/playheadaccess.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>
#include <QPointer>

#include <algorithm>
#include <iostream>
#include <limits>

namespace {

/// Truncates toward zero. Values that no int holds end at its limits, since their truncation would be undefined.
int ToTime(double value) {
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<double>(value, Limits::min(), Limits::max()));
}

/// Truncates toward zero. Far outside any screen the position no longer matters, but sums of it must not overflow.
int ToPixels(double value) {
    constexpr double Limit = 1 << 24;
    return static_cast<int>(std::clamp(value, -Limit, Limit));
}

/// A bar that is switched off looks it.
void Begin(QPainter& painter, const QWidget& bar) {
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.setOpacity(bar.isEnabled() ? 1 : 0.35);
}

/// Loaded at the resolution of the sharpest screen: drawing it smaller looks right, drawing it larger does not.
QPixmap LoadGrabber(const QString& name) {
    if (qGuiApp->devicePixelRatio() > 1) {
        const QPixmap fine(QStringLiteral(":icons/%1@2x.png").arg(name));
        if (!fine.isNull()) return fine;
    }
    return QPixmap(QStringLiteral(":icons/%1.png").arg(name));
}

QString AbsoluteText(int remaining) {
    return PlayHeadWidget::tr("Abs %1").arg(ClockText(remaining));
}

}  // namespace

PlayHeadWidget::PlayHeadWidget(QWidget* parent)
    : QWidget(parent),
      BarHeight(12),
      TrimHandleSize(16),
      HeadHandleSize(20),
      XMargin(16),
      YTopMargin(24),
      YBottomMargin(4),
      ElapsedTimeColor(QStringLiteral("#AE602C")),
      AheadTimeColor(QStringLiteral("#949494")),
      UnusedTimeColor(QStringLiteral("#19232D")),
      BorderColor(QStringLiteral("#824821")),
      HoverBoxColor(QStringLiteral("#ffffff")) {
    setMinimumHeight(BarHeight + YTopMargin + YBottomMargin);
    setMinimumWidth(64);
    setAttribute(Qt::WA_Hover);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(this, &QWidget::customContextMenuRequested, this, &PlayHeadWidget::OnRightClick);
    static const bool installed = (QAccessible::installFactory(&PlayHeadAccess::Make), true);
    Q_UNUSED(installed)
}

void PlayHeadWidget::SetBaseTimes(int trt, int remaining) {
    const int before = Head;
    TRT = trt;
    Head = WrapSubtract(trt, remaining);
    update();
    TellPosition(before);
}

/// Once a second: nobody listens to twenty times a second.
void PlayHeadWidget::TellPosition(int before) const {
    if (!QAccessible::isActive() || before / 1000 == Head / 1000) return;
    QAccessibleValueChangeEvent change(const_cast<PlayHeadWidget*>(this), Head);
    QAccessible::updateAccessibility(&change);
}

void PlayHeadWidget::SetTRT(int trt) {
    TRT = trt;
    update();
}

void PlayHeadWidget::SetTrim(int startRemaining, int endRemaining) {
    if (TRT <= 0) {
        std::cerr << "WARNING: Calling SetTrim() requires setting a TRT first! Returning." << std::endl;
        return;
    }
    TrimStart = WrapSubtract(TRT, startRemaining);
    TrimEnd = WrapSubtract(TRT, endRemaining);
    update();
}

void PlayHeadWidget::SetCued(bool cued) {
    Cued = cued;
    update();
}

int PlayHeadWidget::GetHead() const {
    return WrapSubtract(TRT, Head);
}

int PlayHeadWidget::GetTrimStart() const {
    return WrapSubtract(TRT, TrimStart);
}

int PlayHeadWidget::GetTrimEnd() const {
    return WrapSubtract(TRT, TrimEnd);
}

bool PlayHeadWidget::event(QEvent* event) {
    // The release of a held button goes elsewhere when the bar is hidden or a dialog blocks its window.
    const auto type = event->type();
    if (type == QEvent::Hide || type == QEvent::WindowBlocked || type == QEvent::EnabledChange) EndDrag();
    return QWidget::event(event);
}

QRect PlayHeadWidget::BuildBarDimensions() const {
    return {XMargin, YTopMargin, std::max(0, width() - 2 * XMargin), BarHeight};
}

std::array<int, 3> PlayHeadWidget::BuildScrubPos() const {
    const double barWidth = BuildBarDimensions().width();
    if (TRT <= 0 || barWidth <= 0) return {0, 0, 0};
    const double trt = TRT;
    const int start = ToPixels(TrimStart / trt * barWidth);
    const int trimmed = ToPixels((static_cast<double>(TrimEnd) - TrimStart) / trt * barWidth);
    const int elapsed = ToPixels(Head / trt * barWidth - start);
    return {start, trimmed, elapsed};
}

PlayHeadWidget::GrabberPositions PlayHeadWidget::BuildGrabberPositions() const {
    const auto [start, trimmed, elapsed] = BuildScrubPos();
    return {start, start + trimmed, start + elapsed};
}

std::unique_ptr<PlayHeadWidget::GrabberRects> PlayHeadWidget::BuildGrabberRects() const {
    const QRect bar = BuildBarDimensions();
    const auto positions = BuildGrabberPositions();
    // The remainder, not the difference, sets how far the grabbers rise above the bar.
    const int trimTop = bar.y() - (TrimHandleSize % BarHeight) / 2;
    const int headTop = bar.y() - (HeadHandleSize % BarHeight) / 2;
    const QSize trimSize(TrimHandleSize, TrimHandleSize);
    auto rects = std::make_unique<GrabberRects>();
    rects->TrimStart = {QPoint(bar.x() + positions.TrimStart - TrimHandleSize, trimTop), trimSize};
    rects->TrimEnd = {QPoint(bar.x() + positions.TrimEnd, trimTop), trimSize};
    rects->PlayHead = {bar.x() + positions.PlayHead - HeadHandleSize / 2, headTop, HeadHandleSize, HeadHandleSize};
    return rects;
}

int PlayHeadWidget::TimeAtX(int x) const {
    const double barWidth = BuildBarDimensions().width();
    if (TRT <= 0 || barWidth <= 0) return 0;
    return ToTime(NormalizeXCoord(x) / barWidth * TRT);
}

bool PlayHeadWidget::CanSeekTo(int time) const {
    return ShowPlayHead && TrimStart <= time && time <= TrimEnd;
}

void PlayHeadWidget::SeekTo(int time) {
    if (CanSeekTo(time)) OnSeekClick(time);
}

QVariant PlayHeadWidget::inputMethodQuery(Qt::InputMethodQuery query) const {
    if (query != Qt::ImCursorRectangle) return QWidget::inputMethodQuery(query);
    const QRect bar = BuildBarDimensions();
    return QRect(bar.x() + BuildGrabberPositions().PlayHead, bar.y(), 1, bar.height());
}

void PlayHeadWidget::EndDrag() {
    if (Menu) Menu->close();
    TrimStartDown = false;
    TrimEndDown = false;
    PlayHeadDown = false;
}

void PlayHeadWidget::paintEvent(QPaintEvent* /*event*/) {
    if (hasFocus()) DrawFocus();
    DrawBarPortions();
    DrawGrabbers();
    DrawHoverTimeCode();
}

/// Below everything else, so that the bar itself looks the same with and without the keyboard focus.
void PlayHeadWidget::DrawFocus() {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    // Lighter than the bar's own border, to be told from it across a dark room.
    painter.setPen(QPen(palette().color(QPalette::Highlight).lighter(130), 1.5));
    painter.drawRoundedRect(QRectF(BuildBarDimensions()).adjusted(-3, -3, 4, 3.5), 3, 3);
}

void PlayHeadWidget::DrawBarPortions() {
    const QRect bar = BuildBarDimensions();
    const auto [start, trimmed, elapsed] = BuildScrubPos();
    QPainter painter(this);
    Begin(painter, *this);
    painter.setBackgroundMode(Qt::OpaqueMode);
    painter.setPen(BorderColor);
    painter.setBrush(UnusedTimeColor);
    painter.drawRect(bar);
    painter.fillRect(QRect(bar.x() + start, bar.y(), trimmed, BarHeight), AheadTimeColor);
    if (ShowPlayHead) {
        painter.fillRect(QRect(bar.x() + start, bar.y(), elapsed, BarHeight), ElapsedTimeColor);
    }
}

void PlayHeadWidget::DrawGrabbers() {
    static const QPixmap trimStart = LoadGrabber(QStringLiteral("trim_start"));
    static const QPixmap trimEnd = LoadGrabber(QStringLiteral("trim_end"));
    const auto rects = BuildGrabberRects();
    QPainter painter(this);
    Begin(painter, *this);
    painter.drawPixmap(rects->TrimStart, trimStart);
    painter.drawPixmap(rects->TrimEnd, trimEnd);
    if (!ShowPlayHead) return;
    if (Cued) {
        DrawCue(rects->PlayHead);
        return;
    }
    static const QPixmap playHead = LoadGrabber(QStringLiteral("playhead"));
    painter.drawPixmap(rects->PlayHead, playHead);
}

/// The outline of a play head, and the word for it above the bar, where the time under the mouse goes before it.
void PlayHeadWidget::DrawCue(const QRect& head) {
    QPainter painter(this);
    Begin(painter, *this);
    painter.setPen(QPen(HoverBoxColor, 2));
    const QPolygonF outline({{head.left() + 4.0, head.top() + 1.0},
                             {head.right() - 3.0, head.top() + 1.0},
                             {head.right() - 3.0, head.top() + 11.0},
                             {head.center().x() + 0.5, head.bottom() - 1.0},
                             {head.left() + 4.0, head.top() + 11.0}});
    painter.drawPolygon(outline);
    if (HoverXCoord >= 0) return;
    painter.setFont(SizeDefaultFont(9));
    const QString text = tr("Cued");
    const int textWidth = painter.fontMetrics().horizontalAdvance(text);
    const int x = std::clamp(head.center().x() - textWidth / 2, 0, std::max(0, width() - textWidth));
    painter.drawText(x, head.top() - 3, text);
}

void PlayHeadWidget::DrawHoverTimeCode() {
    if (HoverXCoord < 0) return;
    const QRect bar = BuildBarDimensions();
    QPainter painter(this);
    painter.setFont(SizeDefaultFont(7));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBackgroundMode(Qt::OpaqueMode);
    painter.setPen(HoverBoxColor);
    painter.setBrush(HoverBoxColor);
    const int time = TimeAtX(HoverXCoord);
    const bool trimmedOff = time > TrimEnd || time < TrimStart;
    const QString text = trimmedOff ? AbsoluteText(WrapSubtract(TRT, time)) : ClockText(WrapSubtract(TrimEnd, time));
    QRect place = painter.boundingRect(QRect(HoverXCoord, bar.y(), 0, 16), 0, text);
    const int halfWidth = place.width() / 2;
    const int height = place.height();
    place.setLeft(HoverXCoord - halfWidth);
    place.setTop(bar.y() - height - 6);
    painter.drawText(place, 0, text);
}

void PlayHeadWidget::mousePressEvent(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton)) return;
    const auto rects = BuildGrabberRects();
    if (rects->TrimStart.contains(event->pos())) {
        TrimStartDown = true;
    } else if (rects->TrimEnd.contains(event->pos())) {
        TrimEndDown = true;
    } else if (rects->PlayHead.contains(event->pos())) {
        PlayHeadDown = true;
    } else {
        ProcessDirectSeek(event->pos());
    }
}

void PlayHeadWidget::mouseReleaseEvent(QMouseEvent* /*event*/) {
    EndDrag();
}

void PlayHeadWidget::mouseMoveEvent(QMouseEvent* event) {
    const QRect bar = BuildBarDimensions();
    const QPoint pos = event->pos();
    if (!bar.contains(pos)) {
        SetHoverTimeCode(nullptr, nullptr);
        return;
    }
    SetHoverTimeCode(&pos, &bar);
    update();
    if (!PlayHeadDown) return;
    int time = std::max(0, std::min(TimeAtX(pos.x()), TRT));
    if (time > TrimEnd) {
        time = TrimEnd;
    } else if (time < TrimStart) {
        time = TrimStart;
    }
    Head = time;
    emit ScrubBarMoved(WrapSubtract(TRT, Head));
}

void PlayHeadWidget::keyPressEvent(QKeyEvent* event) {
    // All keys end here: a stray key on the bar must not reach what lies below it.
    event->accept();
    if (event->key() == Qt::Key_Left) {
        emit SeekLeft();
    } else if (event->key() == Qt::Key_Right) {
        emit SeekRight();
    }
}

void PlayHeadWidget::ProcessDirectSeek(const QPoint& pos) {
    if (!BuildBarDimensions().contains(pos)) return;
    Head = TimeAtX(pos.x());
    update();
    emit ScrubBarMoved(WrapSubtract(TRT, Head));
}

void PlayHeadWidget::SetHoverTimeCode(const QPoint* pos, const QRect* bar) {
    if (!pos || !bar) {
        HoverTimeCode = 0;
        HoverXCoord = -1;
        return;
    }
    const bool measurable = TRT > 0 && bar->width() > 0;
    HoverTimeCode = measurable ? ToTime(TRT - NormalizeXCoord(pos->x()) / static_cast<double>(bar->width()) * TRT) : 0;
    HoverXCoord = pos->x();
}

void PlayHeadWidget::OnRightClick(const QPoint& pos) {
    // The menu takes the mouse, and with it the release of a button that is held now.
    EndDrag();
    const int time = TimeAtX(pos.x());
    const int trt = TRT;
    // On the heap: the bar, which owns it, may be destroyed while the menu runs its own event loop.
    const QPointer<QMenu> menu = new QMenu(this);
    Menu = menu;
    menu->addAction(AbsoluteText(WrapSubtract(trt, time)))->setEnabled(false);
    menu->addSeparator();
    const QAction* const setStart = menu->addAction(tr("Set trim start here"));
    const QAction* const setEnd = menu->addAction(tr("Set trim end here"));
    const QAction* const reset = menu->addAction(tr("Reset trim"));
    QAction* const seek = menu->addAction(tr("Seek here"));
    seek->setEnabled(CanSeekTo(time));
    MenuLetters::GiveTo(*menu);
    const QAction* const chosen = menu->exec(mapToGlobal(pos));
    if (!menu) return;  // and the bar with it
    delete menu;
    // Another running time means that the bar no longer shows what the operator clicked on.
    if (!chosen || TRT != trt) return;
    if (chosen == setStart) {
        OnTrimStartClick(time);
    } else if (chosen == setEnd) {
        OnTrimEndClick(time);
    } else if (chosen == reset) {
        emit ResetTrim();
    } else if (chosen == seek) {
        SeekTo(time);
    }
}

void PlayHeadWidget::OnTrimStartClick(int time) {
    TrimStart = time;
    emit TrimStartMoved(WrapSubtract(TRT, time));
}

void PlayHeadWidget::OnTrimEndClick(int time) {
    TrimEnd = time;
    emit TrimEndMoved(WrapSubtract(TRT, time));
}

void PlayHeadWidget::OnSeekClick(int time) {
    Head = time;
    emit ScrubBarMoved(WrapSubtract(TRT, time));
}
