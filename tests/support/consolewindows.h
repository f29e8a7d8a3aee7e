#pragma once

#include "mainwindow.h"
#include "sessionmanager.h"
#include "zorvicchooser.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>

/// A window of this kind, a visible one when there is one; null when there is none.
template <typename Widget>
Widget* TopLevel() {
    Widget* best = nullptr;
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        auto* const found = qobject_cast<Widget*>(window);
        if (found && (!best || found->isVisible())) best = found;
    }
    return best;
}

/// The console's windows in this process, on whichever library the program links.
class ConsoleWindows {
public:
    ConsoleWindows() {
        qputenv("ZORVIC_DISCOVERY", "off");
        Window.resize(1280, 800);
        Window.show();
    }

    /// As an operator connects who types the address. A unit that answers has its tab when this returns.
    void Connect(const std::string& host) {
        Chooser.show();
        Chooser.findChild<QLineEdit*>(QStringLiteral("ZorvicIPBox"))->setText(QString::fromStdString(host));
        QTest::mouseClick(Chooser.findChild<QPushButton*>(QStringLiteral("ConnectButton")), Qt::LeftButton);
    }
    QTabWidget* Tabs() const { return Window.findChild<QTabWidget*>(QStringLiteral("ZorvicTabs")); }
    /// A widget of the current tab.
    template <typename Widget>
    Widget* Find(const char* name) const {
        return Tabs()->currentWidget()->findChild<Widget*>(QString::fromLatin1(name));
    }

    SessionManager Registry;
    MainWindow Window;
    ZorvicChooser Chooser{&Window};
};
