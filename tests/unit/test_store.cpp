#include "files/give_way.h"
#include "store/copies.h"
#include "store/database.h"
#include "store/import_table.h"
#include "store/preset_table.h"
#include "store/settings_table.h"
#include "support/childprocess.h"
#include "unit/unitfakes.h"

#include <spdlog/sinks/ostream_sink.h>
#include <spdlog/spdlog.h>

#include <csignal>
#include <fstream>

namespace ZorvicUnit {
namespace {

class StoreTest : public ::testing::Test {
protected:
    StoreTest() {
        spdlog::set_default_logger(
            std::make_shared<spdlog::logger>("log", std::make_shared<spdlog::sinks::ostream_sink_mt>(Log)));
    }
    std::string File() const { return Directory.Path() + "/zorvic.db"; }
    std::string OpenError() const {
        try {
            Presets(File());
        } catch (const Fault& fault) {
            return fault.what();
        }
        return {};
    }
    /// The presets that are stored, serialised; what was logged meanwhile is in Log.
    static std::vector<std::string> Presets(const std::string& file) {
        Log.str({});
        Database database(file);
        return Presets(database);
    }
    static std::vector<std::string> Presets(Database& database) {
        std::vector<std::string> presets;
        for (const auto& preset : PresetTable(database).Load())
            presets.push_back(preset.SerializeAsString());
        return presets;
    }
    /// The same with the settings and the orders to import.
    static std::vector<std::string> Content(const std::string& file) {
        Log.str({});
        Database database(file);
        auto content = Presets(database);
        content.push_back(std::to_string(SettingsTable(database).SelectedPreset()));
        if (database.Number("SELECT count(*) FROM settings WHERE name = 'guid'") > 0)
            content.push_back(SettingsTable(database).Guid());
        for (const ImportOrder& order : ImportTable(database).Load())
            content.push_back(order.Path + order.Source + std::to_string(order.Stamp.ModifiedNS) + order.Problem);
        return content;
    }
    static void Fill(Database& database, int count) {
        for (int number = 0; number < count; ++number)
            PresetTable(database).Insert(PresetWith(0, std::string(3'000, 'x')));
    }
    void FillFile(int count) const {
        Database database(File());
        Fill(database, count);
    }
    TemporaryDirectory Directory;
    static inline std::ostringstream Log;
};

/// The file with one of its damages: a beginning of it, or all of it with a bit flipped. Nothing after the last one.
std::optional<std::string> Damaged(std::string file, std::size_t number) {
    if (number < 16) return file.substr(0, file.size() * number / 16);
    const std::size_t place = number < 32 ? (number - 16) * 8 : 128 + (number - 32) * 2'999;
    if (place >= file.size()) return std::nullopt;
    file[place] = static_cast<char>(file[place] ^ 1 << place % 8);
    return file;
}

/// A store that ended without being closed, to be damaged again and again.
class DamagedStoreTest : public StoreTest {
protected:
    /// What the files hold, by the end of their names.
    using Files = std::map<std::string, std::string>;

    DamagedStoreTest() {
        {
            Database database(File());
            Guid = SettingsTable(database).Guid();
            SettingsTable(database).SetSelectedPreset(3);
            for (const char* path : {"E:\\Assets\\one.mov", "E:\\Assets\\two.mov"})
                ImportTable(database).Add({path, "D:\\source.mov", {7, 8}, {}, {}});
            Fill(database, 12);
        }
        Database database(File());
        OlderSeal = Read()["-seal"];
        Fill(database, 12);
        ImportTable(database).Add({"E:\\Assets\\late.mov", "D:\\source.mov", {7, 8}, {}, {}});
        ImportTable(database).SetProblem("E:\\Assets\\one.mov", "gone");
        SettingsTable(database).SetSelectedPreset(5);
        Copies(File()).Make();
        Copy = ReadFile(File() + "-copy1");
        Kept = Read();
        Complete = Content(File());
    }
    Files Read() const {
        Files files;
        for (const char* end : {"", "-wal", "-seal"})
            files[end] = ReadFile(File() + end);
        return files;
    }
    /// Makes the store anew as it was, but for one file.
    void Make(const std::string& end, const std::string& bytes, bool copied = false) {
        for (const auto& entry : std::filesystem::directory_iterator(Directory.Path()))
            if (entry.path().filename().string().starts_with("zorvic")) std::filesystem::remove(entry.path());
        for (const auto& [kept, whole] : Kept)
            std::ofstream(File() + kept) << (kept == end ? bytes : whole);
        if (copied) std::ofstream(File() + "-copy1") << Copy;
    }

    Files Kept;
    std::string Copy;
    std::string OlderSeal;
    std::string Guid;
    std::vector<std::string> Complete;
};

TEST_F(DamagedStoreTest, IsMendedOrRefusedAndLeftAloneAndWhatIsLostIsNamed) {
    std::map<std::string, int> outcomes;
    for (const auto& [end, whole] : Kept) {
        for (std::size_t number = 0; const auto bytes = Damaged(whole, number); ++number) {
            SCOPED_TRACE("zorvic.db" + end + " with damage " + std::to_string(number));
            Make(end, *bytes);
            const Files before = Read();
            try {
                const bool complete = Content(File()) == Complete;
                ++outcomes[complete ? "complete" : "named"];
                if (complete) continue;
                EXPECT_THAT(Log.str(), testing::HasSubstr("should be there"));
            } catch (const Fault&) {
                EXPECT_TRUE(Read() == before);
                ++outcomes["refused"];
            }
            Make(end, *bytes, true);
            EXPECT_TRUE(Content(File()) == Complete) << "a whole copy loses nothing";
        }
    }
    for (const char* outcome : {"complete", "named", "refused"})
        EXPECT_GT(outcomes[outcome], 10) << outcome;
}

// After a power cut the seal may stand where it was last synchronised.
TEST_F(DamagedStoreTest, WhatNothingProvesLostIsReported) {
    const std::string wal = Kept["-wal"];
    Kept["-seal"] = OlderSeal;
    for (std::size_t number = 16; const auto bytes = Damaged(wal, number); ++number) {
        SCOPED_TRACE(number);
        Make("-wal", *bytes);
        try {
            EXPECT_TRUE(Content(File()) == Complete || Log.str().find("changes are lost") != std::string::npos);
        } catch (const Fault&) {
        }
        Make("-wal", *bytes, true);
        EXPECT_TRUE(Content(File()) == Complete) << "a copy proves it";
    }
    Make("-wal", wal);
    EXPECT_TRUE(Content(File()) == Complete);
    EXPECT_EQ(Log.str(), "") << "a kill between a commit and its seal is no damage";
}

// Which unit it is, what was promised to be imported and what counts it all are as dear as presets.
TEST_F(DamagedStoreTest, WhatIsSpoiltBesidePresetsIsTakenFromACopyOrNamed) {
    Kept = Read();  // closed, so that no log covers what is damaged
    for (const auto& [text, says, lost] : {std::tuple(Guid, "identifier is lost", true),
                                           {"selected_preset", "5 settings and orders", true},
                                           {"two.mov", "order to import E:\\Assets\\", true},
                                           {"other_marks - (old", "its schema", false}}) {
        SCOPED_TRACE(text);
        std::string bytes = Kept[""];
        const auto place = bytes.find(text);
        ASSERT_NE(place, std::string::npos);
        bytes[place + 1] = static_cast<char>(bytes[place + 1] ^ 1);
        Make("", bytes);
        EXPECT_EQ(Content(File()) != Complete, lost);
        EXPECT_THAT(Log.str(), testing::HasSubstr(says));
        Make("", bytes, true);
        EXPECT_TRUE(Content(File()) == Complete);
    }
}

// Without it an order that was carried out would begin again.
TEST_F(DamagedStoreTest, OrdersAreFoundByTheirPathsWhateverPlaceOfThemIsSpoilt) {
    Kept = Read();
    const std::string name = "two.mov";
    int places = 0;
    for (auto place = Kept[""].find(name); place != std::string::npos;
         place = Kept[""].find(name, place + 1), ++places) {
        std::string bytes = Kept[""];
        bytes[place] = static_cast<char>(bytes[place] ^ 1);
        Make("", bytes, true);
        {
            Database database(File());
            ImportTable(database).Remove("E:\\Assets\\" + name);
        }
        EXPECT_EQ(Content(File()).size(), Complete.size() - 1);
    }
    EXPECT_EQ(places, 2) << "in its row and in the index";
}

TEST_F(StoreTest, ALostIdentifierIsNamedAlsoWhereNothingTellsWhatShouldBeThere) {
    const std::string guid = [&] {
        Database database(File());
        Fill(database, 1);
        return SettingsTable(database).Guid();
    }();
    std::string bytes = ReadFile(File());
    bytes.replace(bytes.find(guid), 1, "?");
    std::ofstream(File()) << bytes;
    for (const char* end : {"-copy1", "-copy2", "-seal"})
        std::filesystem::remove(File() + end);
    Connection(File(), Connection::Access::Write).Execute("DELETE FROM ledger");
    EXPECT_EQ(Presets(File()).size(), 1U);
    EXPECT_THAT(Log.str(), testing::HasSubstr("identifier is lost"));
}

TEST_F(StoreTest, OrdersOfAnOlderCopyAreNotPassedOffForTheLatest) {
    const auto order = [](Database& database, const std::string& path) {
        ImportTable(database).Add({path, "D:\\source.mov", {7, 8}, {}, {}});
    };
    {
        Database database(File());
        Fill(database, 1);
        order(database, "early.mov");
    }
    const std::string older = ReadFile(File() + "-copy1");
    {
        Database database(File());
        ImportTable(database).Remove("early.mov");
        order(database, "late.mov");
    }
    std::string bytes = ReadFile(File());
    for (auto place = bytes.find("late.mov"); place != std::string::npos; place = bytes.find("late.mov"))
        bytes.replace(place / 4'096 * 4'096, 4'096, 4'096, 'z');
    std::ofstream(File()) << bytes;
    std::ofstream(File() + "-copy1") << older;
    std::filesystem::remove(File() + "-copy2");
    EXPECT_EQ(Content(File()).back().substr(0, 5), "early");
    EXPECT_THAT(Log.str(), testing::HasSubstr("1 settings and orders to import should be there"));
}

TEST_F(StoreTest, ALostSealIsReportedAndMadeAgainAndAnOlderStoreGetsOne) {
    FillFile(3);
    std::filesystem::remove(File() + "-seal");
    EXPECT_EQ(Presets(File()).size(), 3U);
    EXPECT_THAT(Log.str(), testing::HasSubstr("-seal is missing"));
    Database(File()).Execute(
        "DROP TRIGGER preset_inserted; DROP TRIGGER preset_updated; DROP TRIGGER preset_deleted;"
        "DROP TRIGGER setting_made; DROP TRIGGER setting_inserted; DROP TRIGGER setting_updated;"
        "DROP TRIGGER setting_deleted; DROP TABLE ledger; DROP TABLE imports; DROP TABLE requests; ALTER TABLE presets "
        "DROP COLUMN mark;"
        "ALTER TABLE settings DROP COLUMN hash;"
        "CREATE TABLE assets(path); PRAGMA user_version = 1");
    for (const char* file : {"-copy1", "-copy2"})
        std::filesystem::remove(File() + file);
    EXPECT_THAT(OpenError(), testing::HasSubstr("the end of what was stored is lost"));
    std::filesystem::remove(File() + "-seal");
    EXPECT_EQ(Presets(File()).size(), 3U);
    EXPECT_EQ(Log.str(), "");
    for (const char* file : {"", "-copy1", "-copy2"})
        std::filesystem::remove(File() + file);
    EXPECT_THAT(OpenError(), testing::HasSubstr("zorvic.db is missing"));
    EXPECT_FALSE(std::filesystem::exists(File()));
}

TEST_F(StoreTest, ALostDatabaseIsMendedFromItsCopyOrMissedAndNeverTakenForANewOne) {
    FillFile(3);
    const std::string older = ReadFile(File());
    FillFile(2);
    const std::string newest = ReadFile(File() + "-copy1");
    const auto lose = [&](const std::vector<std::string>& ends) {
        for (const std::string& end : ends)
            std::filesystem::remove(File() + end);
    };
    lose({"", "-seal"});
    EXPECT_EQ(Presets(File()).size(), 5U);
    EXPECT_THAT(Log.str(), testing::HasSubstr("-copy1 was made is lost"));

    lose({"", "-seal"});
    Connection(File(), Connection::Access::Make).Execute("CREATE TABLE other(name); DROP TABLE other");
    EXPECT_EQ(Presets(File()).size(), 5U);

    lose({"-seal"});
    std::ofstream(File()) << older;
    EXPECT_EQ(Presets(File()).size(), 3U) << "somebody may have put it there on purpose";
    EXPECT_THAT(Log.str(), testing::HasSubstr("-newer1"));
    EXPECT_TRUE(ReadFile(File() + "-newer1") == newest);

    lose({"", "-seal", "-copy1", "-copy2", "-copy3"});
    const std::string cache = Directory.Path() + "/cache.db";
    std::ofstream(cache) << "of what was there";
    EXPECT_THAT(OpenError(), testing::HasSubstr("remove " + cache));
    EXPECT_FALSE(std::filesystem::exists(File()));
    std::filesystem::remove(cache);
    EXPECT_EQ(Presets(File()).size(), 0U);
    EXPECT_EQ(Log.str(), "");
}

TEST_F(StoreTest, ACopyThatFailedIsReportedAndTriedAgain) {
    Log.str({});
    Database database(File());
    Fill(database, 3);
    std::filesystem::create_directories(File() + "-copy.part/in the way");
    database.CheckpointWhenIdle();
    database.CheckpointWhenIdle();
    EXPECT_THAT(Log.str(), testing::HasSubstr("no copy could be made"));
    std::filesystem::remove_all(File() + "-copy.part");
    database.Close();
    EXPECT_EQ(Presets(File() + "-copy1").size(), 3U);
}

TEST_F(StoreTest, TheFileAloneIsCompleteWhenIdleAndWhenClosed) {
    const std::string copy = Directory.Path() + "/copy.db";
    Database database(File());
    for (const int count : {5, 10}) {
        Fill(database, 5);
        if (count == 5) {
            database.CheckpointWhenIdle();
            EXPECT_GT(std::filesystem::file_size(File() + "-wal"), 0U) << "it was busy";
            database.CheckpointWhenIdle();
        } else {
            database.Close();
        }
        std::filesystem::copy_file(File(), copy, std::filesystem::copy_options::overwrite_existing);
        EXPECT_EQ(Presets(copy).size(), static_cast<std::size_t>(count));
        std::filesystem::remove(copy + "-seal");
    }
    EXPECT_THROW(PresetTable(database).Load(), Fault);
}

TEST_F(StoreTest, WhoReadsMuchGivesWayToASaveForAWhile) {
    Database database(File());
    const auto pause = [] {
        const auto began = std::chrono::steady_clock::now();
        GiveWayToSaves(std::chrono::milliseconds(10));
        return std::chrono::steady_clock::now() - began;
    };
    Fill(database, 1);
    EXPECT_GE(pause(), std::chrono::milliseconds(20));
    EXPECT_TRUE(WaitUntil([&] { return pause() < std::chrono::milliseconds(10); }));
}

TEST_F(StoreTest, AFullDiskFailsCleanlyLeavesTheRestInTheLogAndLaterWritesWork) {
    Database database(File());
    std::signal(SIGXFSZ, SIG_IGN);
    Fill(database, 1);
    std::size_t acknowledged = 1;
    // From no room at all to room for some of the pages of a commit.
    for (rlim_t room = 0; room < 40'000; room += 5'000) {
        const FileSizeLimit limit(std::filesystem::file_size(File() + "-wal") + room);
        try {
            PresetTable(database).Insert(PresetWith(0, std::string(30'000, 'x')));
            ++acknowledged;
        } catch (const Fault& fault) {
            EXPECT_EQ(fault.Kind, FaultKind::DiskFull) << fault.what();
        }
    }
    EXPECT_LT(acknowledged, 9U) << "some did fail";
    Fill(database, 60);
    database.CheckpointWhenIdle();
    database.CheckpointWhenIdle();
    {
        const FileSizeLimit limit(std::filesystem::file_size(File()));
        Fill(database, 5);
        Log.str({});
        for (int look = 0; look < 4; ++look)
            database.CheckpointWhenIdle();
        EXPECT_EQ(std::ranges::count(Log.str(), '\n'), 1) << Log.str();
        EXPECT_THAT(Log.str(), testing::HasSubstr("the disk is full"));
        Fill(database, 1);
    }
    database.Close();
    EXPECT_EQ(Presets(File()).size(), acknowledged + 66);
}

TEST_F(StoreTest, ADamagedRowCostsThatRowAndNoKeyIsGivenTwice) {
    const std::string guid = [&] {
        Database database(File());
        Fill(database, 3);
        return SettingsTable(database).Guid();
    }();
    const auto before = Presets(File());
    const std::string older = ReadFile(File() + "-copy1");
    for (const auto& [copy, says, left] : {std::tuple(std::string("new"), "3 presets, all that were acknowledged", 3U),
                                           {"old", "preset 2 may be as it was when", 3U},
                                           {"none", "preset 2 cannot be read, and no copy has it", 2U}}) {
        {
            Database database(File());
            PresetTable(database).Replace(PresetWith(2, copy));
        }
        Database(File()).Execute("UPDATE presets SET record = x'0801' WHERE pk = 2");
        for (const char* number : {"-copy1", "-copy2", "-copy3"})
            if (copy != "new") std::filesystem::remove(File() + number);
        if (copy == "old") std::ofstream(File() + "-copy1") << older;
        const auto after = Presets(File());
        EXPECT_THAT(Log.str(), testing::HasSubstr(says));
        EXPECT_EQ(after.size(), left);
        EXPECT_EQ(after.front(), before.front());
    }
    Database database(File());
    EXPECT_EQ(SettingsTable(database).Guid(), guid);
    PresetTable(database).Remove(3);
    EXPECT_EQ(PresetTable(database).Insert(PresetWith(0, "next")), 4);
}

TEST_F(StoreTest, NewerAndUnreadableStoresAreRefusedWithTheReason) {
    Database(File()).Execute("PRAGMA user_version = 99");
    EXPECT_THAT(OpenError(), testing::HasSubstr("newer version"));
    std::filesystem::remove(File() + "-copy1");
    std::ofstream(File()) << std::string(10'000, 'z');
    EXPECT_THAT(OpenError(), testing::HasSubstr("not a database"));
}

// Two units on one store would overwrite each other's presets.
TEST_F(StoreTest, OfTenUnitsOneRunsAlsoWhenItsLockFileIsRemovedAndItLeavesOneCompleteFile) {
    const std::filesystem::path store = Directory.Path() + "/new/store";
    const std::string output = Directory.Path() + "/output";
    std::vector<std::unique_ptr<ChildProcess>> units;
    const auto start = [&] {
        const std::vector<std::string> words = {ZORVIC_UNIT_PROGRAM, "--store=" + store.string(), "--port=0",
                                                "--announce=off"};
        units.push_back(std::make_unique<ChildProcess>(words, output + std::to_string(units.size())));
    };
    for (int number = 0; number < 10; ++number)
        start();
    const auto isRunning = [](const auto& unit) { return unit->Running(); };
    EXPECT_TRUE(WaitUntil([&] { return std::ranges::count_if(units, isRunning) == 1; }));
    std::filesystem::remove(store / "lock");
    start();
    EXPECT_EQ(units.back()->Wait(std::chrono::seconds(20)), 1);
    for (std::size_t number = 0; number < units.size(); ++number) {
        const auto said = [&] { return ReadFile(output + std::to_string(number)); };
        if (!units[number]->Running()) {
            EXPECT_EQ(units[number]->Wait({}), 1);
            EXPECT_THAT(said(), testing::HasSubstr("in use by another unit"));
            continue;
        }
        EXPECT_TRUE(WaitUntil([&] { return said().starts_with("listening"); }));
        units[number]->Signal(SIGINT);
        EXPECT_EQ(units[number]->Wait(std::chrono::seconds(20)), 0);
    }
    EXPECT_FALSE(std::filesystem::exists(store / "zorvic.db-wal"));
}

}  // namespace
}  // namespace ZorvicUnit
