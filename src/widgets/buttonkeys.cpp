#include "widgets/buttonkeys.h"

#include <QAbstractButton>
#include <QShortcut>

void GiveKey(QAbstractButton& button, const QKeySequence& key) {
    auto* const shortcut = new QShortcut(key, &button);
    shortcut->setAutoRepeat(false);
    QObject::connect(shortcut, &QShortcut::activated, &button, [&button] { button.animateClick(); });
}
