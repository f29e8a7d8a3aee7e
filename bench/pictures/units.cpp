#include "units.h"

#include <stdexcept>
#include <utility>

namespace fs = std::filesystem;

namespace {

/// Long enough for pictures of the copy: most of it is a hole that takes no room.
constexpr std::uintmax_t LongFileBytes = 1'000'000'000;

/// By a second name for each file: the units of a run write none of them.
void ShareMedia(const fs::path& from, const fs::path& to) {
    fs::create_directories(to);
    for (const auto& clip : fs::directory_iterator(from))
        fs::create_hard_link(clip.path(), to / clip.path().filename());
}

}  // namespace

PictureUnit::PictureUnit(const fs::path& store, std::string address, const fs::path& show, const fs::path& drive)
    : Address(std::move(address)) {
    fs::create_directories(store / "Assets");
    if (!show.empty()) {
        fs::remove(store / "Assets");
        ShareMedia(show / "Assets", store / "Assets");
        ShareKnowledge(store, show, drive);
    }
    Start(store, drive);
}

// What was found out about the same files before need not be found out again. A unit does not begin a store in which it
// finds a cache.
void PictureUnit::ShareKnowledge(const fs::path& store, const fs::path& show, const fs::path& drive) {
    if (!fs::exists(show / "cache.db")) return;
    Start(store, drive);
    Process->Signal(SIGINT);
    Process->Wait(std::chrono::seconds(20));
    for (const char* log : {"cache.db-wal", "cache.db-shm"})
        fs::remove(store / log);
    fs::copy_file(show / "cache.db", store / "cache.db", fs::copy_options::overwrite_existing);
}

void PictureUnit::Start(const fs::path& store, const fs::path& drive) {
    const std::string log = store.string() + ".log";
    fs::remove(log);
    Process = std::make_unique<ChildProcess>(
        std::vector<std::string>{ZORVIC_UNIT_PROGRAM, "--store", store.string(), "--listen", Address, "--nickname",
                                 store.filename().string(), "--announce", "lo", "--video-mode", "1080p", "--refresh",
                                 "25", "--output", "1=offscreen", "--output", "2=offscreen", "--drive",
                                 "E=" + drive.string()},
        log);
    const auto listens = [&] { return ReadFile(log).find("listening on") != std::string::npos; };
    if (!WaitUntil([&] { return listens() || !Process->Running(); }) || !listens())
        throw std::runtime_error("the unit did not start:\n" + ReadFile(log));
}

void PictureUnit::Fill(const std::string& show) const {
    if (ChildProcess({ZORVIC_DEMO_PRESETS_PROGRAM, Address, show}).Wait(std::chrono::minutes(2)) != 0)
        throw std::runtime_error("the unit at " + Address + " could not be filled");
}

PictureUnits::PictureUnits(const fs::path& media) : Drive(Directory / "drive") {
    ShareMedia(media / "Stage Right" / "Assets", Drive);
    fs::create_directories(Drive / "Rehearsals");
    const auto longFile = Drive / "Act Two.mpg";
    fs::copy_file(media / "Stage Left" / "Assets" / "Interview.mpg", longFile);
    fs::resize_file(longFile, LongFileBytes);
    for (const auto& [name, show] :
         {std::pair("Stage Left", "left"), std::pair("Stage Right", "right"), std::pair("Foyer", "")}) {
        const auto source = *show ? media / name : fs::path();
        const std::string address = "127.0.0." + std::to_string(21 + All.size());
        All.push_back(std::make_unique<PictureUnit>(Directory / name, address, source, Drive));
        if (*show) All.back()->Fill(show);
    }
}

PictureUnits::~PictureUnits() {
    for (const auto& unit : All)
        unit->Thaw();
}
