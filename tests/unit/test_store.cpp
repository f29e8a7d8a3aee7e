#include "fault.h"
#include "store/database.h"
#include "store/preset_table.h"
#include "store/settings_table.h"
#include "support/childprocess.h"
#include "unit/unitfakes.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

using ZorvicUnit::Database;
using ZorvicUnit::Fault;
using ZorvicUnit::FaultKind;
using ZorvicUnit::PresetTable;
using ZorvicUnit::SettingsTable;

namespace {

class StoreTest : public ::testing::Test {
protected:
    std::string File() const { return Directory.Path() + "/zorvic.db"; }
    std::string OpenError() const {
        try {
            Database database(File());
            PresetTable(database).Load();
        } catch (const Fault& fault) {
            return fault.what();
        }
        return {};
    }
    TemporaryDirectory Directory;
};

/// While it lives, no file of this process grows beyond the limit.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &Before);
        const rlimit limit{bytes, Before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &Before); }

private:
    rlimit Before{};
};

TEST_F(StoreTest, KeepsWhatWasAcknowledgedAndNeverGivesAKeyTwice) {
    std::string guid;
    {
        Database database(File());
        PresetTable table(database);
        guid = SettingsTable(database).Guid();
        EXPECT_EQ(table.Insert(PresetWith(0, "a")), 1);
        EXPECT_EQ(table.Insert(PresetWith(0, "b")), 2);
        table.Replace(PresetWith(1, "changed"));
        table.Remove(2);
        SettingsTable(database).SetSelectedPreset(1);
    }
    Database database(File());
    PresetTable table(database);
    ASSERT_EQ(table.Load().size(), 1U);
    EXPECT_EQ(table.Load()[0].SerializeAsString(), PresetWith(1, "changed").SerializeAsString());
    EXPECT_EQ(table.Insert(PresetWith(0, "c")), 3);
    EXPECT_EQ(SettingsTable(database).Guid(), guid);
    EXPECT_EQ(SettingsTable(database).SelectedPreset(), 1);
}

// A crash leaves the log behind that the last commits stand in; a torn end of it must cost only what it held.
TEST_F(StoreTest, ATornLogCostsOnlyItsTornEnd) {
    Database database(File());
    PresetTable table(database);
    for (int number = 0; number < 20; ++number)
        table.Insert(PresetWith(0, std::string(3'000, 'x')));
    {
        const ZorvicUnit::Transaction transaction(database);
        database.Execute("INSERT INTO presets(record, hash) VALUES(x'', 0)");  // not committed
    }
    const std::string copy = Directory.Path() + "/copy.db";
    const auto log = std::filesystem::file_size(File() + "-wal");
    std::size_t before = 0;
    for (const auto size : {log / 3, log / 2, log - 1, log}) {
        constexpr auto Overwrite = std::filesystem::copy_options::overwrite_existing;
        std::filesystem::copy_file(File(), copy, Overwrite);
        std::filesystem::copy_file(File() + "-wal", copy + "-wal", Overwrite);
        std::filesystem::resize_file(copy + "-wal", size);
        Database torn(copy);
        const std::size_t now = PresetTable(torn).Load().size();
        EXPECT_GT(now, before);
        before = now;
    }
    EXPECT_EQ(before, 20U);
}

TEST_F(StoreTest, DamageAndNewerStoresAreRefusedWithTheReason) {
    {
        Database database(File());
        PresetTable(database).Insert(PresetWith(0, "a"));
        database.Execute("UPDATE presets SET record = x'0801'");
    }
    EXPECT_THAT(OpenError(), testing::HasSubstr("preset 1 is damaged"));
    {
        Database database(File());
        database.Execute("PRAGMA user_version = 99");
    }
    EXPECT_THAT(OpenError(), testing::HasSubstr("newer version"));
    std::ofstream(File()) << std::string(10'000, 'z');
    EXPECT_THAT(OpenError(), testing::HasSubstr("not a database"));
}

TEST_F(StoreTest, AFullDiskFailsCleanlyAndLaterWritesWork) {
    Database database(File());
    PresetTable table(database);
    std::set<std::int32_t> acknowledged{table.Insert(PresetWith(0, "before"))};
    // From no room at all to room for some of the pages of a commit.
    for (rlim_t room = 0; room < 40'000; room += 5'000) {
        const FileSizeLimit limit(std::filesystem::file_size(File() + "-wal") + room);
        try {
            acknowledged.insert(table.Insert(PresetWith(0, std::string(30'000, 'x'))));
        } catch (const Fault& fault) {
            EXPECT_EQ(fault.Kind, FaultKind::DiskFull) << fault.what();
        }
    }
    acknowledged.insert(table.Insert(PresetWith(0, "after")));
    Database reopened(File());
    std::set<std::int32_t> stored;
    for (const auto& preset : PresetTable(reopened).Load())
        stored.insert(preset.pk());
    EXPECT_EQ(stored, acknowledged);
    EXPECT_LT(stored.size(), 10U);  // some did fail
}

}  // namespace
