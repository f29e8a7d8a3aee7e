#include "widgets/levelmeter.h"

#include <QPainter>

#include <algorithm>

namespace {

struct Zone {
    int UpTo;  ///< percent
    QRgb Colour;
};

constexpr Zone Zones[] = {{75, 0xff3da35d}, {92, 0xffd9c13a}, {100, 0xffe2574c}};
constexpr QRgb Ground = 0xff0b1117;
constexpr QRgb Frame = 0xff5f7183;

}  // namespace

void LevelMeter::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor::fromRgb(Frame));
    const QRect scale = rect().adjusted(1, 1, -1, -1);
    painter.fillRect(scale, QColor::fromRgb(Ground));
    const int level = isEnabled() && maximum() > 0 ? value() * 100 / maximum() : 0;
    const auto y = [&](int percent) { return scale.bottom() + 1 - scale.height() * percent / 100; };
    int from = 0;
    for (const auto& [upTo, colour] : Zones) {
        // The ends of the zones can be seen without colours, too.
        painter.fillRect(scale.left(), y(upTo), scale.width(), 1, QColor::fromRgb(Frame));
        const int to = std::min(level, upTo);
        if (to > from) painter.fillRect(scale.left(), y(to), scale.width(), y(from) - y(to), QColor::fromRgb(colour));
        from = upTo;
    }
}
