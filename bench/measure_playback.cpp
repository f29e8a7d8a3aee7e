// What the audience sees and hears of a real unit: pictures are read from its windows on a virtual display, by the
// number that each carries; sound from the file that it writes. Prints a line per measure.
//
//   measure_playback [steady] [four] [same] [seams] [links] [take] [seek] [sync] [memory] [faults] [hostile] [idle]
//   [other] (all, when none is named)

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <zorvic/zorvic.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "machinepauses.h"
#include "support/unitprocess.h"
#include "support/virtualdisplay.h"
#include "windowwatch.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;
using Sights = std::vector<WindowWatch::Sight>;

constexpr double PictureMS = 40;
constexpr auto Linked = std::filesystem::copy_options::create_hard_links | std::filesystem::copy_options::recursive;

struct Trial {
    std::string Name;
    std::string File;
    int FirstPicture = 0;
    int Pictures = 0;  // 0: to the end
    int Loop = 0;
    int Link = 0;
    int Output = 1;
    bool OnAll = false;  // on the outputs before that one, too
    bool Freeze = false;
};

MachinePauses& Machine() {
    static MachinePauses pauses;
    return pauses;
}

double MS(Clock::duration duration) {
    return Milliseconds(duration).count();
}

struct Summary {
    double Mean = 0;
    double Median = 0;
    double P99 = 0;
    double Most = 0;
};

Summary Sum(std::vector<double> values) {
    if (values.empty()) return {};
    std::sort(values.begin(), values.end());
    const auto at = [&](double part) {
        return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
    };
    return {std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size()), at(0.5), at(0.99),
            values.back()};
}

/// A unit with windows and presets of its own, and a console's connection to it.
class Show {
public:
    Show(const std::string& clips, std::vector<std::string> options) : Store(Directory.Path() + "/store") {
        std::filesystem::create_directories(Store);
        std::filesystem::copy(clips, Store + "/Assets", Linked);
        options.insert(options.end(), {"--announce", "off", "--nickname", "Measured", "--refresh", "50"});
        Unit.emplace(Store, std::move(options));
        Client.emplace(Unit->Host(), 1);
    }

    int Add(const Trial& trial) {
        const std::string path = "C:\\Assets\\" + trial.File;
        Zorvic::AssetMetadata metadata;
        const auto known = [&] {
            std::this_thread::sleep_for(200ms);
            return Client->ReadAssetMetadata(path, metadata) == Zorvic::ZORVIC_STATUS_OK;
        };
        if (!WaitUntil(known)) throw std::runtime_error("no asset " + path);
        Zorvic::Preset preset;
        preset.Name = trial.Name;
        for (int i = 0; i < trial.Output; ++i) {
            auto& canvas = preset.Canvases.emplace_back();
            canvas.Index = static_cast<std::uint32_t>(i);
            canvas.CanvasCfg.Orientation.Orientation = Zorvic::CanvasOrientationEnum::Single;
            canvas.CanvasCfg.Dimensions = {1920, 1080};
            canvas.CanvasCfg.NumOutputs = 1;
        }
        for (auto& canvas : preset.Canvases) {
            if (trial.OnAll || &canvas == &preset.Canvases.back())
                Zorvic::AttachAssetToCanvas(Zorvic::ZORVIC_ECALIGN_STRETCHED, path, metadata.Resolution, canvas);
        }
        const auto at = [&](int picture) { return metadata.Duration - static_cast<int>(picture * PictureMS); };
        preset.InPosition = trial.FirstPicture > 0 ? at(trial.FirstPicture) : 0;
        preset.OutPosition = trial.Pictures > 0 ? at(trial.FirstPicture + trial.Pictures) : 0;
        preset.Loop = trial.Loop;
        preset.Link = trial.Link;
        preset.FreezeAtEnd = trial.Freeze;
        preset.Volume = {65535, 65535};
        if (Client->CreatePreset(preset) != Zorvic::ZORVIC_STATUS_OK) throw std::runtime_error("no preset of " + path);
        Durations[++Last] = metadata.Duration;
        return Last;
    }

    void SetLink(int pk, int link) {
        std::vector<Zorvic::Preset> presets;
        Client->GetPresets(presets);
        for (auto& preset : presets) {
            if (preset.PK != pk) continue;
            preset.Link = link;
            Client->UpdatePreset(preset);
        }
    }

    /// The renderer's process, 0 while there is none.
    pid_t Renderer() {
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            std::ifstream status(entry.path() / "stat");
            int pid = 0;
            std::string name;
            char state = 0;
            int parent = 0;
            status >> pid >> name >> state >> parent;
            if (name == "(zorvic-render)" && parent == Unit->Process().Id() && state != 'Z') return pid;
        }
        return 0;
    }

    TemporaryDirectory Directory;
    std::string Store;
    std::optional<UnitProcess> Unit;
    std::optional<Zorvic::Session> Client;
    std::map<int, int> Durations;
    int Last = 0;
};

double MemoryMB(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/statm");
    double size = 0;
    double resident = 0;
    file >> size >> resident;
    return resident * 4096 / 1e6;
}

/// How far a row of sights is from showing each picture of a pass once, in order, for its time.
struct Faults {
    int Shown = 0;
    int Missing = 0;
    int Excused = 0;  // of the missing ones: the machine stood still
    int Black = 0;
    int Uneven = 0;  // stood 1.5 refreshes longer or shorter than its time
};

Faults Judge(const Sights& sights, const std::function<int(int)>& successor) {
    Faults faults;
    for (std::size_t i = 1; i < sights.size(); ++i) {
        if (sights[i].Number == NoNumber) {
            ++faults.Black;
            continue;
        }
        ++faults.Shown;
        int expected = successor(sights[i - 1].Number);
        for (int guard = 0; sights[i - 1].Number != NoNumber && expected != sights[i].Number && guard < 100; ++guard) {
            ++faults.Missing;
            if (Machine().Within(sights[i - 1].At, sights[i].At + 20ms)) ++faults.Excused;
            expected = successor(expected);
        }
        if (i + 1 == sights.size()) continue;
        if (std::abs(MS(sights[i + 1].At - sights[i].At) - PictureMS) > 30) ++faults.Uneven;
    }
    return faults;
}

void Print(const char* what, const Faults& faults) {
    std::printf(
        "%-34s shown %d, missing %d (%d in pauses of the machine), black %d, stood 30 ms too long or short %d\n", what,
        faults.Shown, faults.Missing, faults.Excused, faults.Black, faults.Uneven);
    std::fflush(stdout);
}

int Next(int number) {
    return number + 1;
}

std::function<int(int)> InPass(int first, int pictures) {
    return [=](int number) { return number + 1 >= first + pictures ? first : number + 1; };
}

std::chrono::seconds Length() {
    const char* text = std::getenv("ZORVIC_MEASURE_SECONDS");
    return std::chrono::seconds(text == nullptr ? 60 : std::atoi(text));
}

// Steady play of one picture in one window, and where the picture stands against the timecodes that a console gets.
void Steady(const std::string& clips) {
    Show show(clips, {"--output", "1=window:960x540"});
    WindowWatch watch("Measured - Output 1", 0, 0);
    const int pk = show.Add({.Name = "hd", .File = "long.mp4"});
    show.Client->SelectPreset(pk);
    struct Codes {
        Show* Of;
        int PK;
        std::mutex Lock;
        std::vector<std::pair<Clock::time_point, int>> Seen;
    } codes{&show, pk, {}, {}};
    show.Client->SetStateEventCallback(
        Zorvic::ZORVIC_STATE_TIMECODE,
        [](Zorvic::StateEventType, void* user) {
            auto* self = static_cast<Codes*>(user);
            Zorvic::TimeCode code;
            if (self->Of->Client->GetTimeCode(code, self->PK) != Zorvic::ZORVIC_STATUS_OK) return;
            const std::lock_guard lock(self->Lock);
            self->Seen.emplace_back(Clock::now(), code.Time);
        },
        &codes);
    std::this_thread::sleep_for(2s);
    watch.Take();
    show.Client->Take(pk);
    std::this_thread::sleep_for(Length() - 2s);
    const Sights sights = watch.Take();
    Print("steady, 1080p25 in 960x540", Judge(sights, Next));
    std::vector<double> errors;
    const std::lock_guard lock(codes.Lock);
    for (const auto& [at, remaining] : codes.Seen) {
        const auto after = std::find_if(sights.begin(), sights.end(), [&](const auto& sight) { return sight.At > at; });
        if (after == sights.begin() || after == sights.end() || (after - 1)->Number == NoNumber) continue;
        const auto& standing = *(after - 1);
        const double shown = standing.Number * PictureMS + MS(at - standing.At);
        errors.push_back(show.Durations[pk] - remaining - shown);
    }
    const double lag = Sum(errors).Mean;
    for (double& error : errors)
        error = std::abs(error);
    const Summary sum = Sum(errors);
    std::printf("%-34s mean %.1f, p99 %.1f, most %.1f ms, on average %+.1f (%zu timecodes)\n",
                "picture against timecode", sum.Mean, sum.P99, sum.Most, lag, errors.size());
}

void Four(const std::string& clips) {
    Show show(clips, {"--output", "1=window:480x270", "--output", "2=window:480x270", "--output", "3=window:480x270",
                      "--output", "4=window:480x270"});
    std::vector<std::unique_ptr<WindowWatch>> watches;
    std::vector<int> keys;
    for (int output = 1; output <= 4; ++output) {
        watches.push_back(std::make_unique<WindowWatch>("Measured - Output " + std::to_string(output),
                                                        (output - 1) % 2 * 600, (output - 1) / 2 * 400));
        keys.push_back(show.Add({.Name = "720", .File = "small.mp4", .Output = output}));
    }
    for (const int key : keys)
        show.Client->Take(key);
    std::this_thread::sleep_for(1500ms);
    for (auto& watch : watches)
        watch->Take();
    std::this_thread::sleep_for(Length() - 4s);
    for (auto& watch : watches)
        Print("four windows, 720p25 in 480x270", Judge(watch->Take(), Next));
}

// One preset on two outputs: when each picture appears on both.
void Same(const std::string& clips) {
    Show show(clips, {"--output", "1=window:480x270", "--output", "2=window:480x270"});
    WindowWatch left("Measured - Output 1", 0, 0);
    WindowWatch right("Measured - Output 2", 600, 0);
    const int pk = show.Add({.Name = "both", .File = "small.mp4", .Output = 2, .OnAll = true});
    show.Client->Take(pk);
    std::this_thread::sleep_for(1500ms);
    left.Take();
    right.Take();
    std::this_thread::sleep_for(20s);
    const Sights here = left.Take();
    const Sights there = right.Take();
    std::vector<double> apart;
    int alone = 0;
    for (std::size_t i = 1; i + 1 < here.size(); ++i) {
        const auto twin = std::ranges::find(there, here[i].Number, &WindowWatch::Sight::Number);
        if (twin == there.end())
            ++alone;
        else
            apart.push_back(std::abs(MS(twin->At - here[i].At)));
    }
    const Summary sum = Sum(apart);
    std::printf("%-34s mean %.1f, p99 %.1f, most %.1f ms over %zu pictures; on one only: %d\n",
                "the same on two outputs, apart", sum.Mean, sum.P99, sum.Most, apart.size(), alone);
}

void Seams(const std::string& clips) {
    Show show(clips, {"--output", "1=window:960x540"});
    WindowWatch watch("Measured - Output 1", 0, 0);
    for (const auto* file : {"long.mp4", "intra.mov"}) {
        const int pk = show.Add({.Name = "loop", .File = file, .FirstPicture = 40, .Pictures = 25, .Loop = -1});
        show.Client->Take(pk);
        std::this_thread::sleep_for(1s);
        watch.Take();
        std::this_thread::sleep_for(100s);
        Print(file == std::string("long.mp4") ? "100 loops, long GOP" : "100 loops, intra",
              Judge(watch.Take(), InPass(40, 25)));
        show.Client->End(pk);
    }
}

// From the take on: what it links to is got ready while it begins itself.
void Links(const std::string& clips) {
    Show show(clips, {"--output", "1=window:960x540"});
    WindowWatch watch("Measured - Output 1", 0, 0);
    const int first = show.Add({.Name = "a", .File = "long.mp4", .FirstPicture = 25, .Pictures = 25});
    const int second = show.Add({.Name = "b", .File = "long.mp4", .FirstPicture = 50, .Pictures = 25, .Link = first});
    show.SetLink(first, second);
    watch.Take();
    show.Client->Take(first);
    std::this_thread::sleep_for(22s);
    Print("20 links", Judge(watch.Take(), InPass(25, 50)));
}

void Takes(const std::string& clips) {
    Show show(clips, {"--output", "1=window:960x540"});
    WindowWatch watch("Measured - Output 1", 0, 0);
    const int primed = show.Add({.Name = "primed", .File = "long.mp4"});
    show.Add({.Name = "between", .File = "small.mp4"});  // the one after the selected one is got ready
    const int cold = show.Add({.Name = "cold", .File = "long.mp4"});
    for (const int pk : {primed, cold}) {
        std::vector<double> times;
        int missed = 0;
        for (int i = 0; i < 20; ++i) {
            show.Client->SelectPreset(pk == cold ? primed : pk);
            std::this_thread::sleep_for(1200ms + 7ms * i);
            watch.Take();
            const auto taken = Clock::now();
            show.Client->Take(pk);
            const auto seen = watch.WaitFor(0, taken, 3s);
            if (seen)
                times.push_back(MS(*seen - taken));
            else
                ++missed;
            show.Client->End(pk);
            std::this_thread::sleep_for(300ms);
        }
        const Summary sum = Sum(times);
        std::printf("%-34s median %.0f, most %.0f ms; first picture not seen: %d of 20\n",
                    pk == cold ? "take to first picture, cold" : "take to first picture, primed", sum.Median, sum.Most,
                    missed);
    }
}

void Seeks(const std::string& clips) {
    Show show(clips, {"--output", "1=window:960x540"});
    WindowWatch watch("Measured - Output 1", 0, 0);
    for (const auto* file : {"intra.mov", "long.mp4"}) {
        const int pk = show.Add({.Name = "seek", .File = file});
        show.Client->Take(pk);
        std::this_thread::sleep_for(1500ms);
        show.Client->Pause(pk);
        std::this_thread::sleep_for(500ms);
        for (const int within : {0, 60, 140}) {
            std::vector<double> times;
            int missed = 0;
            for (int i = 0; i < 12; ++i) {
                const int picture = (i % 2 + 1) * 150 + within;
                watch.Take();
                const auto asked = Clock::now();
                show.Client->SeekTo(pk, static_cast<std::uint32_t>(show.Durations[pk] - picture * PictureMS));
                const auto seen = watch.WaitFor(picture, asked, 5s);
                if (seen)
                    times.push_back(MS(*seen - asked));
                else
                    ++missed;
                std::this_thread::sleep_for(200ms);
            }
            const Summary sum = Sum(times);
            std::printf("%-9s seek, picture %3d of its GOP    median %.0f, most %.0f ms; not seen: %d\n", file, within,
                        sum.Median, sum.Most, missed);
        }
        show.Client->End(pk);
    }
}

/// When each beep begins in the file, on the steady clock.
std::vector<Clock::time_point> Beeps(const std::string& file, Clock::time_point first) {
    std::ifstream stream(file, std::ios::binary);
    stream.seekg(44);
    std::vector<Clock::time_point> beeps;
    std::array<std::int16_t, 2> frame{};
    std::int64_t index = 0;
    std::int64_t quietSince = 0;
    while (stream.read(reinterpret_cast<char*>(frame.data()), sizeof frame)) {
        if (std::abs(frame[0]) > 1000) {
            if (index - quietSince > 4800)
                beeps.push_back(first + std::chrono::nanoseconds(index * 1'000'000'000 / 48000));
            quietSince = index;
        }
        ++index;
    }
    return beeps;
}

void Sync(const std::string& clips) {
    setenv("SPDLOG_LEVEL", "debug", 1);
    const std::string sound = std::filesystem::temp_directory_path() / "zorvic-measured.wav";
    Show show(clips, {"--output", "1=window:960x540", "--audio", "file:" + sound});
    WindowWatch watch("Measured - Output 1", 0, 0);
    const int pk = show.Add({.Name = "sync", .File = "pcm.mov", .Loop = -1});
    show.Client->Take(pk);
    std::this_thread::sleep_for(1s);
    watch.Take();
    std::this_thread::sleep_for(Length());
    const Sights sights = watch.Take();
    std::ifstream log(show.Store + ".log");
    std::string line;
    std::int64_t begin = 0;
    while (std::getline(log, line)) {
        const auto at = line.find("first sample at ");
        if (at != line.npos) begin = std::stoll(line.substr(at + 16));
    }
    const auto beeps = Beeps(sound, Clock::time_point(std::chrono::nanoseconds(begin)));
    std::vector<double> offsets;
    std::vector<double> early;
    std::vector<double> late;
    for (const auto& sight : sights) {
        if (sight.Number % 25 != 0) continue;
        for (const auto beep : beeps) {
            const double offset = MS(beep - sight.At);
            if (std::abs(offset) > 200 || Machine().Within(sight.At - 500ms, sight.At + 100ms)) continue;
            offsets.push_back(std::abs(offset));
            (sight.At < sights.front().At + Length() / 2 ? early : late).push_back(offset);
        }
    }
    const Summary sum = Sum(offsets);
    std::printf(
        "%-34s mean %.1f, p99 %.1f ms over %zu beeps away from pauses of the machine; first half %+.2f, second half "
        "%+.2f ms\n",
        "sound against picture", sum.Mean, sum.P99, offsets.size(), Sum(early).Mean, Sum(late).Mean);
    unsetenv("SPDLOG_LEVEL");
}

void Memory(const std::string& clips) {
    const TemporaryDirectory heard;
    Show show(clips, {"--output", "1=window:960x540", "--audio", "file:" + heard.Path() + "/heard.wav"});
    const int loop = show.Add({.Name = "loop", .File = "small.mp4", .Pictures = 5, .Loop = -1});
    show.Client->Take(loop);
    std::this_thread::sleep_for(10s);
    std::string line;
    const auto note = [&] { line += " " + std::to_string(static_cast<int>(MemoryMB(show.Renderer()))); };
    for (int loops = 50; loops <= 1000; loops += 190) {
        note();
        std::this_thread::sleep_for(38s);
    }
    std::printf("%-34s MB after 50, 240, ...:%s\n", "memory, 1000 loops", line.c_str());
    show.Client->End(loop);
    const int seek = show.Add({.Name = "seek", .File = "small.mp4", .Loop = -1});
    show.Client->Take(seek);
    // What the readers hold ahead comes and goes with every seek: many looks tell a level, one does not.
    line.clear();
    std::vector<double> looks;
    for (int i = 1; i <= 1050; ++i) {
        show.Client->SeekTo(seek, static_cast<std::uint32_t>(i * 3701 % 50'000));
        std::this_thread::sleep_for(60ms);
        if (i > 50 && i % 10 == 0) looks.push_back(MemoryMB(show.Renderer()));
        if (looks.size() < 20) continue;
        const Summary sum = Sum(std::exchange(looks, {}));
        line += " " + std::to_string(static_cast<int>(sum.Mean)) + " (most " +
                std::to_string(static_cast<int>(sum.Most)) + ")";
    }
    std::printf("%-34s mean MB of seeks 51-250, 251-450, ...:%s\n", "memory, 1000 seeks", line.c_str());
}

void Deaths(const std::string& clips) {
    Show show(clips, {"--output", "1=window:960x540"});
    WindowWatch watch("Measured - Output 1", 0, 0);
    const int pk = show.Add({.Name = "hd", .File = "small.mp4", .Loop = -1});
    show.Client->Take(pk);
    std::this_thread::sleep_for(3s);
    for (const int signal : {SIGKILL, SIGSTOP}) {
        std::vector<double> times;
        for (int i = 0; i < 5; ++i) {
            const pid_t before = show.Renderer();
            const auto struck = Clock::now();
            kill(before, signal);
            WaitUntil([&] { return show.Renderer() != 0 && show.Renderer() != before; });
            WaitUntil([&] { return watch.Current() == NoNumber; }, 300ms);
            WaitUntil([&] { return watch.Current() != NoNumber; });
            times.push_back(MS(Clock::now() - struck));
            std::this_thread::sleep_for(2500ms);
        }
        const Summary sum = Sum(times);
        std::printf("%-34s median %.0f, most %.0f ms to the picture\n",
                    signal == SIGKILL ? "renderer killed" : "renderer frozen", sum.Median, sum.Most);
    }
}

/// Bytes that are no film any more, or not quite.
std::string Damaged(std::string bytes, std::minstd_rand& random) {
    const auto within = [&](std::size_t most) { return random() % std::max<std::size_t>(most, 1); };
    const std::size_t reach = within(2) == 0 ? std::min<std::size_t>(bytes.size(), 2000) : bytes.size();
    for (std::size_t flips = within(60) + 1; flips > 0; --flips)
        bytes[within(reach)] = static_cast<char>(random());
    if (within(4) == 0) bytes.resize(within(bytes.size()));
    return bytes;
}

// A show on one output, while broken films arrive and those that can be opened are played on another.
void Hostile(const std::string& clips) {
    constexpr int Films = 200;
    Show show(clips, {"--output", "1=window:960x540", "--output", "2=offscreen"});
    WindowWatch watch("Measured - Output 1", 0, 0);
    std::vector<std::string> whole;
    for (const std::string suffix : {".mp4", ".mkv", ".ts", ".avi"}) {
        const std::string file = show.Directory.Path() + "/whole" + suffix;
        MakeNumberedClip(file, "640x360", 2, "-c:v libx264 -preset veryfast -bf 2 -c:a aac -movflags faststart");
        whole.push_back(ReadFile(file));
    }
    const int pk = show.Add({.Name = "show", .File = "long.mp4", .Loop = -1});
    show.Client->Take(pk);
    std::this_thread::sleep_for(2s);
    watch.Take();
    const pid_t renderer = show.Renderer();
    std::minstd_rand random(11);
    const std::array<const char*, 4> suffixes = {".mp4", ".mkv", ".ts", ".avi"};
    const auto name = [&](int i) {
        return "damaged" + std::to_string(i) + suffixes[static_cast<std::size_t>(i) % whole.size()];
    };
    for (int i = 0; i < Films; ++i)
        std::ofstream(show.Store + "/Assets/" + name(i), std::ios::binary)
            << Damaged(whole[static_cast<std::size_t>(i) % whole.size()], random);
    std::this_thread::sleep_for(20s);
    int played = 0;
    for (int i = 0; i < Films; ++i) {
        Zorvic::AssetMetadata metadata;
        if (show.Client->ReadAssetMetadata("C:\\Assets\\" + name(i), metadata) != Zorvic::ZORVIC_STATUS_OK) continue;
        const int broken = show.Add({.Name = "broken", .File = name(i), .Output = 2});
        show.Client->Take(broken);
        std::this_thread::sleep_for(300ms);
        show.Client->End(broken);
        ++played;
    }
    Print("200 damaged films beside", Judge(watch.Take(), InPass(0, 1500)));
    std::printf("%-34s %d of %d played, the renderer %s\n", "", played, Films,
                renderer == show.Renderer() ? "is the same" : "was replaced");
}

void Idle(const std::string& clips) {
    for (const bool shown : {false, true}) {
        const auto began = Clock::now();
        Show show(clips, shown ? std::vector<std::string>{"--output", "1=offscreen"} : std::vector<std::string>{});
        const double start = MS(Clock::now() - began);
        std::this_thread::sleep_for(2s);
        std::printf("%-34s start %.0f ms, unit %.0f MB, renderer %.0f MB\n",
                    shown ? "one output offscreen" : "all outputs off", start, MemoryMB(show.Unit->Process().Id()),
                    show.Renderer() == 0 ? 0 : MemoryMB(show.Renderer()));
    }
}

void Tell(const std::string& socketFile, const std::string& command) {
    const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    socketFile.copy(address.sun_path, sizeof address.sun_path - 1);
    if (connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0)
        send(connection, command.data(), command.size(), MSG_NOSIGNAL);
    close(connection);
}

// The same clips in a widely used player, where it can do the same job.
void Other(const std::string& clips) {
    const TemporaryDirectory meeting;
    const std::string socket = meeting.Path() + "/other.socket";
    const auto play = [&](const char* file, std::vector<std::string> options) {
        std::vector<std::string> arguments = {"mpv",
                                              "--no-config",
                                              "--no-audio",
                                              "--no-border",
                                              "--title=Measured other",
                                              "--geometry=960x540",
                                              "--input-ipc-server=" + socket,
                                              clips + "/" + file};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return ChildProcess(arguments);
    };
    {
        const auto player = play("long.mp4", {});
        WindowWatch watch("Measured other", 0, 0);
        std::this_thread::sleep_for(1s);
        watch.Take();
        std::this_thread::sleep_for(Length() - 4s);
        Print("mpv: steady", Judge(watch.Take(), Next));
    }
    for (const auto* file : {"long.mp4", "intra.mov"}) {
        const auto player = play(file, {"--ab-loop-a=1.6", "--ab-loop-b=2.6", "--hr-seek=yes"});
        WindowWatch watch("Measured other", 0, 0);
        std::this_thread::sleep_for(4s);
        watch.Take();
        std::this_thread::sleep_for(20s);
        Print((std::string("mpv: 20 loops, ") + file).c_str(), Judge(watch.Take(), InPass(40, 25)));
    }
    for (const auto* file : {"intra.mov", "long.mp4"}) {
        const auto player = play(file, {"--pause", "--keep-open=yes"});
        WindowWatch watch("Measured other", 0, 0);
        std::this_thread::sleep_for(1s);
        for (const int within : {0, 60, 140}) {
            std::vector<double> times;
            for (int i = 0; i < 6; ++i) {
                const int picture = (i % 2 + 1) * 150 + within;
                watch.Take();
                const auto asked = Clock::now();
                // It shows the first picture from there on, not the one that stands there.
                Tell(socket, "seek " + std::to_string(picture * PictureMS / 1000 - 0.01) + " absolute+exact\n");
                if (const auto seen = watch.WaitFor(picture, asked, 5s)) times.push_back(MS(*seen - asked));
                std::this_thread::sleep_for(300ms);
            }
            const Summary sum = Sum(times);
            std::printf("mpv: %-9s seek, picture %3d of its GOP median %.0f, most %.0f ms; seen: %zu of 6\n", file,
                        within, sum.Median, sum.Most, times.size());
        }
    }
}

/// Kept for the next time: encoding takes a minute.
std::string MakeClips() {
    const auto clips = std::filesystem::temp_directory_path() / "zorvic-measured-clips";
    const std::string h264 = "-c:v libx264 -preset ultrafast -g 150 -keyint_min 150 -sc_threshold 0 -c:a aac -b:v ";
    if (std::filesystem::exists(clips)) return clips;
    const TemporaryDirectory making;
    MakeNumberedClip(making.Path() + "/long.mp4", "1920x1080", 60, h264 + "12M");
    MakeNumberedClip(making.Path() + "/small.mp4", "1280x720", 60, h264 + "6M");
    MakeNumberedClip(making.Path() + "/intra.mov", "1920x1080", 20, "-c:v mjpeg -q:v 3 -c:a pcm_s16le");
    std::filesystem::copy(making.Path(), clips);
    return clips;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::pair<std::string, std::function<void(const std::string&)>>> measures = {
        {"steady", Steady}, {"four", Four},       {"same", Same},  {"seams", Seams}, {"links", Links},
        {"take", Takes},    {"seek", Seeks},      {"sync", Sync},  {"idle", Idle},   {"faults", Deaths},
        {"memory", Memory}, {"hostile", Hostile}, {"other", Other}};
    VirtualDisplay display;
    const std::string clips = MakeClips();
    for (const auto& [name, measure] : measures) {
        if (argc > 1 && std::find(argv + 1, argv + argc, name) == argv + argc) continue;
        Machine().Take();
        measure(clips);
        const auto machine = Machine().Take();
        std::printf("    (the machine itself: %d pauses over 20 ms, longest %.0f ms, %.1f %% taken by its host)\n",
                    machine.Over20MS, machine.MostMS, machine.TakenPercent);
        std::fflush(stdout);
    }
}
