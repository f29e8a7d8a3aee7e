#include "store/database.h"
#include "store/preset_table.h"
#include "support/childprocess.h"
#include "unit/unitfakes.h"

#include <sqlite3.h>

#include <functional>

namespace ZorvicUnit {
namespace {

/// The n-th write, truncation or synchronisation of a database from now on fails, and no other; 0: none.
std::atomic<int> UntilFailure = 0;

bool FailsNow() {
    return UntilFailure > 0 && --UntilFailure == 0;
}

/// What SQLite calls for a file: the system's own methods, but for those that may fail.
struct Methods : sqlite3_io_methods {
    explicit Methods(const sqlite3_io_methods& own) : sqlite3_io_methods(own), Own(own) {
        xWrite = [](sqlite3_file* file, const void* bytes, int size, sqlite3_int64 place) {
            return FailsNow() ? SQLITE_IOERR_WRITE : Of(file).xWrite(file, bytes, size, place);
        };
        xTruncate = [](sqlite3_file* file, sqlite3_int64 size) {
            return FailsNow() ? SQLITE_IOERR_TRUNCATE : Of(file).xTruncate(file, size);
        };
        xSync = [](sqlite3_file* file, int flags) {
            return FailsNow() ? SQLITE_IOERR_FSYNC : Of(file).xSync(file, flags);
        };
    }
    static const sqlite3_io_methods& Of(const sqlite3_file* file) {
        return static_cast<const Methods*>(file->pMethods)->Own;
    }
    const sqlite3_io_methods& Own;
};

int Open(sqlite3_vfs* /*failing*/, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    static std::map<const sqlite3_io_methods*, Methods> known;
    sqlite3_vfs* const system = sqlite3_vfs_find("unix");
    const int result = system->xOpen(system, name, file, flags, outFlags);
    const auto* const own = file->pMethods;
    if (own != nullptr) file->pMethods = &known.try_emplace(own, *own).first->second;
    return result;
}

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
    static sqlite3_vfs disk = *sqlite3_vfs_find(nullptr);
    disk.zName = "failing";
    disk.xOpen = &Open;
    sqlite3_vfs_register(&disk, 1);
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
        UntilFailure = number;
        for (const auto& command : commands) {
            try {
                command();
            } catch (const Fault&) {
                ++refused;
            }
            if (failed || UntilFailure > 0) continue;
            failed = true;
            EXPECT_EQ(AfterAKill(file, directory.Path() + "/copy.db"), acknowledged);
        }
        UntilFailure = 0;
        EXPECT_EQ(AfterAKill(file, directory.Path() + "/copy.db"), acknowledged);
    }
    EXPECT_GT(refused, 5);
}

}  // namespace
}  // namespace ZorvicUnit
