#include "conversions.h"
#include "support/unitprocess.h"
#include "unit/media_samples.h"
#include "unit/unitfakes.h"

#include <zorvic/asrun.h>
#include <zorvic/preview.h>
#include <zorvic/session.h>

#include <sys/stat.h>

#include <csignal>
#include <fstream>

using namespace Zorvic;

namespace {

constexpr std::chrono::seconds Watchdog(60);

/// A real unit that shows one output to nobody but a preview.
class RendererTest : public ::testing::Test {
protected:
    RendererTest() {
        std::filesystem::create_directories(Directory.Path() + "/store/Assets");
        EXPECT_TRUE(ZorvicUnit::Encode("-f lavfi -i color=c=0x00C000:s=320x180:r=25:d=30 -c:v mpeg4 -q:v 2",
                                       Directory.Path() + "/store/Assets/green.mov"));
        Unit.emplace(Directory.Path() + "/store",
                     std::vector<std::string>{"--announce", "off", "--output", "1=offscreen", "--video-mode", "720p",
                                              "--audio", "file:" + Directory.Path() + "/sound.wav"});
        Console.emplace(Unit->Host(), 1);
        Preview.emplace(Unit->Host());
    }

    /// The renderer's process, 0 while there is none.
    pid_t Renderer() { return RendererOf(Unit->Process().Id()); }
    static pid_t RendererOf(pid_t unit) {
        const std::string task = "/proc/" + std::to_string(unit) + "/task";
        for (const auto& thread : std::filesystem::directory_iterator(task)) {
            std::ifstream children(thread.path() / "children");
            for (pid_t child = 0; children >> child;) {
                if (ReadFile("/proc/" + std::to_string(child) + "/comm").starts_with("zorvic-render")) return child;
            }
        }
        return 0;
    }
    using Clock = std::chrono::steady_clock;
    /// A picture that was shown after that moment is green.
    bool ShowsGreen(Clock::time_point since) {
        for (const OutputPicture& picture : Preview->Latest()) {
            if (!picture.Signal || Clock::now() - picture.Age < since || picture.RGB == nullptr) continue;
            const auto& rgb = *picture.RGB;
            const auto middle = static_cast<std::size_t>(picture.Height / 2 * picture.Width + picture.Width / 2) * 3;
            return rgb[middle] < 40 && rgb[middle + 1] > 150 && rgb[middle + 2] < 40;
        }
        return false;
    }

    TemporaryDirectory Directory;
    std::optional<UnitProcess> Unit;
    std::optional<Session> Console;
    std::optional<OutputPreview> Preview;
};

TEST_F(RendererTest, ComesBackWithItsPictureAndDisturbsNoClock) {
    zorvic::v1::Preset sent = PresetWith(0, "C:\\Assets\\green.mov");
    auto& pin = *sent.mutable_canvases(0)->mutable_assets(0);
    sent.mutable_canvases(0)->set_width(1280);
    sent.mutable_canvases(0)->set_height(720);
    pin.set_width(1280);
    pin.set_height(720);
    sent.set_loop(-1);
    ASSERT_EQ(Console->CreatePreset(Internal::FromWire(sent)), ZORVIC_STATUS_OK);
    std::vector<PresetState> states;
    ASSERT_TRUE(
        WaitUntil([&] { return Console->GetPresetStates(states) == ZORVIC_STATUS_OK && states[0].TRT > 0; }, Watchdog));
    ASSERT_EQ(Console->Take(1), ZORVIC_STATUS_OK);
    ASSERT_TRUE(WaitUntil([&] { return ShowsGreen({}); }, Watchdog));
    TimeCode before;
    ASSERT_EQ(Console->GetTimeCode(before, 1), ZORVIC_STATUS_OK);
    const auto began = Clock::now();
    for (const int signal : {SIGKILL, SIGSTOP, SIGSEGV}) {
        SCOPED_TRACE(signal);
        const pid_t old = Renderer();
        ASSERT_NE(old, 0);
        kill(old, signal);
        EXPECT_TRUE(WaitUntil([&] { return Renderer() != 0 && Renderer() != old; }, Watchdog));
        const auto replaced = Clock::now();
        EXPECT_TRUE(WaitUntil([&] { return ShowsGreen(replaced); }, Watchdog));
    }
    TimeCode after;
    ASSERT_EQ(Console->GetTimeCode(after, 1), ZORVIC_STATUS_OK);
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - began);
    const auto moved = ((before.Time - after.Time) % 30'000 + 30'000) % 30'000;
    EXPECT_NEAR(moved, static_cast<double>(passed.count() % 30'000), 500);
    EXPECT_GT(std::filesystem::file_size(Directory.Path() + "/sound.wav"), passed.count() * 48 * 4)
        << "the sound of all renderers";
    ASSERT_EQ(Console->End(1), ZORVIC_STATUS_OK);
    const auto dark = [&] { return !Preview->Latest().empty() && !Preview->Latest()[0].Signal; };
    EXPECT_TRUE(WaitUntil(dark, Watchdog));
    const auto sheetTells = [&] {
        std::vector<AsRunEntry> entries;
        std::string problem;
        ReadAsRun(Unit->Host(), {}, entries, problem);
        const auto isLit = [](const AsRunEntry& entry) { return entry.Shown == ZORVIC_SHOWN_LIT; };
        return std::ranges::count(entries, ZORVIC_ASRUN_FAULT, &AsRunEntry::Kind) >= 3 &&
               std::ranges::count_if(entries, isLit) == 1;
    };
    EXPECT_TRUE(WaitUntil(sheetTells, Watchdog));
}

/// How often the process's thread of that name has slept; nothing while there is none.
std::optional<int> SleepsOf(pid_t process, const std::string& name) {
    const std::string tasks = "/proc/" + std::to_string(process) + "/task";
    if (process == 0 || !std::filesystem::exists(tasks)) return std::nullopt;
    for (const auto& task : std::filesystem::directory_iterator(tasks)) {
        if (ReadFile(task.path() / "comm") != name + "\n") continue;
        const std::string status = ReadFile(task.path() / "status");
        const std::string figure = "\nvoluntary_ctxt_switches:";
        return std::stoi(status.substr(status.find(figure) + figure.size()));
    }
    return std::nullopt;
}

// The sound says in the log that its file takes nothing, and nobody reads the log.
TEST_F(RendererTest, AStuckLogHoldsUpNoSound) {
    std::filesystem::create_symlink("/dev/full", Directory / "full.wav");
    ASSERT_EQ(mkfifo((Directory / "log").c_str(), 0600), 0);
    const std::string command = "exec 2<>log; head -c 65536 /dev/zero >&2; exec " ZORVIC_UNIT_PROGRAM
                                " --port=0 --announce=off --store=stuck --output 1=offscreen --audio file:full.wav";
    ChildProcess unit({"env", "-C", Directory.Path(), "sh", "-c", command});
    const auto sleeps = [&] { return SleepsOf(RendererOf(unit.Id()), "zr-sound"); };
    ASSERT_TRUE(WaitUntil([&] { return sleeps().has_value(); }, Watchdog));
    const int before = *sleeps();
    EXPECT_TRUE(WaitUntil([&] { return sleeps().value_or(0) > before + 100; })) << "two seconds of blocks";
}

}  // namespace
