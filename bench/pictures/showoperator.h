#pragma once

#include "camera.h"
#include "mainwindow.h"
#include "sessionmanager.h"
#include "support/consolewindows.h"
#include "zorvicchooser.h"

#include <QString>
#include <QTabWidget>

#include <functional>
#include <iostream>
#include <string>

class PlayHeadWidget;

/// The console's windows in this process, and the hands of who works with them.
class ShowOperator {
public:
    explicit ShowOperator(Camera& camera);

    /// A widget of the current tab.
    template <typename Widget = QWidget>
    Widget& Find(const char* name) const {
        return *Tabs().currentWidget()->findChild<Widget*>(QString::fromLatin1(name));
    }
    PlayHeadWidget& ScrubBar() const;
    QTabWidget& Tabs() const;
    /// A picture of the main window, or of another one.
    void Picture(const char* name) const { Pictures.Take(QString::fromLatin1(name), Window); }
    void Picture(const char* name, const QWidget& window) const { Pictures.Take(QString::fromLatin1(name), window); }

    void Connect(const std::string& host);
    void Press(const char* button) const;
    void Key(int key) const;
    /// Clicks on the preset's row, and takes the pointer away.
    void Select(const char* preset, Qt::KeyboardModifiers modifiers = {}) const;
    QRect RowOf(const char* preset) const;
    void Point(const QWidget& widget, QPoint at) const;
    void PointAway() const;
    void Seek(const char* time) const;
    void ShowMarks(const char* tab) const;
    /// Opens a menu that runs its own event loop, takes a picture while it is open, and closes it.
    void PictureOfMenu(const char* name, const QWidget& window, const std::function<void()>& open) const;
    /// Waits for it, but not for ever: the pictures then show what became of it.
    template <typename Condition>
    static void Becomes(Condition condition) {
        if (!QTest::qWaitFor(condition, 60000)) std::cerr << "The console did not do what was expected" << std::endl;
    }

    SessionManager Registry;
    MainWindow Window;
    ZorvicChooser Chooser{&Window};

private:
    Camera& Pictures;
};
