// What an import does to a running show, and how fast it is: a real unit plays a preset and copies a large file from a
// drive while a console works with it over loopback; the same file is copied and hashed by cp and xxhsum, one after the
// other. Before each copy the file is dropped from the page cache, so that each reads it from the disk; the two change
// places from round to round.
//
// Arguments: a directory on the disk to measure, the file's size in MiB (4096), rounds (2).

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "assetobserver.h"
#include "support/clippreset.h"
#include "support/unitprocess.h"
#include "unit/media_samples.h"

namespace {

constexpr const char* LargePath = "C:\\Assets\\large.wav";

/// Noise with the head of a WAV file: nothing that a disk could compress.
void MakeLargeFile(const std::string& file, std::int64_t size) {
    std::ofstream stream(file, std::ios::binary);
    constexpr std::int64_t Largest = 0xFFFFFFFF - 36;
    stream << ZorvicUnit::WaveHead(static_cast<std::uint32_t>(std::min(size - 44, Largest)));
    std::mt19937_64 random(1);
    std::vector<std::uint64_t> piece(std::size_t{1} << 17U);
    for (std::int64_t done = 44; done < size; done += static_cast<std::int64_t>(piece.size() * 8)) {
        for (std::uint64_t& word : piece)
            word = random();
        stream.write(reinterpret_cast<const char*>(piece.data()), static_cast<std::streamsize>(piece.size() * 8));
    }
}

/// Brings a file to disk and drops it from the page cache.
void Cool(const std::string& file) {
    const int opened = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    fsync(opened);
    posix_fadvise(opened, 0, 0, POSIX_FADV_DONTNEED);
    close(opened);
}

/// Notes when timecodes arrive.
class TimeCodeGaps {
public:
    explicit TimeCodeGaps(Zorvic::Session& session) : Client(session) {
        Client.SetStateEventCallback(Zorvic::ZORVIC_STATE_TIMECODE, &TimeCodeGaps::Notice, this);
    }
    ~TimeCodeGaps() { Client.SetStateEventCallback(Zorvic::ZORVIC_STATE_TIMECODE, nullptr, nullptr); }
    TimeCodeGaps(const TimeCodeGaps&) = delete;
    TimeCodeGaps& operator=(const TimeCodeGaps&) = delete;

    /// In ms; ends the notes.
    std::vector<double> Take() {
        Client.SetStateEventCallback(Zorvic::ZORVIC_STATE_TIMECODE, nullptr, nullptr);
        return Gaps;
    }

private:
    static void Notice(Zorvic::StateEventType /*type*/, void* user) {
        auto* self = static_cast<TimeCodeGaps*>(user);
        const auto now = std::chrono::steady_clock::now();
        if (self->Last) self->Gaps.push_back(std::chrono::duration<double, std::milli>(now - *self->Last).count());
        self->Last = now;
    }

    Zorvic::Session& Client;
    std::optional<SteadyTime> Last;
    std::vector<double> Gaps;
};

struct CommandTimes {
    std::vector<double> Seeks, Updates;
    int Failed = 0;
};

/// Seeks and edits in turn, each read back, until it is told to stop.
CommandTimes SendCommands(Zorvic::Session& session, const std::atomic<bool>& stop) {
    CommandTimes times;
    for (int round = 0; !stop; ++round) {
        const std::int32_t target = round % 2 == 0 ? 90'000 : 50'000;
        auto begin = std::chrono::steady_clock::now();
        bool done = session.SeekTo(1, static_cast<std::uint32_t>(target)) == Zorvic::ZORVIC_STATUS_OK;
        Zorvic::TimeCode code;
        done = done && session.GetTimeCode(code, 1) == Zorvic::ZORVIC_STATUS_OK && std::abs(code.Time - target) < 1000;
        times.Seeks.push_back(MillisecondsSince(begin));
        std::vector<Zorvic::Preset> presets;
        session.GetPresets(presets);
        presets.at(0).Notes = std::to_string(round);
        begin = std::chrono::steady_clock::now();
        done = session.UpdatePreset(presets[0]) == Zorvic::ZORVIC_STATUS_OK && done;
        session.GetPresets(presets);
        times.Updates.push_back(MillisecondsSince(begin));
        if (!done || presets.at(0).Notes != std::to_string(round)) ++times.Failed;
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
    return times;
}

void Print(const char* what, const std::vector<double>& times) {
    std::printf("  %-18s %4zu: p50 %6.1f ms, p99 %6.1f ms, longest %6.1f ms\n", what, times.size(),
                Percentile(times, 0.5), Percentile(times, 0.99), Percentile(times, 1));
}

/// Lets the console work while `action` runs, and prints what it met.
template <typename Action>
void WithConsole(const std::string& host, const Action& action) {
    Zorvic::Session session(host, 1);
    session.Take(1);
    TimeCodeGaps gaps(session);
    std::atomic<bool> stop = false;
    CommandTimes commands;
    std::thread console([&] { commands = SendCommands(session, stop); });
    action();
    stop = true;
    console.join();
    Print("timecode gaps", gaps.Take());
    Print("seek, read back", commands.Seeks);
    Print("update, read back", commands.Updates);
    std::printf("  commands that failed or had no effect: %d\n", commands.Failed);
}

void CreatePreset(const std::string& host) {
    Zorvic::Session session(host, 1);
    Zorvic::Preset preset = ClipPreset("Playing");
    preset.Loop = -1;
    session.CreatePreset(preset);
}

/// Seconds from the command to READY.
double Import(AssetObserver& observer) {
    const auto begin = std::chrono::steady_clock::now();
    std::vector<double> gaps;
    std::int64_t shown = 0;
    auto last = begin;
    observer.Session().InstallAsset("E:\\large.wav");
    const bool done = observer.WaitFor([&](const std::vector<Zorvic::Asset>& assets) {
        const auto at =
            std::find_if(assets.begin(), assets.end(), [](const auto& a) { return a.FullPath == LargePath; });
        if (at == assets.end()) return false;
        if (std::exchange(shown, at->CurrentSize) != at->CurrentSize) {
            gaps.push_back(MillisecondsSince(last));
            last = std::chrono::steady_clock::now();
        }
        return at->Status == Zorvic::ZORVIC_ASSETSTATE_READY;
    });
    const double seconds = MillisecondsSince(begin) / 1000;
    if (!done) std::printf("  the import did not come to an end\n");
    std::printf("  progress: %.1f updates a second, longest gap %.0f ms\n", static_cast<double>(gaps.size()) / seconds,
                Percentile(gaps, 1));
    return seconds;
}

double Run(const std::vector<std::string>& command) {
    const auto begin = std::chrono::steady_clock::now();
    if (ChildProcess(command).Wait(std::chrono::minutes(30)) != 0) std::printf("  %s failed\n", command[0].c_str());
    return MillisecondsSince(begin) / 1000;
}

struct Bench {
    explicit Bench(const std::string& directory, std::int64_t bytes) : Directory(directory), Bytes(bytes) {
        std::filesystem::create_directories(Store + "/Assets");
        std::filesystem::create_directories(Drive);
        MakeClip(Store + "/Assets/clip.mov", 120);
        MakeLargeFile(Large, Bytes);
    }
    ~Bench() { std::filesystem::remove_all(Directory); }
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    double MeasureUnit() const {
        Cool(Large);
        UnitProcess unit(Store, {"--announce", "off", "--drive", "E=" + Drive});
        CreatePreset(unit.Host());
        std::printf(" unit, for comparison 10 s without an import\n");
        WithConsole(unit.Host(), [] { std::this_thread::sleep_for(std::chrono::seconds(10)); });
        std::printf(" unit, importing\n");
        double seconds = 0;
        {
            AssetObserver observer(unit.Host());
            WithConsole(unit.Host(), [&] { seconds = Import(observer); });
        }
        unit.Kill();  // before it reads the levels of the new file, beside the other measurement
        std::filesystem::remove_all(Store + "/Assets/large.wav");
        return seconds;
    }

    double MeasureTools() const {
        Cool(Large);
        const std::string copy = Directory + "/copy.wav";
        const double copied = Run({"cp", Large, copy});
        const double hashed = Run({"xxhsum", "-q", "-H2", Large});
        const auto begin = std::chrono::steady_clock::now();
        Cool(copy);
        std::printf(" cp %.1f s, xxhsum %.1f s (and %.1f s until the copy is on the disk, not counted)\n", copied,
                    hashed, MillisecondsSince(begin) / 1000);
        std::filesystem::remove(copy);
        return copied + hashed;
    }

    const std::string Directory;
    const std::int64_t Bytes;
    const std::string Store = Directory + "/store";
    const std::string Drive = Directory + "/drive";
    const std::string Large = Drive + "/large.wav";
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "%s DIRECTORY [MiB] [ROUNDS]\n", argv[0]);
        return 2;
    }
    const std::int64_t bytes = (argc > 2 ? std::stoll(argv[2]) : 4096) << 20U;
    const int rounds = argc > 3 ? std::stoi(argv[3]) : 2;
    const Bench bench(std::string(argv[1]) + "/measure-import", bytes);
    for (int round = 0; round < rounds; ++round) {
        std::printf("round %d\n", round + 1);
        const double before = round % 2 == 0 ? bench.MeasureTools() : 0;
        const double unit = bench.MeasureUnit();
        const double tools = round % 2 == 0 ? before : bench.MeasureTools();
        const auto rate = [&](double seconds) { return static_cast<double>(bytes) / 1e6 / seconds; };
        std::printf(" import %.0f MB/s, cp and xxhsum %.0f MB/s, ratio %.2f\n", rate(unit), rate(tools), tools / unit);
        std::fflush(stdout);
    }
}
