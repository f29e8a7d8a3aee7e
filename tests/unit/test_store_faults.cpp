// ZORVIC_CUTS sets how often the power goes, ZORVIC_SEED where the drawing begins.
#include "store/database.h"
#include "store/import_table.h"
#include "store/preset_table.h"
#include "store/settings_table.h"
#include "support/childprocess.h"
#include "support/diskrecord.h"
#include "support/environment.h"
#include "unit/unitfakes.h"

#include <functional>
#include <future>
#include <iostream>
#include <set>

namespace ZorvicUnit {
namespace {

/// What operators have made.
struct Content {
    std::map<std::int32_t, std::string> Presets;
    std::set<std::string> Orders;
    std::int32_t Selected = 0;
    std::string Guid;
    bool operator==(const Content&) const = default;
};

/// A store at work, and what it has acknowledged.
class Show {
public:
    explicit Show(std::filesystem::path file) : File(std::move(file)) { Open(); }

    void Open() {
        Store.emplace(File, [this](const std::string& text) { Mended = text; });
    }
    void Insert(const std::string& asset, std::size_t notes = 0) {
        Known.Presets[Table().Insert(Preset(0, asset, notes))] = asset;
    }
    void Replace(std::int32_t pk, const std::string& asset, std::size_t notes = 0) {
        Table().Replace(Preset(pk, asset, notes));
        Known.Presets[pk] = asset;
    }
    void Remove(std::int32_t pk) {
        Table().Remove(pk);
        Known.Presets.erase(pk);
    }
    void Order(const std::string& path) {
        ImportTable(*Store).Add({path, "C:\\source", {}, {}, {}});
        Known.Orders.insert(path);
    }
    void EndOrder(const std::string& path) {
        ImportTable(*Store).Remove(path);
        Known.Orders.erase(path);
    }
    void Select(std::int32_t pk) {
        SettingsTable(*Store).SetSelectedPreset(pk);
        Known.Selected = pk;
    }
    void NameUnit() { Known.Guid = SettingsTable(*Store).Guid(); }
    void BeIdle() { Store->CheckpointWhenIdle(), Store->CheckpointWhenIdle(); }
    void Restart() { Store.reset(), Open(); }
    bool IsOpen() const { return Store.has_value(); }

    /// One after the other: what operators and the unit itself do with a store.
    static std::vector<std::function<void(Show&)>> Commands() {
        return {[](Show& show) { show.NameUnit(); },
                [](Show& show) { show.Insert("a"); },
                [](Show& show) { show.Insert("large", 9'000); },
                [](Show& show) { show.Order("D:\\x"); },
                [](Show& show) { show.Replace(1, "b"); },
                [](Show& show) { show.BeIdle(); },
                [](Show& show) { show.Select(2); },
                [](Show& show) { show.Replace(1, "larger", 30'000); },
                [](Show& show) { show.Order("D:\\y"); },
                [](Show& show) { show.EndOrder("D:\\x"); },
                [](Show& show) { show.Restart(); },
                [](Show& show) { show.Remove(2); },
                [](Show& show) { show.Insert("c", 20'000); },
                [](Show& show) { show.BeIdle(); },
                [](Show& show) { show.Select(1); },
                [](Show& show) { show.Store.reset(); }};
    }
    const Content& Acknowledged() const { return Known; }
    /// What is there.
    Content Read() {
        Content found;
        for (const auto& preset : Table().Load())
            found.Presets[preset.pk()] = preset.canvases(0).assets(0).full_path();
        for (const ImportOrder& order : ImportTable(*Store).Load())
            found.Orders.insert(order.Path);
        SettingsTable settings(*Store);
        found.Selected = settings.SelectedPreset();
        const bool named = Store->Number("SELECT count(*) FROM settings WHERE name = 'guid'") != 0;
        if (named) found.Guid = settings.Guid();
        return found;
    }

    std::string Mended;  ///< what was said of it; empty when it was whole

private:
    PresetTable Table() { return PresetTable(*Store); }
    static zorvic::v1::Preset Preset(std::int32_t pk, const std::string& asset, std::size_t notes) {
        auto preset = PresetWith(pk, asset);
        preset.set_notes(std::string(notes, 'x'));
        return preset;
    }

    const std::filesystem::path File;
    std::optional<Database> Store;
    Content Known;
};

TEST(PowerCuts, LoseNothingThatWasAcknowledgedAndLeaveNothingHalf) {
    const unsigned seed = FromEnvironment("ZORVIC_SEED", std::random_device{}());
    std::cout << "ZORVIC_SEED=" << seed << '\n';
    std::mt19937 draw(seed);
    const TemporaryDirectory directory;
    const std::filesystem::path place = directory.Path();
    std::filesystem::create_directory(place / "live");
    const DiskRecord disk(place / "live");
    std::vector<std::pair<std::size_t, Content>> acknowledged = {{0, {}}};
    {
        Show show(place / "live" / "zorvic.db");
        for (const auto& command : Show::Commands()) {
            command(show);
            acknowledged.emplace_back(disk.Steps(), show.Acknowledged());
        }
    }
    const auto cuts = FromEnvironment("ZORVIC_CUTS", 60);
    for (unsigned cut = 0; cut < cuts; ++cut) {
        const std::size_t steps = draw() % (disk.Steps() + 1);
        SCOPED_TRACE("cut " + std::to_string(cut) + " after step " + std::to_string(steps));
        const auto later = std::ranges::find_if(acknowledged, [&](const auto& moment) { return moment.first > steps; });
        const Content& before = std::prev(later)->second;
        const Content& after = (later == acknowledged.end() ? std::prev(later) : later)->second;
        const auto left = place / ("cut" + std::to_string(cut));
        disk.Leave(steps, draw, left);
        try {
            Show show(left / "zorvic.db");
            const Content found = show.Read();
            EXPECT_TRUE(found == before || found == after)
                << found.Presets.size() << " presets, " << before.Presets.size() << " before. " << show.Mended;
            show.Insert("later");
            const Content more = show.Read();
            show.Restart();
            EXPECT_TRUE(show.Read() == more);
        } catch (const Fault& fault) {
            ADD_FAILURE() << fault.what();
        }
    }
}

// What was acknowledged stays, what failed did not happen: now, and after a kill at any moment.
TEST(DiskFailures, WhicheverWriteOrSyncFailsTheStoreHoldsWhatItAcknowledged) {
    int refused = 0;
    bool failed = true;
    for (int number = 1; failed; ++number) {
        SCOPED_TRACE(number);
        const TemporaryDirectory directory;
        const std::filesystem::path place = directory.Path();
        std::filesystem::create_directory(place / "live");
        DiskRecord disk(place / "live");
        auto afterAKill = [&, kills = 0]() mutable {
            const auto left = place / ("kill" + std::to_string(++kills));
            std::filesystem::copy(place / "live", left);
            std::filesystem::remove(left / "zorvic.db-shm");
            return Show(left / "zorvic.db").Read();
        };
        Show show(place / "live" / "zorvic.db");
        disk.Fail(number);
        failed = false;
        for (const auto& command : Show::Commands()) {
            try {
                if (!show.IsOpen()) show.Open();
                command(show);
            } catch (const Fault&) {
                ++refused;
            }
            if (failed || !disk.HasFailed()) continue;
            failed = true;
            EXPECT_TRUE(afterAKill() == show.Acknowledged());
        }
        EXPECT_TRUE(afterAKill() == show.Acknowledged());
    }
    EXPECT_GT(refused, 5);
}

TEST(SlowDisk, AWriteWaitsForNoSyncOfTheHousekeepers) {
    const TemporaryDirectory directory;
    Database database(directory.Path() + "/zorvic.db");
    PresetTable table(database);
    table.Insert(PresetWith(0, "a"));
    database.CheckpointWhenIdle();
    int syncs = 0;
    std::vector<std::future<void>> writes;
    DiskRecord::BeforeSync = [&] {
        ++syncs;
        writes.push_back(std::async(std::launch::async, [&] { table.Insert(PresetWith(0, "b")); }));
        EXPECT_EQ(writes.back().wait_for(std::chrono::seconds(2)), std::future_status::ready) << syncs;
    };
    database.CheckpointWhenIdle();
    DiskRecord::BeforeSync = {};
    EXPECT_GE(syncs, 3) << "the seal, the log, the file";
}

}  // namespace
}  // namespace ZorvicUnit
