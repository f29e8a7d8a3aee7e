#include "assets/asset_changes.h"
#include "feed/frames.h"
#include "mirror.h"
#include "model/unit_model.h"
#include "store/database.h"
#include "store/preset_table.h"
#include "support/childprocess.h"
#include "unit/unitfakes.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <optional>
#include <string>

// What a change costs a unit of many presets and assets, without the network: the command itself, and what a console
// has to apply.

namespace {

using namespace ZorvicUnit;  // NOLINT(google-build-using-namespace)

std::string PathOf(int number) {
    return "C:\\Assets\\clip " + std::to_string(number) + ".mov";
}

struct Unit {
    explicit Unit(int size) {
        Store.Execute("PRAGMA synchronous = OFF");  // the disk is another figure
        AssetChanges all;
        for (int number = 1; number <= size; ++number) {
            Catalog.Durations[PathOf(number)] = 10'000;
            auto preset = PresetWith(0, PathOf(number));
            preset.add_tab_order()->set_index(number);
            PresetTable(Store).Insert(preset);
            all.Upserted.emplace_back().set_full_path(PathOf(number));
        }
        UnitModel::Profile profile;
        profile.Identity.set_guid("unit-1");
        Model.emplace(profile, Store, Time, Catalog, Updates);
        Model->ApplyAssets(all);
        Connect();
        Read();
    }
    void Connect() {
        Console.emplace(Updates);
        Copy.emplace("");
    }
    void Reconnect() {
        const auto known = Copy->Current();
        Console.emplace(Updates,
                        Feed::Subscription::Wishes{.KnownRun = Updates.Run(), .KnownRevision = known->Revision});
        Copy.emplace("", known);
    }
    void Probe(int number) {
        zorvic::v1::Asset asset;
        asset.set_full_path(PathOf(number));
        asset.set_total_size(++Sizes);
        Model->ApplyAssets({.Upserted = {asset}, .Removed = {}});
    }
    void Read() {
        auto batch = Console->Next(std::chrono::milliseconds(0));
        WriteFrames(std::move(*batch), [this](const auto& frame) { return Copy->Apply(frame), true; });
    }

    TemporaryDirectory Directory;
    Database Store{Directory.Path() + "/zorvic.db"};
    FakeClock Time;
    FakeCatalog Catalog;
    Feed Updates;
    std::optional<UnitModel> Model;
    std::optional<Feed::Subscription> Console;
    std::optional<Zorvic::Internal::Mirror> Copy;
    std::int64_t Sizes = 0;
};

template <typename Change>
void Measure(benchmark::State& state, const Change& change) {
    Unit unit(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        change(unit);
        unit.Read();
    }
}

void Take(benchmark::State& state) {
    Measure(state, [](Unit& unit) { unit.Model->Take(1); });
}
void Edit(benchmark::State& state) {
    google::protobuf::FieldMask mask;
    mask.add_paths("notes");
    int number = 0;
    Measure(state, [&](Unit& unit) {
        zorvic::v1::Preset preset;
        preset.set_pk(1);
        preset.set_notes(std::to_string(++number));
        unit.Model->UpdatePreset(preset, mask);
    });
}
void ProbeResult(benchmark::State& state) {
    Measure(state, [](Unit& unit) { unit.Probe(1); });
}
void Connect(benchmark::State& state) {
    Measure(state, [](Unit& unit) { unit.Connect(); });
}
void Reconnect(benchmark::State& state) {
    Measure(state, [](Unit& unit) { unit.Reconnect(); });
}

BENCHMARK(Take)->Arg(100)->Arg(10'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(Edit)->Arg(100)->Arg(10'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(ProbeResult)->Arg(100)->Arg(10'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(Connect)->Arg(100)->Arg(10'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(Reconnect)->Arg(100)->Arg(10'000)->Unit(benchmark::kMicrosecond);

}  // namespace
