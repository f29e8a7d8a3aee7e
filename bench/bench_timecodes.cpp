#include "benchview.h"

namespace {

/// A timecode round with `playing` of 1,000 presets running, as the pump does it 10 times a second, up to the end of
/// its repaint. Half a second passes from round to round, so that half of the texts differ.
void BenchTimeCodeRound(benchmark::State& state) {
    BenchView bench(1000);
    for (std::size_t i = 0; i < static_cast<std::size_t>(state.range(0)); ++i) {
        auto& preset = bench.Unit.States[i * 40];
        preset.IsPlaying = true;
        bench.Unit.TimeCodes[preset.PK].VUData = {50, 50};
    }
    int remaining = 85000;
    for (auto _ : state) {
        remaining = remaining > 500 ? remaining - 500 : 85000;
        for (auto& [pk, code] : bench.Unit.TimeCodes) {
            code.Time = remaining;
        }
        bench.Refresh(Zorvic::ZORVIC_STATE_TIMECODE);
    }
}
BENCHMARK(BenchTimeCodeRound)->ArgName("playing")->Arg(0)->Arg(1)->Arg(20)->Unit(benchmark::kMillisecond);

/// What a round cannot avoid: the library's copies of the lists.
void BenchReadLists(benchmark::State& state) {
    const BenchView bench(1000);
    const std::unique_ptr<SessionHandle> handle(bench.Sessions.GetSessionByGUID("guid"));
    for (auto _ : state) {
        std::vector<Zorvic::Preset> presets;
        std::vector<Zorvic::PresetState> states;
        handle->GetSession()->GetPresets(presets);
        handle->GetSession()->GetPresetStates(states);
        benchmark::DoNotOptimize(presets);
    }
}
BENCHMARK(BenchReadLists)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    return RunViewBenchmarks(argc, argv);
}
