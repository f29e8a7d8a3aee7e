#pragma once

#include "support/clippreset.h"
#include "support/consolewindows.h"
#include "unitwithclip.h"

/// The console's windows in this process, and a unit of their own to connect to.
class ConsoleOnUnit : public testing::Test {
protected:
    void Connect() { Console.Connect(Unit.Process->Host()); }
    template <typename Condition>
    static bool Becomes(Condition condition) {
        return QTest::qWaitFor(condition, 30000);
    }
    void Click(const char* name) const { QTest::mouseClick(Console.Find<QPushButton>(name), Qt::LeftButton); }

    UnitWithClip Unit;
    ConsoleWindows Console;
};
