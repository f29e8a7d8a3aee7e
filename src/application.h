#pragma once

#include <QApplication>

/// The application object. What escapes a slot or an event handler ends that handler only: it is logged at error level
/// and the program goes on, because a unit that sends an unknown value must not take the operator's console away.
class Application : public QApplication {
    Q_OBJECT

public:
    /// To be called before there is an application.
    static void ScaleWithScreens();

    Application(int& argc, char** argv);

    /// False when the receiver raised.
    bool notify(QObject* receiver, QEvent* event) override;
};
