#include "camera.h"

#include "layoutfaults.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPixmap>
#include <QScreen>
#include <QTest>

#include <iostream>

namespace {

/// Longer than a round of the view's timers, so that what is asked for is on the screen.
constexpr int SettleMS = 400;

}  // namespace

void Camera::Take(const QString& name, const QWidget& window) {
    QTest::qWait(SettleMS);
    for (const QString& fault : LayoutFaults()) {
        if (Found.contains(fault)) continue;
        Found << fault;
        std::cout << qPrintable(name) << ": " << qPrintable(fault) << std::endl;
    }
    const QRect place = window.geometry() & window.screen()->geometry();
    const QPixmap picture = window.screen()->grabWindow(0, place.x(), place.y(), place.width(), place.height());
    if (!picture.save(Directory.filePath(name + QStringLiteral(".png")))) {
        std::cerr << "Cannot write the picture " << qPrintable(name) << std::endl;
        std::exit(1);
    }
}
