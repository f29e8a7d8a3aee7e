// What reads from the mirror and changes to it cost at 1,000 and 10,000 presets of about 1.5 KB each.

#include "mirror.h"

#include <benchmark/benchmark.h>

#include <string>

using namespace Zorvic::Internal;

namespace {

Wire::Preset TypicalPreset(int pk) {
    Wire::Preset preset;
    preset.set_pk(pk);
    preset.set_name("Preset number " + std::to_string(pk));
    preset.set_notes(std::string(600, 'n'));
    preset.set_color("#AE602C");
    for (unsigned index = 0; index < 2; ++index) {
        Wire::Canvas& canvas = *preset.add_canvases();
        canvas.set_index(index);
        canvas.set_width(1920);
        canvas.set_height(1080);
        canvas.set_num_outputs(2);
        for (int i = 0; i < 4; ++i) {
            Wire::PinnedAsset& asset = *canvas.add_assets();
            asset.set_full_path("C:\\Assets\\A show of some length\\Clip number " + std::to_string(pk * 8 + i) +
                                ".mov");
            asset.set_width(1920);
            asset.set_height(1080);
            asset.set_hue(0.25F);
        }
    }
    for (int id = 1; id <= 6; ++id) {
        for (Wire::Mark* mark : {preset.add_gotos(), preset.add_countdowns()}) {
            mark->set_id(id);
            mark->set_time_ms(id * 10000);
            mark->set_name("Mark with a name");
        }
    }
    preset.add_volume(65535);
    preset.add_volume(65535);
    preset.add_tab_order()->set_index(pk);
    return preset;
}

Wire::Frame Frame(std::uint64_t revision, const Wire::Piece& piece, bool more = false, bool snapshot = false) {
    Wire::Frame frame;
    frame.set_revision(revision);
    frame.add_pieces(piece.SerializeAsString());
    frame.set_more(more);
    frame.set_snapshot(snapshot);
    return frame;
}

std::vector<Wire::Frame> SnapshotOf(int presets) {
    Wire::Piece identity;
    identity.mutable_identity()->set_guid("unit-1");
    std::vector<Wire::Frame> frames{Frame(1, identity, true, true)};
    for (int first = 1; first <= presets; first += 500) {
        Wire::Piece piece;
        for (int pk = first; pk < first + 500; ++pk)
            *piece.mutable_presets()->add_upserted() = TypicalPreset(pk);
        frames.push_back(Frame(1, piece, first + 500 <= presets, true));
    }
    return frames;
}

void Fill(Mirror& mirror, const std::vector<Wire::Frame>& frames) {
    for (const auto& frame : frames)
        mirror.Apply(frame);
}

void ReadIntoTheSameList(benchmark::State& state) {
    Mirror mirror("");
    Fill(mirror, SnapshotOf(static_cast<int>(state.range(0))));
    std::vector<Zorvic::Preset> presets;
    for (auto _ : state)
        CopyRecords(*mirror.Current()->Presets, presets);
    state.counters["wire_bytes_per_preset"] = static_cast<double>(TypicalPreset(1).ByteSizeLong());
}

void ReadIntoANewList(benchmark::State& state) {
    Mirror mirror("");
    Fill(mirror, SnapshotOf(static_cast<int>(state.range(0))));
    for (auto _ : state) {
        std::vector<Zorvic::Preset> presets;
        CopyRecords(*mirror.Current()->Presets, presets);
        benchmark::DoNotOptimize(presets);
    }
}

void TakeInASnapshot(benchmark::State& state) {
    const auto frames = SnapshotOf(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        Mirror mirror("");
        Fill(mirror, frames);
    }
}

void TakeInOneChangedPreset(benchmark::State& state) {
    Mirror mirror("");
    Fill(mirror, SnapshotOf(static_cast<int>(state.range(0))));
    Wire::Piece piece;
    *piece.mutable_presets()->add_upserted() = TypicalPreset(7);
    const Wire::Frame frame = Frame(2, piece);
    for (auto _ : state)
        mirror.Apply(frame);
}

void TakeInTwentyTimeCodes(benchmark::State& state) {
    Mirror mirror("");
    Fill(mirror, SnapshotOf(static_cast<int>(state.range(0))));
    Wire::Piece piece;
    for (int pk = 1; pk <= 20; ++pk) {
        Wire::TimeCode& timeCode = *piece.mutable_timecodes()->add_timecodes();
        timeCode.set_pk(pk);
        timeCode.add_levels(40);
        timeCode.add_levels(60);
    }
    const Wire::Frame frame = Frame(2, piece);
    for (auto _ : state)
        mirror.Apply(frame);
}

}  // namespace

BENCHMARK(ReadIntoTheSameList)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(ReadIntoANewList)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(TakeInASnapshot)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(TakeInOneChangedPreset)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(TakeInTwentyTimeCodes)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
