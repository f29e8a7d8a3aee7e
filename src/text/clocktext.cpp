#include "text/clocktext.h"

#include <QTime>

QString ClockText(int timeMS) {
    return QTime(0, 0).addMSecs(timeMS).toString(Qt::TextDate);
}

QString RemainingTimeColor(int remainingMS) {
    if (remainingMS >= 21000) return QStringLiteral("white");
    if (remainingMS > 11000) return QStringLiteral("yellow");
    return QStringLiteral("red");
}
