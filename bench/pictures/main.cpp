// Leads the real console through its windows and states, with real units, and takes a picture of each. Says what is
// cut off, overlaps or sticks out, and then ends with 1. Runs on the display that it finds: see scripts/take-pictures.

#include "application.h"
#include "camera.h"
#include "language.h"
#include "showoperator.h"
#include "style.h"
#include "tour.h"
#include "units.h"

#include <iostream>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: zorvic-pictures DEMO-MEDIA PICTURES" << std::endl;
        return 2;
    }
    qputenv("ZORVIC_DISCOVERY", "lo");
    // As the console's own main() does it.
    Application::ScaleWithScreens();
    int argumentsForQt = 1;
    Application application(argumentsForQt, argv);
    UseLanguage(application, qEnvironmentVariable("ZORVIC_LANG"));
    QApplication::setFont(SizeDefaultFont(10));
    TryLoadStyle(application);
    try {
        const PictureUnits units(argv[1]);
        Camera camera{QDir(QString::fromLocal8Bit(argv[2]))};
        ShowOperator op(camera);
        TourStart(op, units);
        TourShow(op);
        TourMarks(op);
        TourMix(op);
        TourMenus(op);
        TourBuilder(op);
        TourAssets(op, units);
        TourUnits(op, units);
        TourLoss(op, units);
        return camera.Faults().isEmpty() ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << error.what() << std::endl;
        return 1;
    }
}
