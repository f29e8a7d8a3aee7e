#include "conversions.h"
#include "support/unitprocess.h"
#include "unit/media_samples.h"
#include "unit/unitfakes.h"

#include <gmock/gmock.h>
#include <zorvic/session.h>

#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace Zorvic;

namespace {

// Nobody reads the log: its pipe is full when the unit starts, and stays so.
TEST(UnitFaults, AStuckLogHoldsUpNeitherCommandsNorTheEnd) {
    const TemporaryDirectory directory;
    const std::string output = directory.Path() + "/output";
    ASSERT_EQ(mkfifo((directory.Path() + "/pipe").c_str(), 0600), 0);
    const std::string command = "exec 2<>" + directory.Path() + "/pipe; head -c 65536 /dev/zero >&2; exec " +
                                ZORVIC_UNIT_PROGRAM + " --port=0 --announce=off --store=" + directory.Path() + "/store";
    ChildProcess unit({"sh", "-c", command}, output);
    const std::string ready = "listening on ";
    ASSERT_TRUE(WaitUntil([&] { return ReadFile(output).find('\n') != std::string::npos; }));
    const std::string line = ReadFile(output).substr(0, ReadFile(output).find('\n'));
    Session console(line.substr(line.find(ready) + ready.size()), 1);
    ASSERT_EQ(console.CreatePreset(Internal::FromWire(PresetWith(0, "a"))), ZORVIC_STATUS_OK);
    for (int number = 0; number < 300; ++number)
        ASSERT_EQ(console.Take(99), ZORVIC_STATUS_FAILED) << "each has a line in the log";
    EXPECT_EQ(console.Take(1), ZORVIC_STATUS_OK);
    EXPECT_TRUE(console.Connected());
    unit.Signal(SIGTERM);
    EXPECT_EQ(unit.Wait(std::chrono::seconds(20)), 0);
}

// An import that was acknowledged is carried out, whenever the unit is killed, and however often.
TEST(UnitFaults, AcknowledgedImportsSurviveKills) {
    const TemporaryDirectory directory;
    const std::filesystem::path drive = directory.Path() + "/drive";
    const std::filesystem::path assets = directory.Path() + "/store/Assets";
    std::filesystem::create_directories(drive);
    const char* const wanted = std::getenv("ZORVIC_KILLS");
    const int kills = wanted != nullptr ? std::atoi(wanted) : 4;
    const auto seed = std::random_device{}();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    std::map<std::string, std::string> acknowledged;
    UnitProcess unit(directory.Path() + "/store", {"--drive", "E=" + drive.string(), "--announce", "off"});
    for (int round = 0; round < kills; ++round) {
        const auto lifetime = std::chrono::milliseconds(random() % 300);
        std::jthread killer([&] {
            std::this_thread::sleep_for(lifetime);
            unit.Process().Signal(SIGKILL);
        });
        Session console(unit.Host(), 1);
        for (int number = 0; console.Connected(); ++number) {
            const std::string name = std::to_string(round) + "-" + std::to_string(number) + ".wav";
            const std::string bytes = ZorvicUnit::ToneFile(round * 100 + number);
            ZorvicUnit::WriteFile(drive / name, bytes);
            if (console.InstallAsset("E:\\" + name) == ZORVIC_STATUS_OK) acknowledged[name] = bytes;
        }
        killer.join();
        unit.Process().Wait(std::chrono::seconds(10));
        unit.Start();
    }
    EXPECT_GT(acknowledged.size(), 0U);
    Session console(unit.Host(), 1);
    std::vector<Asset> listed;
    const auto allReady = [&] {
        return console.GetAssets(listed) == ZORVIC_STATUS_OK && listed.size() >= acknowledged.size() &&
               std::ranges::all_of(listed, [](const auto& asset) { return asset.Status == ZORVIC_ASSETSTATE_READY; });
    };
    EXPECT_TRUE(WaitUntil(allReady, std::chrono::seconds(60)));
    for (const auto& [name, bytes] : acknowledged)
        EXPECT_TRUE(ReadFile(assets / name) == bytes) << name;
    for (const auto& entry : std::filesystem::directory_iterator(assets))
        EXPECT_EQ(entry.path().extension(), ".wav") << entry.path();
}

}  // namespace
