#include "benchview.h"

namespace {

void BenchBareTree(benchmark::State& state) {
    const BenchView bench(static_cast<int>(state.range(1)));
    RunBareTree(state, *bench.View->PresetsView, static_cast<int>(state.range(0)));
}
BENCHMARK(BenchBareTree)
    ->ArgNames({"precision", "presets"})
    ->ArgsProduct({{1000, 0}, {1000, 10000}})
    ->Unit(benchmark::kMillisecond);

/// Nothing is selected, so no other pane follows.
void BenchAcceptPresets(benchmark::State& state) {
    BenchView bench(static_cast<int>(state.range(0)));
    bench.Unit.States[0].IsSelected = false;
    for (auto _ : state) {
        bench.Refresh(Zorvic::ZORVIC_STATE_PRESETS);
    }
}
BENCHMARK(BenchAcceptPresets)->ArgName("presets")->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

/// What the other panes cost: one preset of four canvases, selected, whose placement differs from round to round.
void BenchShowSelectedPreset(benchmark::State& state) {
    BenchView bench(1);
    auto& canvases = bench.Unit.Presets[0].Canvases;
    canvases.resize(4, canvases[0]);
    for (std::uint32_t index = 0; index < 4; ++index)
        canvases[index].Index = index;
    for (auto _ : state) {
        canvases[0].Assets[0].PinnedCoords.X ^= 1;
        bench.Refresh(Zorvic::ZORVIC_STATE_PRESETS);
    }
}
BENCHMARK(BenchShowSelectedPreset)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    return RunViewBenchmarks(argc, argv);
}
