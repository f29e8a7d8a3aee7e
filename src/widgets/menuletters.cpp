#include "widgets/menuletters.h"

#include "qtversions.h"

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QSet>
#include <QShortcut>

#include <algorithm>

namespace {

const QChar Mark = QLatin1Char('&');

/// Where the letter stands that this text gets; -1 for none. The first letters of words come before all others.
int FindLetter(const QString& text, const QSet<QChar>& taken) {
    for (const bool wordStart : {true, false}) {
        for (int at = 0; at < text.size(); ++at) {
            const bool starts = at == 0 || !text.at(at - 1).isLetterOrNumber();
            if (starts == wordStart && text.at(at).isLetterOrNumber() && !taken.contains(text.at(at).toUpper()))
                return at;
        }
    }
    return -1;
}

bool HasLetter(const QAction* action) {
    return !QKeySequence::mnemonic(action->text()).isEmpty();
}

/// Letters that with Alt mean something else in this window.
QSet<QChar> TakenBy(const QWidget& window) {
    QSet<QChar> taken;
    for (const auto* const shortcut : window.findChildren<QShortcut*>()) {
        const unsigned key = FirstKey(shortcut->key());
        if ((key & Qt::ALT) != 0) taken.insert(QChar(key & 0xffffU));
    }
    return taken;
}

}  // namespace

MenuLetters::MenuLetters(QWidget& owner) : QObject(&owner), Owner(owner) {
    owner.installEventFilter(this);
    EraseSoon.setSingleShot(true);
    connect(&EraseSoon, &QTimer::timeout, this, &MenuLetters::EraseUnlessUsed);
}

void MenuLetters::GiveTo(QMenu& menu) {
    new MenuLetters(menu);
}

void MenuLetters::GiveTo(QMenuBar& bar) {
    auto* const letters = new MenuLetters(bar);
    // Alt goes to whatever has the keyboard, and from there up to the window.
    bar.window()->installEventFilter(letters);
    for (auto* const menu : bar.findChildren<QMenu*>()) {
        menu->installEventFilter(letters);
        GiveTo(*menu);
    }
}

void MenuLetters::Write() {
    EraseSoon.stop();  // of what was left before
    if (Written) return;
    Written = true;
    auto taken = qobject_cast<QMenuBar*>(&Owner) ? TakenBy(*Owner.window()) : QSet<QChar>();
    for (auto* const action : Owner.actions()) {
        const QString text = action->text();
        const int at = action->isSeparator() ? -1 : FindLetter(text, taken);
        if (at < 0) continue;
        taken.insert(text.at(at).toUpper());
        // An ampersand of the text's own is no mark.
        QString marked = text.left(at).replace(Mark, QLatin1String("&&"));
        marked += Mark + text.mid(at).replace(Mark, QLatin1String("&&"));
        action->setProperty("textAtRest", text);
        action->setText(marked);
    }
}

void MenuLetters::EraseUnlessUsed() {
    if (!Owner.hasFocus() && !QApplication::activePopupWidget()) Erase();
}

void MenuLetters::Erase() {
    if (!Written) return;
    Written = false;
    for (auto* const action : Owner.actions())
        if (HasLetter(action)) action->setText(action->property("textAtRest").toString());
}

void MenuLetters::OnMenuEvent(QMenu& menu, QEvent& event) {
    const auto* const bar = qobject_cast<QMenuBar*>(menu.parentWidget());
    const bool byKeyboard = bar && std::ranges::any_of(bar->actions(), HasLetter);
    if (event.type() == QEvent::KeyPress || (event.type() == QEvent::Show && byKeyboard)) Write();
    if (event.type() == QEvent::Hide) Erase();
}

void MenuLetters::OnBarEvent(QEvent& event) {
    switch (event.type()) {
        case QEvent::ShortcutOverride:
        case QEvent::KeyPress: {
            const int key = static_cast<QKeyEvent&>(event).key();
            if (key == Qt::Key_Alt || key == Qt::Key_F10) Write();
            break;
        }
        // Released alone, Alt moves the keyboard into the bar; between two menus none is open for a moment.
        case QEvent::KeyRelease:
        case QEvent::FocusOut:
        case QEvent::WindowDeactivate:
        case QEvent::Hide:
            EraseSoon.start(0);
            break;
        default:
            break;
    }
}

bool MenuLetters::eventFilter(QObject* watched, QEvent* event) {
    if (auto* const menu = qobject_cast<QMenu*>(&Owner)) {
        OnMenuEvent(*menu, *event);
    } else {
        OnBarEvent(*event);
    }
    return QObject::eventFilter(watched, event);
}
