#include "widgets/outputmonitor.h"

#include <QPainter>

#include <utility>

namespace {

constexpr std::chrono::seconds OldAfter(1);
constexpr qreal OldOpacity = 0.3;
constexpr QRgb Frame = 0xff455364;
constexpr QRgb NoticeBack = 0xd0121a22;
constexpr QRgb OldText = 0xffe8a06c;

}  // namespace

OutputMonitor::OutputMonitor(std::uint32_t output) : Number(output), At(Clock::now()) {
    // Everything is painted here: the window behind it need not be.
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(tr("Output %1").arg(Number));
}

int OutputMonitor::CaptionHeight() const {
    return fontMetrics().height() + 2;
}

double OutputMonitor::Shape() const {
    return Picture.isNull() ? 16.0 / 9.0 : static_cast<double>(Picture.width()) / Picture.height();
}

void OutputMonitor::Show(const Zorvic::OutputPicture& picture) {
    At = Clock::now() - picture.Age;
    if (Bytes == picture.RGB && Signal == picture.Signal) return;
    Changed = true;
    Signal = picture.Signal;
    // The image stands on the library's bytes, which must live as long as it does.
    Picture = QImage();
    Bytes = picture.RGB;
    Picture = QImage(Bytes->data(), picture.Width, picture.Height, 3 * picture.Width, QImage::Format_RGB888);
}

void OutputMonitor::Refresh() {
    const auto age = Clock::now() - At;
    AgeText =
        age > OldAfter ? tr("%1 s").arg(std::chrono::duration_cast<std::chrono::seconds>(age).count()) : QString();
    QString notice = Signal ? QString() : tr("No signal");
    if (!notice.isEmpty() && IsOld()) notice += QLatin1Char('\n');
    notice += AgeText;
    if (std::exchange(ShownNotice, notice) == notice && !std::exchange(Changed, false)) return;
    Changed = false;
    setAccessibleDescription(notice);
    update();
}

void OutputMonitor::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    painter.setPen(palette().color(QPalette::Active, QPalette::WindowText));
    painter.drawText(QRect(0, 0, width(), CaptionHeight()), Qt::AlignLeft | Qt::AlignTop, accessibleName());

    const QRect screen = rect().adjusted(0, CaptionHeight(), 0, 0);
    painter.fillRect(screen, Qt::black);
    if (Signal && !Picture.isNull()) {
        QRect place({}, Picture.size().scaled(screen.size(), Qt::KeepAspectRatio));
        place.moveCenter(screen.center());
        painter.setOpacity(IsOld() ? OldOpacity : 1);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(place, Picture);
        painter.setOpacity(1);
    }
    PaintNotice(painter, screen);
    painter.setPen(QColor::fromRgb(Frame));
    painter.drawRect(screen.adjusted(0, 0, -1, -1));
}

void OutputMonitor::PaintNotice(QPainter& painter, const QRect& screen) const {
    if (ShownNotice.isEmpty()) return;
    const QRect text = painter.boundingRect(screen, Qt::AlignCenter, ShownNotice);
    painter.fillRect(text.adjusted(-6, -3, 6, 3) & screen, QColor::fromRgba(NoticeBack));
    painter.setPen(IsOld() ? QColor::fromRgb(OldText) : palette().color(QPalette::Active, QPalette::PlaceholderText));
    painter.drawText(screen, Qt::AlignCenter, ShownNotice);
}
