#include "application.h"
#include "language.h"
#include "mainwindow.h"
#include "sessionmanager.h"
#include "style.h"
#include "zorvicchooser.h"

#ifdef ZORVIC_ASRUN
#include <zorvic/asrun.h>
#endif

#include <QSysInfo>

#include <iostream>
#include <optional>
#include <string_view>

namespace {

/// Whether to use the dark style sheet; nothing when the command line is wrong, which has been said then.
std::optional<bool> ReadCommandLine(int argc, char** argv) {
    bool useCustomStyle = true;
    for (int index = 1; index < argc; ++index) {
        const std::string_view argument = argv[index];
        if (argument != "--nocustomstyle") {
            std::cerr << "Invalid command line argument \"" << argument << "\"." << std::endl;
            return std::nullopt;
        }
        useCustomStyle = false;
    }
    return useCustomStyle;
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM_PLUGIN_PATH", ".");
    Application::ScaleWithScreens();
    // Qt sees the program's name only: it would take its own options off the line before they can be refused.
    int argumentsForQt = 1;
    Application application(argumentsForQt, argv);
    const auto useCustomStyle = ReadCommandLine(argc, argv);
    if (!useCustomStyle) return 1;

    // Not the system's language: operators know the English texts, and guides name them.
    UseLanguage(application, qEnvironmentVariable("ZORVIC_LANG"));
    QFont font = SizeDefaultFont(10);
    font.setStyleStrategy(QFont::PreferAntialias);
    QApplication::setFont(font);
    if (*useCustomStyle) TryLoadStyle(application);

#ifdef ZORVIC_ASRUN
    Zorvic::SetClientName("zorvic-control on " + QSysInfo::machineHostName().toStdString());
#endif
    // Destroyed in reverse order: the windows still reach their sessions while they close.
    SessionManager sessions;
    MainWindow window;
    ZorvicChooser chooser(&window);
    window.show();
    chooser.show();
    QApplication::exec();
    return 0;
}
