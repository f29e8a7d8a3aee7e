#include "fault.h"
#include "store/database.h"
#include "store/preset_table.h"
#include "store/settings_table.h"
#include "support/childprocess.h"
#include "unit/unitfakes.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

namespace ZorvicUnit {
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
    for (int number = 0; number < 20; ++number)
        PresetTable(database).Insert(PresetWith(0, std::string(3'000, 'x')));
    {
        const Transaction transaction(database);
        database.Execute("INSERT INTO presets(record, hash) VALUES(x'', 0)");  // not committed
    }
    const std::string copy = Directory.Path() + "/copy.db";
    std::filesystem::copy_file(File(), copy);
    std::filesystem::copy_file(File() + "-wal", copy + "-wal");
    std::filesystem::resize_file(copy + "-wal", std::filesystem::file_size(copy + "-wal") / 2);
    Database torn(copy);
    EXPECT_THAT(PresetTable(torn).Load().size(), testing::AllOf(testing::Gt(0U), testing::Lt(20U)));
    EXPECT_EQ(PresetTable(database).Load().size(), 20U);
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
    std::signal(SIGXFSZ, SIG_IGN);
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
}  // namespace ZorvicUnit
