#pragma once

#include <QObject>
#include <QTimer>

class QMenu;
class QMenuBar;
class QWidget;

/// Letters that choose in menus. They are found for each menu by itself, so that none clashes in any language, and
/// stand in the texts only while the keyboard is used in the menu (in the menu bar: from pressing Alt on). At rest
/// every text is what it was made with, without an ampersand.
class MenuLetters : public QObject {
    Q_OBJECT

public:
    /// For this menu alone.
    static void GiveTo(QMenu& menu);
    /// For the bar and its menus, present and future.
    static void GiveTo(QMenuBar& bar);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    explicit MenuLetters(QWidget& owner);

    void OnBarEvent(QEvent& event);
    void OnMenuEvent(QMenu& menu, QEvent& event);
    void Write();
    void EraseUnlessUsed();
    void Erase();

    QWidget& Owner;
    bool Written = false;
    QTimer EraseSoon;
};
