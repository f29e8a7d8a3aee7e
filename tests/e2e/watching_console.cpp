// A console in a process of its own, connected to the unit given as the argument. "Bind channels" is checked. Prints
// "NAME VALUE" for what the mix sliders show, now and at every change, until it is killed.

#include "application.h"
#include "support/consolewindows.h"

#include <QCheckBox>
#include <QSlider>

#include <iostream>

int main(int argc, char** argv) {
    if (argc != 2) return 1;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const Application application(argc, argv);
    ConsoleWindows console;
    console.Connect(argv[1]);
    if (console.Tabs()->count() == 0) return 1;
    console.Find<QCheckBox>("BindAudioChannels")->setChecked(true);
    for (const char* name : {"LChannel", "RChannel", "HueSel"}) {
        const auto* const slider = console.Find<QSlider>(name);
        const auto print = [name](int value) { std::cout << name << ' ' << value << std::endl; };
        print(slider->value());
        QObject::connect(slider, &QSlider::valueChanged, slider, print);
    }
    return Application::exec();
}
