// Return pressed to Take carried out: the real console on a virtual display and a real unit, the key sent through the X
// server by a running xdotool. A second client sees the preset play; the time up to its notification bounds the time up
// to the unit's receiving Take from above. Prints the median and the slowest of 50 presses.

#include <zorvic/zorvic.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <vector>

#include "support/clippreset.h"
#include "support/unitprocess.h"
#include "support/virtualdisplay.h"

namespace {

using Clock = std::chrono::steady_clock;

/// Notices when the unit reports changed preset states.
class Observer {
public:
    explicit Observer(const std::string& host) : Client(host, 1) {
        Client.SetStateEventCallback(Zorvic::ZORVIC_STATE_PRESETSTATES, &Observer::Notice, this);
    }
    Zorvic::Session& Session() { return Client; }
    Zorvic::PresetState State() {
        std::vector<Zorvic::PresetState> states;
        Client.GetPresetStates(states);
        return states.empty() ? Zorvic::PresetState() : states[0];
    }
    /// When the preset was first seen playing and not paused.
    Clock::time_point WaitForPlay() {
        std::unique_lock lock(Mutex);
        while (!State().IsPlaying || State().IsPaused)
            Changed.wait_for(lock, std::chrono::seconds(1));
        return Last;
    }

private:
    static void Notice(Zorvic::StateEventType /*type*/, void* user) {
        auto* self = static_cast<Observer*>(user);
        const std::lock_guard lock(self->Mutex);
        self->Last = Clock::now();
        self->Changed.notify_all();
    }

    std::mutex Mutex;  // guards Last
    std::condition_variable Changed;
    Clock::time_point Last;
    Zorvic::Session Client;
};

}  // namespace

int main() {
    TemporaryDirectory directory;
    const std::string store = directory.Path() + "/store";
    std::filesystem::create_directories(store + "/Assets");
    MakeClip(store + "/Assets/clip.mov", 120);
    UnitProcess unit(store, {"--announce", "lo", "--nickname", "!Measured"});
    Observer observer(unit.Host());
    Zorvic::Preset preset = ClipPreset("Measured");
    preset.Loop = -1;
    observer.Session().CreatePreset(preset);
    observer.Session().SelectPreset(1);

    VirtualDisplay display;
    ChildProcess console({"env", "ZORVIC_DISCOVERY=lo", ZORVIC_CONSOLE_PROGRAM}, directory.Path() + "/console.log");
    WaitUntil([&] { return !display.Window("Choose a Zorvic").empty(); });
    const bool connected = WaitUntil([&] {
        const std::string chooser = display.Window("Choose a Zorvic");
        if (chooser.empty()) return true;
        display.Do({"windowactivate", "--sync", chooser, "key", "Return"});
        return WaitUntil([&] { return display.Window("Choose a Zorvic").empty(); }, std::chrono::seconds(2));
    });
    if (!connected || !display.Do({"windowactivate", "--sync", display.Window("Zorvic Control")})) return 1;
    WaitUntil([] { return false; }, std::chrono::seconds(1));

    // One xdotool for all keys: starting it takes longer than what is measured.
    FILE* keys = popen("xdotool -", "w");
    if (!keys) return 1;
    std::vector<double> milliseconds;
    for (int press = 0; press < 50; ++press) {
        observer.Session().End(1);
        WaitUntil([] { return false; }, std::chrono::milliseconds(300));
        const auto pressed = Clock::now();
        std::fputs("key --delay 0 Return\n", keys);
        std::fflush(keys);
        milliseconds.push_back(std::chrono::duration<double, std::milli>(observer.WaitForPlay() - pressed).count());
    }
    pclose(keys);
    std::sort(milliseconds.begin(), milliseconds.end());
    std::printf("Return to playing seen by a second client: median %.1f ms, slowest %.1f ms of %zu\n",
                milliseconds[milliseconds.size() / 2], milliseconds.back(), milliseconds.size());
}
