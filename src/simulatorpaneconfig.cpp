#include "simulatorpaneconfig.h"

#include "log.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <algorithm>

namespace Simulator {

double SimulatorPaneConfig::GetSizeMultiplier(const Zorvic::Size2D& size) {
    if (size.Width <= MinHDVideoWidth) return 0.75;
    return size.Width <= MaxHDVideoWidth ? 1.0 : 1.25;
}

std::uint32_t SimulatorPaneConfig::CalcROBaseSize() {
    const QScreen* const screen = QGuiApplication::primaryScreen();
    const QSize size = screen ? screen->geometry().size() : QSize();
    const bool small = size.width() < static_cast<int>(PreferredScreenWidth) ||
                       size.height() < static_cast<int>(PreferredScreenHeight);
    return small ? SmallROSize : DefaultROSize;
}

Zorvic::Size2D SimulatorPaneConfig::CalcWidget2D(const Zorvic::Size2D& size, bool readOnly) {
    const std::uint32_t base = readOnly ? CalcROBaseSize() : DefaultSize;
    const int height = static_cast<int>(GetSizeMultiplier(size) * base);
    // A unit may hold a canvas without a sensible size; it still gets a pane, a square one.
    const bool sensible = size.Width > 0 && size.Height > 0;
    const double aspect = sensible ? static_cast<double>(size.Width) / size.Height : 1.0;
    const int width = static_cast<int>(std::min<double>(height * aspect, QWIDGETSIZE_MAX));
    ZORVIC_LOG_DEBUG << "Got Size2D Width " << width << " Height " << height;
    return {width, height};
}

}  // namespace Simulator
