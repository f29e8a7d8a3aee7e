#include "failure.h"
#include "practice_media.h"
#include "practice_unit.h"
#include "printing.h"
#include "program.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <memory>

namespace ZorvicCtl {
namespace {

namespace fs = std::filesystem;

using Fleet = std::vector<std::unique_ptr<PracticeUnit>>;

/// From its making on, the signals that end a program are something to wait for.
class EndWish {
public:
    EndWish() {
        sigset_t set;
        sigemptyset(&set);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP})
            sigaddset(&set, signal);
        sigprocmask(SIG_BLOCK, &set, nullptr);
        Descriptor = signalfd(-1, &set, SFD_CLOEXEC);
    }
    ~EndWish() { close(Descriptor); }
    EndWish(const EndWish&) = delete;
    EndWish& operator=(const EndWish&) = delete;

    /// Waits for one of them, or for the end of standard input; false when none came in time.
    bool Await(std::chrono::milliseconds limit) const {
        std::array<pollfd, 2> sources = {pollfd{Descriptor, POLLIN, 0}, pollfd{STDIN_FILENO, POLLIN, 0}};
        if (poll(sources.data(), sources.size(), static_cast<int>(limit.count())) <= 0) return false;
        if (sources[0].revents != 0) return true;
        std::array<char, 256> ignored{};
        return read(STDIN_FILENO, ignored.data(), ignored.size()) <= 0;
    }

private:
    int Descriptor = -1;
};

/// Directories that hold media already are stores of units; the rest are made.
std::vector<fs::path> Stores(const fs::path& directory, std::size_t count) {
    std::vector<fs::path> stores;
    for (const auto& entry : fs::directory_iterator(directory))
        if (fs::is_directory(entry.path() / "Assets")) stores.push_back(entry.path());
    std::ranges::sort(stores);
    for (std::size_t number = 1; stores.size() < count; ++number) {
        const auto store = directory / ("Practice " + std::to_string(number));
        if (std::ranges::find(stores, store) == stores.end()) stores.push_back(store);
    }
    stores.resize(count);
    return stores;
}

void GiveMedia(const fs::path& store, const fs::path& media) {
    const auto assets = store / "Assets";
    if (fs::exists(assets)) return;
    MakePracticeMedia(media);
    const auto made = store / "Assets.making";
    fs::remove_all(made);
    fs::create_directories(made);
    for (const auto& clip : fs::directory_iterator(media))
        fs::copy(clip.path(), made / clip.path().filename());
    fs::rename(made, assets);
}

/// Each has the media of the next one as its drive E, to import from.
void Start(Fleet& fleet, const std::vector<fs::path>& stores, const Arguments& typed) {
    for (std::size_t number = 0; number < stores.size(); ++number) {
        std::vector<std::string> options = {"--drive",
                                            "E=" + (stores[(number + 1) % stores.size()] / "Assets").string()};
        options.insert(options.end(), typed.Words.begin(), typed.Words.end());
        const std::string address = "127.0.0." + std::to_string(number + 1);
        fleet.push_back(std::make_unique<PracticeUnit>(stores[number], address, options));
        if (!typed.Empty) fleet.back()->Fill();
    }
}

void Print(const Fleet& fleet, bool asJson) {
    Json json = Json::array();
    Table table({"NAME", "ADDRESS"});
    for (const auto& unit : fleet) {
        json.push_back({{"nickname", unit->Name()}, {"address", unit->Host()}});
        table.Add({OneLine(unit->Name()), unit->Host()});
    }
    if (asJson) return PrintJsonLine(json);
    table.Print("");
    PrintLine("Start a console with ZORVIC_DISCOVERY=lo to find them. They end with this program: press Ctrl+C.");
}

void RunFleet(const Arguments& typed) {
    constexpr std::chrono::milliseconds LookPeriod(500);
    const EndWish wish;
    const fs::path directory = fs::absolute(typed.File);
    fs::create_directories(directory);
    const auto stores = Stores(directory, static_cast<std::size_t>(typed.Units));
    for (const auto& store : stores)
        GiveMedia(store, directory / ".media");
    Fleet fleet;
    Start(fleet, stores, typed);
    Print(fleet, typed.Json);
    const auto running = [](const auto& unit) { return unit->Running(); };
    while (!wish.Await(LookPeriod) && std::ranges::any_of(fleet, running)) {
    }
    for (const auto& unit : fleet)
        unit->AskToEnd();
}

}  // namespace

void AddFleetCommand(CommandLine& line) {
    Arguments& values = line.Values();
    line.AddWithoutUnit("fleet", "Start units on this machine to practise with, and end them with this program",
                        RunFleet)
        .Word("DIR", values.File, "Where they keep media and presets")
        .Rest("OPTIONS", values.Words, "After --: more options for each unit, such as --output 1=window")
        .Count("--units", values.Units, "How many", 32)
        .Flag("--empty", values.Empty, "Make no presets");
}

}  // namespace ZorvicCtl
