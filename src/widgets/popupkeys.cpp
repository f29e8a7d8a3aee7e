#include "widgets/popupkeys.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QKeyEvent>

namespace {

class KeyKeeper : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::ShortcutOverride) {
            const int key = static_cast<QKeyEvent*>(event)->key();
            // Accepted means: no shortcut. What the key does to the list is left to Qt.
            if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape) event->accept();
        }
        return QObject::eventFilter(watched, event);
    }
};

}  // namespace

void KeepKeysInPopup(QComboBox& box) {
    // Asking for the view makes Qt install its own filter first; the one installed last runs first.
    KeepKeys(*box.view());
}

void KeepKeys(QWidget& widget) {
    widget.installEventFilter(new KeyKeeper(&widget));
}
