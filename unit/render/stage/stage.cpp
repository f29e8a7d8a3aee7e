#include "render/stage/stage.h"

#include "render/gains.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <utility>

namespace ZorvicRender {

namespace {

constexpr std::size_t PictureBytes = std::size_t{768} * 1024 * 1024;

std::vector<const zorvic::v1::PinnedAsset*> FromBottomUp(const zorvic::v1::Canvas& canvas) {
    std::vector<const zorvic::v1::PinnedAsset*> assets;
    for (const auto& asset : canvas.assets()) {
        if (asset.width() > 0 && asset.height() > 0) assets.push_back(&asset);
    }
    std::ranges::stable_sort(assets, {}, [](const auto* asset) { return asset->z(); });
    return assets;
}

bool IsVisible(const Area& place) {
    return place.X < 1 && place.Y < 1 && place.X + place.Width > 0 && place.Y + place.Height > 0;
}

int Pixels(double part, int whole) {
    return static_cast<int>(std::lround(std::clamp(part * whole, 1.0, 16384.0)));
}

std::optional<CanvasView> ViewOn(const StageOutput& output, const zorvic::v1::Preset& preset) {
    return ViewOf(preset, output.Number, output.Shape.Width, output.Shape.Height);
}

}  // namespace

struct Stage::Run {
    struct Entry {
        std::unique_ptr<PictureSource> Source;
        std::uint64_t Dropped = 0;
        std::uint64_t Repeated = 0;
    };
    std::map<std::string, Entry> Sources;  ///< by path
    std::shared_ptr<const zorvic::v1::Preset> Sized;
    bool HasShown = false;
};

Stage::Stage(std::vector<StageOutput> outputs, Reports reports)
    : Outputs(std::move(outputs)), Lists(Outputs.size()), Report(std::move(reports)), Budget(PictureBytes) {}

Stage::~Stage() {
    Runs.clear();
}

Stage::Run& Stage::Get(const Layer& layer) {
    auto& run = Runs[layer.Id];
    if (!run) run = std::make_unique<Run>();
    SetSizes(*run, layer);
    return *run;
}

// Every asset that some output shows gets a source, and the size of the largest place at which it is drawn.
void Stage::SetSizes(Run& run, const Layer& layer) {
    std::map<std::string, PixelSize> sizes;
    for (const StageOutput& output : Outputs) {
        const auto view = ViewOn(output, *layer.Preset);
        if (!view) continue;
        for (const auto* asset : FromBottomUp(*view->Canvas)) {
            const Area place = view->Place(*asset);
            if (!IsVisible(place)) continue;
            PixelSize& size = sizes[asset->full_path()];
            size.Width = std::max(size.Width, Pixels(place.Width, output.Target.Width));
            size.Height = std::max(size.Height, Pixels(place.Height, output.Target.Height));
        }
    }
    std::erase_if(run.Sources, [&](const auto& source) { return !sizes.contains(source.first); });
    for (const Medium& medium : layer.Media) {
        const auto size = sizes.find(medium.Path);
        if (size == sizes.end() || medium.File.empty()) continue;
        auto& source = run.Sources[medium.Path].Source;
        if (!source) {
            auto opened = std::make_shared<const OpenMedium>(medium.Path, std::make_shared<KeptFile>(medium.File));
            source =
                std::make_unique<PictureSource>(std::move(opened), PictureServices{Budget, Leftovers, Report.Opening});
        }
        source->SetSize(size->second);
    }
}

void Stage::Follow(const Scene& scene, TimePoint lightUp, Nanoseconds tick) {
    Busy = false;
    for (DrawList& list : Lists)
        list.clear();
    for (const auto& layer : scene.Layers) {
        Run& run = Get(*layer);
        FollowSources(run, *layer, lightUp, tick);
        if (layer->At(lightUp) != nullptr) List(run, *layer, lightUp);
    }
    for (const auto& layer : scene.Primed) {
        for (auto& [path, entry] : Get(*layer).Sources)
            entry.Source->Prime(*layer);
    }
    DropOthers(scene);
}

void Stage::Prepare(const Scene& scene, TimePoint lightUp, Nanoseconds tick) {
    for (const auto& layer : scene.Layers) {
        for (auto& [path, entry] : Get(*layer).Sources)
            entry.Source->Prepare(*layer, lightUp, tick);
    }
}

void Stage::FollowSources(Run& run, const Layer& layer, TimePoint lightUp, Nanoseconds tick) {
    const Span* span = layer.At(lightUp);
    const bool coming = span == nullptr && layer.Spans.front().From > lightUp;
    Busy = Busy || coming || (span != nullptr && (span->Moves || span->Waits));
    for (auto& [path, entry] : run.Sources) {
        PictureSource& source = *entry.Source;
        if (coming) source.Prime(layer);
        source.Follow(layer, lightUp, tick);
        const auto& counts = source.Counted();
        Counts.Dropped += counts.Dropped - std::exchange(entry.Dropped, counts.Dropped);
        const auto repeated = counts.Repeated - std::exchange(entry.Repeated, counts.Repeated);
        Counts.Repeated += repeated;
        if (counts.JumpTime) (std::exchange(run.HasShown, true) ? Counts.Seek : Counts.FirstPicture) = *counts.JumpTime;
        Busy = Busy || repeated > 0 || (span != nullptr && !source.Shown() && !source.HasFailed());
        const std::string problem = source.TakeProblem();
        if (!problem.empty()) Report.Trouble(problem);
    }
}

void Stage::List(Run& run, const Layer& layer, TimePoint lightUp) {
    const Span& span = *layer.At(lightUp);
    const Gains gains = GainsAt(*layer.Preset, span, span.PositionAt(lightUp));
    for (std::size_t i = 0; i < Outputs.size(); ++i) {
        const auto view = ViewOn(Outputs[i], *layer.Preset);
        if (!view) continue;
        for (const auto* asset : FromBottomUp(*view->Canvas)) {
            const auto found = run.Sources.find(asset->full_path());
            if (found == run.Sources.end() || !found->second.Source->Shown()) continue;
            const Area place = view->Place(*asset);
            if (!IsVisible(place)) continue;
            Lists[i].push_back({.Source = found->second.Source.get(),
                                .Shown = found->second.Source->Shown(),
                                .Place = place,
                                .Colours = ControlsOf(*asset),
                                .Light = gains.Light,
                                .Opacity = gains.Opacity});
        }
    }
}

void Stage::DropOthers(const Scene& scene) {
    std::set<RunId> wanted;
    for (const auto* layers : {&scene.Layers, &scene.Primed}) {
        for (const auto& layer : *layers)
            wanted.insert(layer->Id);
    }
    std::erase_if(Runs, [&](const auto& run) { return !wanted.contains(run.first); });
}

std::vector<const Layer*> Stage::ReadyLayers(const Scene& scene) {
    std::vector<const Layer*> ready;
    for (const auto* layers : {&scene.Layers, &scene.Primed}) {
        for (const auto& layer : *layers) {
            const Span& span = layer->Spans.back();
            const auto found = Runs.find(layer->Id);
            if (span.Moves || found == Runs.end()) continue;
            const bool all = std::ranges::all_of(
                found->second->Sources, [&](auto& entry) { return entry.second.Source->IsReady(span.Position); });
            if (all) ready.push_back(layer.get());
        }
    }
    return ready;
}

}  // namespace ZorvicRender
