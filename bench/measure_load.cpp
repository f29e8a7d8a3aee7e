// What many consoles cost: clients that watch a real unit over loopback while presets play, with commands from all of
// them in turn at a fixed rate. Prints the gaps between timecodes at every client, how long commands take, and the
// unit's memory and descriptors before, meanwhile (once a minute) and after.
//
// Arguments: clients (50), presets that play (20), commands a second (50), seconds (20), how many more clients
// stop to read at once and stay (0), one more option for the unit, such as --as-run-days=0, and how many hours of
// sound in files of an hour each get their levels meanwhile (0).

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "assetobserver.h"
#include "support/clippreset.h"
#include "support/loopbackproxy.h"
#include "support/unitprocess.h"
#include "unit/media_samples.h"

namespace {

using Zorvic::Session;

struct Options {
    std::size_t Clients = 50;
    int Playing = 20;
    int CommandsASecond = 50;
    int Seconds = 20;
    std::size_t Stopped = 0;
    std::string UnitOption = "--audio=off";
    int Hours = 0;
};

/// A console that notes when timecodes arrive.
class Watcher {
public:
    explicit Watcher(const std::string& host) : Client(host, 1) {
        Client.SetStateEventCallback(Zorvic::ZORVIC_STATE_TIMECODE, &Watcher::Notice, this);
    }
    ~Watcher() { Client.SetStateEventCallback(Zorvic::ZORVIC_STATE_TIMECODE, nullptr, nullptr); }
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    Session Client;
    std::mutex Turn;  ///< for its commands
    std::vector<double> Gaps() {
        const std::scoped_lock lock(Lock);
        return Noted;
    }

private:
    static void Notice(Zorvic::StateEventType /*type*/, void* user) {
        auto* const self = static_cast<Watcher*>(user);
        const std::scoped_lock lock(self->Lock);
        const auto now = std::chrono::steady_clock::now();
        if (self->Last) self->Noted.push_back(std::chrono::duration<double, std::milli>(now - *self->Last).count());
        self->Last = now;
    }
    std::mutex Lock;  // guards what follows
    std::optional<SteadyTime> Last;
    std::vector<double> Noted;
};

/// Sends commands in the name of all watchers in turn, at a fixed rate whatever they take.
class Traffic {
public:
    Traffic(std::vector<std::unique_ptr<Watcher>>& watchers, const Options& options)
        : Watchers(watchers), Wanted(options) {
        for (int number = 0; number < Hands; ++number)
            Threads.emplace_back([this, number](const std::stop_token& stop) { Run(stop, number); });
    }
    /// Ends it, and prints how long commands took.
    void Finish() {
        Threads.clear();
        for (const auto& [what, times] : {std::pair("seek", Seeks), {"update", Updates}})
            std::printf("  %-14s %6zu: p50 %5.1f ms, p99 %5.1f ms, longest %6.1f ms\n", what, times.size(),
                        Percentile(times, 0.5), Percentile(times, 0.99), Percentile(times, 1));
        std::printf("  commands that failed: %d\n", Failed);
    }

private:
    static constexpr int Hands = 8;

    void Run(const std::stop_token& stop, int number) {
        const auto period = std::chrono::microseconds(1'000'000 * Hands / Wanted.CommandsASecond);
        auto next = std::chrono::steady_clock::now() + period * number / Hands;
        for (auto turn = static_cast<std::size_t>(number); !stop.stop_requested(); turn += Hands, next += period) {
            std::this_thread::sleep_until(next);
            SendOne(*Watchers[turn % Watchers.size()], static_cast<int>(turn));
        }
    }
    void SendOne(Watcher& watcher, int turn) {
        const std::scoped_lock own(watcher.Turn);
        const bool seek = turn % 2 == 0;
        std::vector<Zorvic::Preset> presets;
        watcher.Client.GetPresets(presets);
        if (presets.empty()) return;
        Zorvic::Preset& preset = presets[static_cast<std::size_t>(turn / 2) % presets.size()];
        preset.Notes = std::to_string(turn);
        const auto begin = std::chrono::steady_clock::now();
        const auto status = seek ? watcher.Client.SeekTo(preset.PK, 500) : watcher.Client.UpdatePreset(preset);
        const double took = MillisecondsSince(begin);
        const std::scoped_lock lock(Lock);
        (seek ? Seeks : Updates).push_back(took);
        if (status != Zorvic::ZORVIC_STATUS_OK) ++Failed;
    }

    std::vector<std::unique_ptr<Watcher>>& Watchers;
    const Options Wanted;
    std::mutex Lock;  // guards what follows but the threads
    std::vector<double> Seeks, Updates;
    int Failed = 0;
    std::vector<std::jthread> Threads;
};

void PrintUse(const char* when, const UnitProcess& unit, pid_t process) {
    const std::string directory = "/proc/" + std::to_string(process);
    std::ifstream status(directory + "/status");
    std::string word;
    long memoryKB = 0, threads = 0;
    while (status >> word) {
        if (word == "VmRSS:") status >> memoryKB;
        if (word == "Threads:") status >> threads;
    }
    const auto descriptors = std::distance(std::filesystem::directory_iterator(directory + "/fd"), {});
    std::printf("  %-14s unit at %s: %.1f MiB, %td descriptors, %ld threads\n", when, unit.Host().c_str(),
                static_cast<double>(memoryKB) / 1024, descriptors, threads);
    std::fflush(stdout);
}

void MakeShow(const std::string& host, int playing) {
    Session session(host, 1);
    for (int number = 1; number <= playing; ++number) {
        Zorvic::Preset preset = ClipPreset("Playing");
        preset.Canvases[0].Assets[0].FullPath = "C:\\Assets\\clip.wav";
        preset.Loop = -1;
        session.CreatePreset(preset);
        session.Take(number);
    }
    std::vector<Zorvic::PresetState> states;
    const auto runs = [&] {
        session.GetPresetStates(states);
        return std::ranges::all_of(states, [](const auto& state) { return state.IsPlaying && state.TRT > 0; });
    };
    if (!WaitUntil(runs)) std::printf("  the presets do not play\n");
}

/// One file under many names: the unit reads each for itself.
void AddHours(const std::string& directory, int hours) {
    const std::string hour = directory + "/hour.wav";
    const std::string command =
        "ffmpeg -nostdin -v error -f lavfi -i sine=d=3600:r=8000 -c:a pcm_u8 " + hour + " && sync " + hour;
    if (hours == 0 || std::system(command.c_str()) != 0) return;
    for (int number = 1; number <= hours; ++number)
        std::filesystem::create_hard_link(hour, directory + "/store/Assets/hour" + std::to_string(number) + ".wav");
}

void PrintRead(const std::string& host) {
    Session session(host, 1);
    std::vector<Zorvic::Asset> assets;
    session.GetAssets(assets);
    std::printf("  files that were read: %td of %zu\n",
                std::ranges::count(assets, Zorvic::ZORVIC_ASSETSTATE_READY, &Zorvic::Asset::Status), assets.size());
}

void Measure(const Options& wanted) {
    const TemporaryDirectory directory;
    std::filesystem::create_directories(directory.Path() + "/store/Assets");
    ZorvicUnit::WriteFile(directory.Path() + "/store/Assets/clip.wav", ZorvicUnit::ToneFile());
    UnitProcess unit(directory.Path() + "/store", {"--announce", "off", wanted.UnitOption});
    const pid_t process = unit.Process().Id();
    MakeShow(unit.Host(), wanted.Playing);
    PrintUse("without", unit, process);

    std::vector<std::unique_ptr<Watcher>> watchers;
    LoopbackProxy stopped(unit.Host(), 1);
    std::vector<std::unique_ptr<Session>> stuck;
    for (std::size_t number = 0; number < wanted.Stopped; ++number)
        stuck.push_back(std::make_unique<Session>(stopped.Host(), 1));
    stopped.Freeze(true);
    while (watchers.size() < wanted.Clients)
        watchers.push_back(std::make_unique<Watcher>(unit.Host()));
    const auto refused = std::erase_if(watchers, [](const auto& watcher) { return !watcher->Client.Connected(); });
    std::printf("  %zu of %zu clients were let in\n", watchers.size(), watchers.size() + refused);
    if (watchers.empty()) return;
    PrintUse("all there", unit, process);

    AddHours(directory.Path(), wanted.Hours);
    Traffic traffic(watchers, wanted);
    for (int second = 1; second <= wanted.Seconds; ++second) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        if (second % 60 == 0) PrintUse(("after " + std::to_string(second) + " s").c_str(), unit, process);
    }
    PrintUse("at the end", unit, process);
    traffic.Finish();
    std::vector<double> gaps;
    for (const auto& watcher : watchers) {
        const auto noted = watcher->Gaps();
        gaps.insert(gaps.end(), noted.begin(), noted.end());
    }
    std::printf("  timecode gaps  %6zu: p50 %5.1f ms, p99 %5.1f ms, longest %6.1f ms\n", gaps.size(),
                Percentile(gaps, 0.5), Percentile(gaps, 0.99), Percentile(gaps, 1));
    const auto lost = std::ranges::count_if(watchers, [](const auto& watcher) { return !watcher->Client.Connected(); });
    std::printf("  clients that lost their link: %td\n", lost);
    if (wanted.Hours > 0) PrintRead(unit.Host());
    watchers.clear();
    std::this_thread::sleep_for(std::chrono::seconds(2));
    PrintUse("alone again", unit, process);
}

}  // namespace

int main(int argc, char** argv) {
    const auto argument = [&](int at, int otherwise) { return argc > at ? std::atoi(argv[at]) : otherwise; };
    Options wanted;
    wanted.Clients = static_cast<std::size_t>(argument(1, 50));
    wanted.Playing = argument(2, wanted.Playing);
    wanted.CommandsASecond = argument(3, wanted.CommandsASecond);
    wanted.Seconds = argument(4, wanted.Seconds);
    wanted.Stopped = static_cast<std::size_t>(argument(5, 0));
    if (argc > 6) wanted.UnitOption = argv[6];
    wanted.Hours = argument(7, 0);
    std::printf("%zu clients, %d presets playing, %d commands a second, %d s, %zu stopped observers\n", wanted.Clients,
                wanted.Playing, wanted.CommandsASecond, wanted.Seconds, wanted.Stopped);
    Measure(wanted);
    return 0;
}
