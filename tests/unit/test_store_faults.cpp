#include "fault.h"
#include "store/database.h"
#include "store/preset_table.h"
#include "support/childprocess.h"
#include "support/failingdisk.h"
#include "unit/unitfakes.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace ZorvicUnit {
namespace {

using Presets = std::map<std::int32_t, std::string>;

/// What a unit finds that is started now, with the one before killed.
Presets AfterAKill(const std::string& file, const std::string& copy) {
    for (const char* part : {"", "-wal", "-shm", "-seal", "-copy1", "-copy2", "-copy3"}) {
        std::filesystem::remove(copy + part);
        const bool kept = std::string(part) != "-shm" && std::filesystem::exists(file + part);
        if (kept) std::filesystem::copy_file(file + part, copy + part);
    }
    Presets found;
    Database database(copy);
    for (const auto& preset : PresetTable(database).Load())
        found[preset.pk()] = preset.canvases(0).assets(0).full_path();
    return found;
}

// What was acknowledged stays, what failed did not happen: now, and after a kill at any moment.
TEST(StoreFaults, WhicheverWriteOrSyncFailsTheStoreHoldsWhatItAcknowledged) {
    FailingDisk disk;
    int refused = 0;
    bool failed = true;
    for (int number = 1; failed; ++number) {
        SCOPED_TRACE(number);
        failed = false;
        const TemporaryDirectory directory;
        const std::string file = directory.Path() + "/zorvic.db";
        Presets acknowledged;
        Database database(file);
        PresetTable table(database);
        const auto large = [](std::int32_t pk, const std::string& asset) {
            auto preset = PresetWith(pk, asset);
            preset.set_notes(std::string(9'000, 'x'));
            return preset;
        };
        const std::vector<std::function<void()>> commands = {
            [&] { acknowledged[table.Insert(PresetWith(0, "a"))] = "a"; },
            [&] { acknowledged[table.Insert(large(0, "large"))] = "large"; },
            [&] { table.Replace(PresetWith(1, "b")), acknowledged[1] = "b"; },
            [&] { database.CheckpointWhenIdle(), database.CheckpointWhenIdle(); },
            [&] { table.Replace(large(1, "larger")), acknowledged[1] = "larger"; },
            [&] { table.Remove(1), acknowledged.erase(1); },
            [&] { acknowledged[table.Insert(PresetWith(0, "c"))] = "c"; }};
        disk.FailAt(number);
        for (const auto& command : commands) {
            try {
                command();
            } catch (const Fault&) {
                ++refused;
            }
            if (!disk.Failed()) continue;
            disk.FailAt(0);
            failed = true;
            EXPECT_EQ(AfterAKill(file, directory.Path() + "/copy.db"), acknowledged);
        }
        disk.FailAt(0);
        EXPECT_EQ(AfterAKill(file, directory.Path() + "/copy.db"), acknowledged);
    }
    EXPECT_GT(refused, 5);
}

}  // namespace
}  // namespace ZorvicUnit
