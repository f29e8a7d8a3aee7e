#include <gmock/gmock.h>

#include <QApplication>

// The type of the application object. The console's own subclass takes its place by one definition on the target.
#ifdef ZORVIC_TEST_APPLICATION_HEADER
#include ZORVIC_TEST_APPLICATION_HEADER
using TestApplication = ZORVIC_TEST_APPLICATION;
#else
using TestApplication = QApplication;
#endif

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const TestApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
