#include "conversions.h"
#include "support/environment.h"
#include "support/unitprocess.h"
#include "unit/media_samples.h"
#include "unit/unitfakes.h"

#include <zorvic/session.h>

#include <sys/stat.h>

#include <csignal>
#include <random>
#include <thread>

using testing::HasSubstr;
using namespace Zorvic;

namespace {

constexpr std::chrono::seconds Watchdog(60);

Preset PresetOf(const std::string& asset, std::size_t notes = 0) {
    Preset preset = Internal::FromWire(PresetWith(0, asset));
    preset.Notes = std::string(notes, 'n');
    return preset;
}

/// A unit as a process of its own, and a console on it.
class Unit : public UnitProcess {
public:
    explicit Unit(const std::string& directory, const std::string& output = "1=off")
        : UnitProcess(directory + "/store",
                      {"--drive", "E=" + directory + "/drive", "--announce", "off", "--output", output}) {
        EXPECT_TRUE(Console.Connected());
    }
    template <typename Record>
    std::vector<Record> Read(StatusCode (Session::*read)(std::vector<Record>&)) {
        std::vector<Record> records;
        EXPECT_EQ((Console.*read)(records), ZORVIC_STATUS_OK);
        return records;
    }
    /// The first record that says this of itself; an empty one when none does.
    template <typename Record, typename Value>
    Record Find(StatusCode (Session::*read)(std::vector<Record>&), Value Record::*field, const Value& value) {
        const auto records = Read(read);
        const auto found = std::ranges::find(records, value, field);
        return found == records.end() ? Record() : *found;
    }
    std::vector<Preset> Presets() { return Read(&Session::GetPresets); }
    PresetState State(int pk) { return Find(&Session::GetPresetStates, &PresetState::PK, pk); }
    Asset AssetAt(const std::string& path) { return Find(&Session::GetAssets, &Asset::FullPath, path); }
    void AwaitStatus(const std::string& path, AssetState status) {
        EXPECT_TRUE(WaitUntil([&] { return AssetAt(path).Status == status; }, Watchdog));
    }

    Session Console{Host(), 1};
};

class UnitProcessTest : public ::testing::Test {
protected:
    UnitProcessTest() {
        std::filesystem::create_directories(Assets);
        std::filesystem::create_directories(Drive);
    }
    /// Exit status of a unit that ends by itself; what it wrote is in Output.
    int RunToEnd(std::vector<std::string> options) {
        options.insert(options.begin(), ZORVIC_UNIT_PROGRAM);
        const std::string file = Directory.Path() + "/output";
        const auto status = ChildProcess(options, file).Wait(Watchdog);
        Output = ReadFile(file);
        return status.value_or(-1);
    }
    std::string Log() const { return ReadFile(Directory.Path() + "/store.log"); }
    std::vector<std::string> FilesInStore() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(Assets))
            names.push_back(entry.path().filename());
        return names;
    }

    static std::jthread KillSoon(Unit& unit) {
        return std::jthread([&unit] {
            std::this_thread::sleep_for(std::chrono::milliseconds(std::random_device()() % 250));
            unit.Process().Signal(SIGKILL);
        });
    }

    TemporaryDirectory Directory;
    const std::string Store = "--store=" + Directory.Path() + "/store";
    const std::filesystem::path Assets = Directory.Path() + "/store/Assets";
    const std::filesystem::path Drive = Directory.Path() + "/drive";
    const std::string Clip = "C:\\Assets\\clip.wav";
    std::string Output;
};

TEST_F(UnitProcessTest, BadOptionsAreNamedAndEndWithTwo) {
    std::istringstream options(
        "--port=65536 --port=x --listen=nonsense --listen=0.0.0.0 --tls-dir=/tmp --role=boss --type=x "
        "--video-mode=480p --refresh=61 --drive=C=/media --drive=e=/media --drive=E= --output=5=window "
        "--output=1=cinema --output=1=window:0x9 --output=1=fullscreen:x --audio=loud --audio=file:x.mp3 "
        "--nickname=\xFF\xFE --nonsense --nickname=" +
        std::string(257, 'x'));
    for (std::string option; options >> option;) {
        EXPECT_EQ(RunToEnd({Store, option}), 2) << option;
        EXPECT_THAT(Output, HasSubstr(option.substr(0, option.find('='))));
    }
    EXPECT_EQ(RunToEnd({Store, "--drive=E=/media", "--drive=E=/srv"}), 2);
    EXPECT_EQ(RunToEnd({}), 2);
    EXPECT_THAT(Output, HasSubstr("--store"));
}

TEST_F(UnitProcessTest, ATakenPortAndAnUnusableStoreEndWithOneAndAReason) {
    const Unit unit(Directory.Path());
    const std::string port = unit.Host().substr(unit.Host().rfind(':') + 1);
    const std::vector<std::array<std::string, 3>> cases = {
        {"--store=" + Directory.Path() + "/other", "--port=" + port, "the port is taken"},
        {Store, "--port=0", "in use by another unit"},
        {"--store=/dev/null/x", "--port=0", "/dev/null/x"},
        {"--store=" + Directory.Path() + "/other", "--audio=alsa:nosuch", "--audio alsa:nosuch: cannot open"},
        {"--store=" + Directory.Path() + "/other", "--audio=file:/nowhere/x.wav", "--audio file:/nowhere/x.wav"}};
    for (const auto& [store, listen, reason] : cases) {
        EXPECT_EQ(RunToEnd({store, listen, "--announce=off"}), 1);
        EXPECT_THAT(Output, HasSubstr(reason));
    }
}

TEST_F(UnitProcessTest, PlaysAFileOfItsStoreUntilARebootComesBackOnItsPortAndShutdownDoesNot) {
    ZorvicUnit::WriteFile(Assets / "clip.wav", ZorvicUnit::ToneFile());
    Unit unit(Directory.Path());
    auto preset = PresetOf(Clip);
    preset.Loop = -1;
    ASSERT_EQ(unit.Console.CreatePreset(preset), ZORVIC_STATUS_OK);
    for (const auto reboot : {&Session::SoftRebootZorvic, &Session::RebootZorvic, &Session::RebootZorvic}) {
        EXPECT_TRUE(WaitUntil([&] { return unit.State(1).TRT == 1'000; }, Watchdog));
        ASSERT_EQ(unit.Console.Take(1), ZORVIC_STATUS_OK);
        EXPECT_TRUE(WaitUntil([&] { return unit.State(1).CurrentLoop > 1; }, Watchdog));
        TimeCode code;
        const auto sounds = [&] {
            return unit.Console.GetTimeCode(code, 1) == ZORVIC_STATUS_OK && code.VUData.at(0) > 0 &&
                   code.VUData.at(1) > 0;
        };
        EXPECT_TRUE(WaitUntil(sounds, Watchdog));
        EXPECT_EQ(unit.Console.DeleteAsset(Clip), ZORVIC_STATUS_FAILED);
        ASSERT_EQ((unit.Console.*reboot)(), ZORVIC_STATUS_OK);
        EXPECT_TRUE(WaitUntil([&] { return !unit.Console.Connected(); }, Watchdog));
        EXPECT_TRUE(WaitUntil([&] { return unit.Console.Reconnect("") == ZORVIC_STATUS_OK; }, Watchdog));
    }
    EXPECT_EQ(unit.Console.DeleteAsset(Clip), ZORVIC_STATUS_OK) << "playback has ended, and the unit serves on";
    EXPECT_FALSE(std::filesystem::exists(Assets / "clip.wav"));
    EXPECT_EQ(unit.Console.ShutdownZorvic(), ZORVIC_STATUS_OK);
    EXPECT_EQ(unit.Process().Wait(Watchdog), 0);
}

TEST_F(UnitProcessTest, ASelectionIsSavedAtOnceAndAStoreThatIsGoneFailsCommands) {
    {
        Unit unit(Directory.Path());
        for (const int pk : {1, 2}) {
            ASSERT_EQ(unit.Console.CreatePreset(PresetOf("a")), ZORVIC_STATUS_OK);
            ASSERT_EQ(unit.Console.SelectPreset(pk), ZORVIC_STATUS_OK);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        unit.Process().Signal(SIGKILL);
    }
    Unit unit(Directory.Path());
    EXPECT_TRUE(unit.State(2).IsSelected);
    std::filesystem::rename(Directory.Path() + "/store", Directory.Path() + "/away");
    EXPECT_NE(unit.Console.CreatePreset(PresetOf("a")), ZORVIC_STATUS_OK);
    EXPECT_EQ(unit.Presets().size(), 2U);
    EXPECT_EQ(unit.Console.Take(1), ZORVIC_STATUS_OK) << "the show goes on";
    EXPECT_THAT(Log(), HasSubstr("was removed or replaced"));
}

// Nobody reads the log: its pipe is full when the unit starts, and stays so.
TEST_F(UnitProcessTest, AStuckLogHoldsUpNeitherCommandsNorTheEnd) {
    const std::string output = Directory.Path() + "/output";
    ASSERT_EQ(mkfifo((Directory.Path() + "/pipe").c_str(), 0600), 0);
    const std::string command = "exec 2<>" + Directory.Path() + "/pipe; head -c 65536 /dev/zero >&2; exec " +
                                ZORVIC_UNIT_PROGRAM + " --port=0 --announce=off " + Store;
    ChildProcess unit({"sh", "-c", command}, output);
    const std::string ready = "listening on ";
    ASSERT_TRUE(WaitUntil([&] { return ReadFile(output).find('\n') != std::string::npos; }));
    const std::string line = ReadFile(output).substr(0, ReadFile(output).find('\n'));
    Session console(line.substr(line.find(ready) + ready.size()), 1);
    ASSERT_EQ(console.CreatePreset(PresetOf("a")), ZORVIC_STATUS_OK);
    for (int number = 0; number < 300; ++number)
        ASSERT_EQ(console.Take(99), ZORVIC_STATUS_FAILED) << "each has a line in the log";
    EXPECT_EQ(console.Take(1), ZORVIC_STATUS_OK);
    EXPECT_TRUE(console.Connected());
    unit.Signal(SIGTERM);
    EXPECT_EQ(unit.Wait(Watchdog), 0);
}

// Killed at any instant of a save, the unit comes back with every preset that it acknowledged, and with nothing half.
TEST_F(UnitProcessTest, KeepsEveryAcknowledgedPresetThroughKills) {
    std::size_t acknowledged = 0;
    std::size_t sent = 0;
    for (unsigned round = FromEnvironment("ZORVIC_KILLS", 8); round > 0; --round) {
        Unit unit(Directory.Path());
        const auto stored = unit.Presets();
        EXPECT_GE(stored.size(), acknowledged);
        EXPECT_LE(stored.size(), sent);
        for (const auto& preset : stored)
            EXPECT_EQ(preset.Notes, std::string(2'000, 'n'));
        acknowledged = sent = stored.size();
        std::jthread killer = KillSoon(unit);
        for (++sent; unit.Console.CreatePreset(PresetOf("a", 2'000)) == ZORVIC_STATUS_OK; ++sent)
            ++acknowledged;
        killer.join();
        EXPECT_EQ(unit.Process().Wait(Watchdog), 128 + SIGKILL);
    }
    EXPECT_GT(acknowledged, 0U);
}

// An import that was acknowledged is carried out, whenever the unit is killed, and however often.
TEST_F(UnitProcessTest, AcknowledgedImportsSurviveKills) {
    std::map<std::string, std::string> acknowledged;
    for (unsigned round = FromEnvironment("ZORVIC_KILLS", 4); round > 0; --round) {
        Unit unit(Directory.Path());
        std::jthread killer = KillSoon(unit);
        for (int number = 0; unit.Console.Connected(); ++number) {
            const std::string name = std::to_string(round) + "-" + std::to_string(number) + ".wav";
            const std::string bytes = ZorvicUnit::ToneFile(static_cast<int>(round) * 100 + number);
            ZorvicUnit::WriteFile(Drive / name, bytes);
            if (unit.Console.InstallAsset("E:\\" + name) == ZORVIC_STATUS_OK) acknowledged[name] = bytes;
        }
        killer.join();
        unit.Process().Wait(Watchdog);
    }
    EXPECT_GT(acknowledged.size(), 0U);
    Unit unit(Directory.Path());
    EXPECT_TRUE(WaitUntil(
        [&] {
            const auto listed = unit.Read(&Session::GetAssets);
            return listed.size() >= acknowledged.size() &&
                   std::ranges::count(listed, ZORVIC_ASSETSTATE_READY, &Asset::Status) == std::ssize(listed);
        },
        Watchdog));
    for (const auto& [name, bytes] : acknowledged)
        EXPECT_TRUE(ReadFile(Assets / name) == bytes) << name;
    EXPECT_THAT(FilesInStore(), testing::Each(testing::EndsWith(".wav")));
}

TEST_F(UnitProcessTest, AKilledImportLeavesTheOldFileAndIsTakenUpAgain) {
    // What takes long to copy is a file with a hole: it takes room only in the store.
    constexpr std::uint32_t Size = 290'000'000;
    ZorvicUnit::WriteFile(Drive / "clip.wav", ZorvicUnit::WaveHead(Size - 44));
    std::filesystem::resize_file(Drive / "clip.wav", Size);
    ZorvicUnit::WriteFile(Assets / "foreign.part", "somebody else's");
    ZorvicUnit::WriteFile(Assets / "clip.wav", ZorvicUnit::ToneFile());
    // Older than what the unit would wait for to rest.
    const auto old = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    std::filesystem::last_write_time(Assets / "clip.wav", old);
    {
        Unit unit(Directory.Path());
        unit.AwaitStatus(Clip, ZORVIC_ASSETSTATE_READY);
        ASSERT_EQ(unit.Console.InstallAsset("E:\\clip.wav"), ZORVIC_STATUS_OK);
        EXPECT_TRUE(WaitUntil([&] { return unit.AssetAt(Clip).CurrentSize > 0; }, Watchdog));
        unit.Process().Signal(SIGKILL);
        ASSERT_EQ(unit.Process().Wait(Watchdog), 128 + SIGKILL);
    }
    EXPECT_EQ(FilesInStore().size(), 3U) << "it was not killed in the middle of a copy";
    Unit unit(Directory.Path());
    EXPECT_EQ(unit.AssetAt(Clip).Status, ZORVIC_ASSETSTATE_INGESTING);
    EXPECT_EQ(ReadFile(Assets / "clip.wav"), ZorvicUnit::ToneFile());
    unit.AwaitStatus(Clip, ZORVIC_ASSETSTATE_READY);
    EXPECT_EQ(unit.AssetAt(Clip).TotalSize, Size);
    EXPECT_THAT(FilesInStore(), testing::UnorderedElementsAre("clip.wav", "foreign.part"));
}

TEST_F(UnitProcessTest, AFullDiskFailsWhatNeedsRoomAndTheUnitLives) {
    ZorvicUnit::WriteFile(Drive / "large.wav", ZorvicUnit::ToneFile() + std::string(5'000'000, '\0'));
    ZorvicUnit::WriteFile(Drive / "clip.wav", ZorvicUnit::ToneFile());
    std::optional<FileSizeLimit> inherited(4'000'000);
    Unit unit(Directory.Path());
    inherited.reset();
    const std::string large = "C:\\Assets\\large.wav";
    ASSERT_EQ(unit.Console.InstallAsset("E:\\large.wav"), ZORVIC_STATUS_OK);
    ASSERT_EQ(unit.Console.InstallAsset("E:\\clip.wav"), ZORVIC_STATUS_OK);
    unit.AwaitStatus(large, ZORVIC_ASSETSTATE_ERROR);
    EXPECT_EQ(unit.AssetAt(large).CurrentSize, unit.AssetAt(large).TotalSize);
    unit.AwaitStatus(Clip, ZORVIC_ASSETSTATE_READY);
    EXPECT_THAT(FilesInStore(), testing::ElementsAre("clip.wav"));
    std::size_t saved = 0;
    while (saved < 1'000 && unit.Console.CreatePreset(PresetOf(Clip, 60'000)) == ZORVIC_STATUS_OK)
        ++saved;
    EXPECT_EQ(unit.Presets().size(), saved);
    EXPECT_EQ(unit.Console.Take(1), ZORVIC_STATUS_OK) << "the show goes on";
}

}  // namespace
