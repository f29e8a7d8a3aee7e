#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <zorvic/zorvic.h>

#include <filesystem>

#include "support/clippreset.h"
#include "support/unitprocess.h"
#include "support/virtualdisplay.h"

namespace {

using std::chrono::seconds;
namespace fs = std::filesystem;

bool AssetReady(Zorvic::Session& session) {
    std::vector<Zorvic::Asset> assets;
    return session.GetAssets(assets) == Zorvic::ZORVIC_STATUS_OK && assets.size() == 1 &&
           assets[0].Status == Zorvic::ZORVIC_ASSETSTATE_READY;
}

Zorvic::PresetState OnlyState(Zorvic::Session& session) {
    std::vector<Zorvic::PresetState> states;
    EXPECT_EQ(session.GetPresetStates(states), Zorvic::ZORVIC_STATUS_OK);
    return states.size() == 1 ? states[0] : Zorvic::PresetState();
}

}  // namespace

TEST(FirstLight, AnOperatorFindsAUnitConnectsAndTakesAPreset) {
    TemporaryDirectory directory;
    const std::string store = directory.Path() + "/store";
    fs::create_directories(store + "/Assets");
    MakeClip(store + "/Assets/clip.mov", 60);
    // The chooser picks the first unit by nickname: nothing else on this machine sorts before this one.
    UnitProcess unit(store, {"--announce", "lo", "--nickname", "!First Light"});
    Zorvic::Session observer(unit.Host(), 1);
    ASSERT_TRUE(observer.Connected());
    ASSERT_TRUE(WaitUntil([&] { return AssetReady(observer); }));
    ASSERT_EQ(observer.CreatePreset(ClipPreset("Opening")), Zorvic::ZORVIC_STATUS_OK);

    VirtualDisplay display;
    ChildProcess console({"env", "ZORVIC_DISCOVERY=lo", ZORVIC_CONSOLE_PROGRAM}, directory.Path() + "/console.log");
    ASSERT_TRUE(WaitUntil([&] { return !display.Window("Choose a Zorvic").empty(); }));
    const std::string main = display.Window("Zorvic Control");
    ASSERT_TRUE(display.Do({"windowsize", "--sync", main, "1440", "900"}));

    // Return connects once the chooser has found the unit; before that the address is empty and nothing happens.
    ASSERT_TRUE(WaitUntil(
        [&] {
            const std::string chooser = display.Window("Choose a Zorvic");
            if (chooser.empty()) return true;
            display.Do({"windowactivate", "--sync", chooser, "key", "Return"});
            return WaitUntil([&] { return display.Window("Choose a Zorvic").empty(); }, seconds(2));
        },
        seconds(30)));

    // The first row of the preset list: a click selects the preset on the unit.
    // It fails while no window is active, as between the chooser's end and the main window's turn.
    ASSERT_TRUE(WaitUntil([&] { return display.Do({"windowactivate", "--sync", main}); }));
    ASSERT_TRUE(WaitUntil([&] {
        display.Do({"mousemove", "--window", main, "500", "243", "click", "1"});
        return OnlyState(observer).IsSelected;
    }));
    ASSERT_FALSE(OnlyState(observer).IsPlaying);
    ASSERT_TRUE(display.Do({"key", "Return"}));
    ASSERT_TRUE(WaitUntil([&] { return OnlyState(observer).IsPlaying; }));

    Zorvic::TimeCode before;
    Zorvic::TimeCode after;
    ASSERT_TRUE(WaitUntil([&] { return observer.GetTimeCode(before, 1) == Zorvic::ZORVIC_STATUS_OK; }));
    const std::string earlier = display.Picture();
    ASSERT_TRUE(WaitUntil(
        [&] { return observer.GetTimeCode(after, 1) == Zorvic::ZORVIC_STATUS_OK && after.Time < before.Time - 1500; }));
    EXPECT_NE(display.Picture(), earlier) << "the console does not show that time runs";
    EXPECT_TRUE(console.Running());
}
