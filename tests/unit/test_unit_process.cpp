#include "conversions.h"
#include "support/unitprocess.h"
#include "unit/media_samples.h"
#include "unit/unitfakes.h"

#include <zorvic/session.h>

#include <csignal>
#include <filesystem>
#include <fstream>
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
    std::vector<Preset> Presets() {
        std::vector<Preset> presets;
        EXPECT_EQ(Console.GetPresets(presets), ZORVIC_STATUS_OK);
        return presets;
    }
    PresetState State(int pk) {
        std::vector<PresetState> states;
        EXPECT_EQ(Console.GetPresetStates(states), ZORVIC_STATUS_OK);
        const auto found = std::ranges::find(states, pk, &PresetState::PK);
        return found == states.end() ? PresetState() : *found;
    }
    std::vector<Asset> Assets() {
        std::vector<Asset> assets;
        EXPECT_EQ(Console.GetAssets(assets), ZORVIC_STATUS_OK);
        return assets;
    }
    Asset AssetAt(const std::string& path) {
        const auto assets = Assets();
        const auto found = std::ranges::find(assets, path, &Asset::FullPath);
        return found == assets.end() ? Asset() : *found;
    }
    void AwaitStatus(const std::string& path, AssetState status) {
        EXPECT_TRUE(WaitUntil([&] { return AssetAt(path).Status == status; }, Watchdog));
    }
    bool Reconnects() {
        return WaitUntil([&] { return Console.Reconnect("") == ZORVIC_STATUS_OK; }, Watchdog);
    }

    Session Console{Host(), 1};
};

class UnitProcessTest : public ::testing::Test {
protected:
    /// Exit status of a unit that ends by itself; what it wrote is in Output.
    int RunToEnd(std::vector<std::string> options) {
        options.insert(options.begin(), ZORVIC_UNIT_PROGRAM);
        const std::string file = Directory.Path() + "/output";
        const auto status = ChildProcess(options, file).Wait(Watchdog);
        Output = ReadFile(file);
        return status.value_or(-1);
    }
    std::string Log() const { return ReadFile(Directory.Path() + "/store.log"); }

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

TEST_F(UnitProcessTest, AnEndingSignalEndsSessionsAndTheProcess) {
    for (const int signal : {SIGTERM, SIGINT}) {
        Unit unit(Directory.Path());
        unit.Process().Signal(signal);
        EXPECT_TRUE(WaitUntil([&] { return !unit.Console.Connected(); }, Watchdog));
        EXPECT_EQ(unit.Process().Wait(Watchdog), 0);
    }
}

TEST_F(UnitProcessTest, FailuresReachConsoleAndLog) {
    Unit unit(Directory.Path());
    EXPECT_EQ(unit.Console.Take(1), ZORVIC_STATUS_FAILED);
    auto preset = PresetOf("a");
    preset.Name = std::string(257, 'n');
    EXPECT_EQ(unit.Console.CreatePreset(preset), ZORVIC_STATUS_MISUSED);
    EXPECT_EQ(unit.Console.DeleteAsset("C:\\Assets\\a\nforged"), ZORVIC_STATUS_MISUSED);
    EXPECT_THAT(Log(), HasSubstr("create preset: the name of more than 256 bytes"));
    EXPECT_THAT(Log(), HasSubstr("delete asset C:\\Assets\\a?forged"));
}

TEST_F(UnitProcessTest, PlaysAFileOfItsStoreAndKeepsItUntilASoftReboot) {
    std::filesystem::create_directories(Assets);
    ZorvicUnit::WriteFile(Assets / "clip.wav", ZorvicUnit::ToneFile());
    Unit unit(Directory.Path());
    auto preset = PresetOf(Clip);
    preset.Loop = -1;
    ASSERT_EQ(unit.Console.CreatePreset(preset), ZORVIC_STATUS_OK);
    EXPECT_TRUE(WaitUntil([&] { return unit.State(1).TRT == 1'000; }, Watchdog));
    ASSERT_EQ(unit.Console.Take(1), ZORVIC_STATUS_OK);
    EXPECT_TRUE(WaitUntil([&] { return unit.State(1).CurrentLoop > 1; }, Watchdog));
    TimeCode code;
    const auto sounds = [&] {
        return unit.Console.GetTimeCode(code, 1) == ZORVIC_STATUS_OK && code.VUData.at(0) > 0 && code.VUData.at(1) > 0;
    };
    EXPECT_TRUE(WaitUntil(sounds, Watchdog));
    EXPECT_EQ(unit.Console.DeleteAsset(Clip), ZORVIC_STATUS_FAILED);
    EXPECT_EQ(unit.Console.SoftRebootZorvic(), ZORVIC_STATUS_OK);
    EXPECT_TRUE(WaitUntil([&] { return !unit.Console.Connected(); }, Watchdog));
    EXPECT_TRUE(unit.Reconnects());
    EXPECT_EQ(unit.Console.DeleteAsset(Clip), ZORVIC_STATUS_OK) << "playback has ended, and the unit serves on";
    EXPECT_FALSE(std::filesystem::exists(Assets / "clip.wav"));
}

TEST_F(UnitProcessTest, RebootComesBackOnItsPortAndShutdownDoesNot) {
    Unit unit(Directory.Path());
    ASSERT_EQ(unit.Console.CreatePreset(PresetOf("a")), ZORVIC_STATUS_OK);
    for (int reboot = 0; reboot < 2; ++reboot) {
        ASSERT_EQ(unit.Console.RebootZorvic(), ZORVIC_STATUS_OK);
        ASSERT_TRUE(WaitUntil([&] { return !unit.Console.Connected(); }, Watchdog));
        ASSERT_TRUE(unit.Reconnects());
        EXPECT_EQ(unit.Presets().size(), 1U);
    }
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

// Killed at any instant of a save, the unit comes back with every preset that it acknowledged, and with nothing half.
TEST_F(UnitProcessTest, KeepsEveryAcknowledgedPresetThroughKills) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::size_t acknowledged = 0;
    std::size_t sent = 0;
    for (int round = 0; round < 8; ++round) {
        Unit unit(Directory.Path());
        const auto stored = unit.Presets();
        EXPECT_GE(stored.size(), acknowledged);
        EXPECT_LE(stored.size(), sent);
        for (const auto& preset : stored)
            EXPECT_EQ(preset.Notes, std::string(2'000, 'n'));
        acknowledged = sent = stored.size();
        const auto lifetime = std::chrono::milliseconds(random() % 200);
        std::jthread killer([&] {
            std::this_thread::sleep_for(lifetime);
            unit.Process().Signal(SIGKILL);
        });
        for (++sent; unit.Console.CreatePreset(PresetOf("a", 2'000)) == ZORVIC_STATUS_OK; ++sent)
            ++acknowledged;
        killer.join();
        EXPECT_EQ(unit.Process().Wait(Watchdog), 128 + SIGKILL);
    }
    EXPECT_GT(acknowledged, 0U);
}

/// A unit that imports from its drive.
class ImportingUnitTest : public UnitProcessTest {
protected:
    ImportingUnitTest() {
        std::filesystem::create_directories(Assets);
        std::filesystem::create_directories(Drive);
    }
    std::vector<std::string> FilesInStore() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(Assets))
            names.push_back(entry.path().filename());
        return names;
    }
};

TEST_F(ImportingUnitTest, AKilledImportLeavesTheOldFileAndIsTakenUpAgain) {
    // What takes long to copy is a file with a hole: it takes room only in the store.
    constexpr std::uint32_t Size = 290'000'000;
    ZorvicUnit::WriteFile(Drive / "clip.wav", ZorvicUnit::WaveHead(Size - 44));
    std::filesystem::resize_file(Drive / "clip.wav", Size);
    ZorvicUnit::WriteFile(Drive / "next.wav", ZorvicUnit::ToneFile());
    ZorvicUnit::WriteFile(Assets / "foreign.part", "somebody else's");
    ZorvicUnit::WriteFile(Assets / "clip.wav", ZorvicUnit::ToneFile());
    // Older than what the unit would wait for to rest.
    const auto old = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    std::filesystem::last_write_time(Assets / "clip.wav", old);
    {
        Unit unit(Directory.Path());
        unit.AwaitStatus(Clip, ZORVIC_ASSETSTATE_READY);
        for (const char* path : {"E:\\clip.wav", "E:\\next.wav"})
            ASSERT_EQ(unit.Console.InstallAsset(path), ZORVIC_STATUS_OK);
        EXPECT_TRUE(WaitUntil([&] { return unit.AssetAt(Clip).CurrentSize > 0; }, Watchdog));
        unit.Process().Signal(SIGKILL);
        ASSERT_EQ(unit.Process().Wait(Watchdog), 128 + SIGKILL);
    }
    EXPECT_EQ(FilesInStore().size(), 3U) << "it was not killed in the middle of a copy";
    Unit unit(Directory.Path());
    EXPECT_EQ(unit.AssetAt(Clip).Status, ZORVIC_ASSETSTATE_INGESTING);
    EXPECT_EQ(ReadFile(Assets / "clip.wav"), ZorvicUnit::ToneFile());
    for (const std::string& path : {Clip, std::string("C:\\Assets\\next.wav")})
        unit.AwaitStatus(path, ZORVIC_ASSETSTATE_READY);
    EXPECT_EQ(unit.AssetAt(Clip).TotalSize, Size);
    EXPECT_THAT(FilesInStore(), testing::UnorderedElementsAre("clip.wav", "foreign.part", "next.wav"));
}

TEST_F(ImportingUnitTest, AFullDiskFailsWhatNeedsRoomAndTheUnitLives) {
    ZorvicUnit::WriteFile(Drive / "large.wav", ZorvicUnit::ToneFile() + std::string(5'000'000, '\0'));
    ZorvicUnit::WriteFile(Drive / "clip.wav", ZorvicUnit::ToneFile());
    std::size_t saved = 0;
    {
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

        while (saved < 1'000 && unit.Console.CreatePreset(PresetOf(Clip, 60'000)) == ZORVIC_STATUS_OK)
            ++saved;
        EXPECT_EQ(unit.Console.Take(1), ZORVIC_STATUS_OK) << "the show goes on";
    }
    Unit unit(Directory.Path());
    EXPECT_GT(saved, 0U);
    EXPECT_EQ(unit.Presets().size(), saved);
}

}  // namespace
