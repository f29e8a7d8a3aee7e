#include "benchview.h"

namespace {

void FillAssets(FakeZorvic::Unit& unit, std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) {
        Zorvic::Asset asset;
        asset.FullPath = "C:\\Assets\\Scene " + std::to_string(i % 20) + "\\clip number " + std::to_string(i) + ".mov";
        asset.Checksum = "99aa06d3014798d86001c324468d497f";
        asset.Status = Zorvic::ZORVIC_ASSETSTATE_READY;
        asset.TotalSize = asset.CurrentSize = (i % 3000) << 20;
        unit.Assets.push_back(asset);
        auto& metadata = unit.Metadata[asset.FullPath];
        metadata.Resolution = {1920, 1080};
        metadata.FPS = 25;
        metadata.VideoFormat = "h264";
        metadata.AudioFormat = "aac";
        metadata.Duration = static_cast<std::int32_t>(i * 1000);
        metadata.ASampleRate = 48000;
        metadata.AChannels = 2;
    }
}

/// A view that shows `count` assets.
class BenchAssets : public BenchView {
public:
    explicit BenchAssets(std::int64_t count) : BenchView(1) {
        FillAssets(Unit, count);
        Refresh(Zorvic::ZORVIC_STATE_ASSETS);
    }
};

void BenchBareTree(benchmark::State& state) {
    const BenchAssets bench(state.range(1));
    const PeakMemory memory(state);
    RunBareTree(state, *bench.View->AssetsView, static_cast<int>(state.range(0)));
}
BENCHMARK(BenchBareTree)
    ->ArgNames({"precision", "assets"})
    ->ArgsProduct({{1000, 0}, {1000, 10000}})
    ->Unit(benchmark::kMillisecond);

void BenchAcceptAssets(benchmark::State& state) {
    const BenchAssets bench(state.range(0));
    const PeakMemory memory(state);
    for (auto _ : state) {
        bench.Refresh(Zorvic::ZORVIC_STATE_ASSETS);
    }
}
BENCHMARK(BenchAcceptAssets)->ArgName("assets")->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

/// A new tab's scan of assets whose metadata came with the list. The progress window is shown and painted.
void BenchFirstScan(benchmark::State& state) {
    BenchView bench(1);
    FillAssets(bench.Unit, state.range(0));
    const auto assets = std::exchange(bench.Unit.Assets, {});
    const PeakMemory memory(state);
    for (auto _ : state) {
        state.PauseTiming();
        FakeZorvic::Calls.clear();
        bench.Unit.Assets.clear();
        bench.View = std::make_unique<ZorvicView>("guid", "host");
        bench.Unit.Assets = assets;
        state.ResumeTiming();
        bench.View->InitialAssetScan();
    }
}
BENCHMARK(BenchFirstScan)->ArgName("assets")->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    return RunViewBenchmarks(argc, argv);
}
