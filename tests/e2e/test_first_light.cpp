#include "support/clippreset.h"
#include "support/virtualdisplay.h"
#include "unitwithclip.h"

TEST(FirstLight, AnOperatorFindsAUnitConnectsAndTakesAPreset) {
    // The chooser picks the first unit by nickname: nothing else on this machine sorts before this one.
    const UnitWithClip unit({"--announce", "lo", "--nickname", "!First Light"}, 60);
    ASSERT_TRUE(WaitUntil([&] { return unit.ClipReady(); }));
    ASSERT_EQ(unit.Observer->CreatePreset(ClipPreset("Opening")), Zorvic::ZORVIC_STATUS_OK);

    VirtualDisplay display;
    ChildProcess console({"env", "ZORVIC_DISCOVERY=lo", ZORVIC_CONSOLE_PROGRAM}, unit.Directory.Path() + "/log");
    const auto chooser = [&] { return display.Window("Choose a Zorvic"); };
    ASSERT_TRUE(WaitUntil([&] { return !chooser().empty(); }));
    const std::string main = display.Window("Zorvic Control");
    ASSERT_TRUE(display.Do({"windowsize", "--sync", main, "1440", "900"}));

    // Return connects once the chooser has found the unit; before that the address is empty and nothing happens.
    ASSERT_TRUE(WaitUntil([&] {
        display.Do({"windowactivate", "--sync", chooser(), "key", "Return"});
        return WaitUntil([&] { return chooser().empty(); }, std::chrono::seconds(2));
    }));

    // The first row of the preset list: a click selects the preset on the unit.
    // It fails while no window is active, as between the chooser's end and the main window's turn.
    ASSERT_TRUE(WaitUntil([&] { return display.Do({"windowactivate", "--sync", main}); }));
    ASSERT_TRUE(WaitUntil([&] {
        display.Do({"mousemove", "--window", main, "500", "258", "click", "1"});
        return unit.State().IsSelected;
    }));
    ASSERT_FALSE(unit.State().IsPlaying);
    ASSERT_TRUE(display.Do({"key", "Return"}));
    ASSERT_TRUE(WaitUntil([&] { return unit.State().IsPlaying; }));

    const auto remaining = [&] {
        Zorvic::TimeCode code;
        return unit.Observer->GetTimeCode(code, 1) == Zorvic::ZORVIC_STATUS_OK ? code.Time : 60000;
    };
    ASSERT_TRUE(WaitUntil([&] { return remaining() < 60000; }));
    const std::string earlier = display.Picture();
    const int before = remaining();
    ASSERT_TRUE(WaitUntil([&] { return remaining() < before - 1500; }));
    EXPECT_NE(display.Picture(), earlier) << "the console does not show that time runs";
    EXPECT_TRUE(console.Running());
}
