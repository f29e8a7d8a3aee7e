#include "application.h"

#include "log.h"

#include <exception>

// Qt 6 always does, and warns of whoever asks for it.
void Application::ScaleWithScreens() {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    setAttribute(Qt::AA_EnableHighDpiScaling);
    setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
}

Application::Application(int& argc, char** argv) : QApplication(argc, argv) {}

bool Application::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::exception& error) {
        ZORVIC_LOG_ERROR << "Unhandled error in an event handler: " << error.what();
    } catch (...) {
        ZORVIC_LOG_ERROR << "Unhandled error of an unknown type in an event handler";
    }
    // The receiver may be gone by now: it is not asked for its name.
    return false;
}
