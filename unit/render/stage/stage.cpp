#include "render/stage/stage.h"

#include "render/gains.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace ZorvicRender {

namespace {

constexpr std::size_t PictureBytes = std::size_t{768} * 1024 * 1024;
// What has begun and shows nothing for longer than that does not keep others waiting: its file may never be read.
constexpr Nanoseconds Patience = std::chrono::seconds(2);

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

}  // namespace

struct Stage::Run {
    struct Entry {
        std::shared_ptr<KeptFile> File;
        std::unique_ptr<PictureSource> Source;
        std::uint64_t Dropped = 0;
        std::uint64_t Repeated = 0;
    };
    struct Pin {
        std::size_t Output = 0;
        std::string Path;
        Area Place;
        ColourMap Colours;
    };
    std::map<std::string, Entry> Sources;  ///< by path
    bool HasShown = false;

    // How this preset lies on outputs of these sizes; the same tick after tick.
    std::shared_ptr<const Layer> LaidOut;
    std::uint64_t Targets = 0;
    std::vector<Pin> Pins;  ///< from the bottom up
};

Stage::Stage(std::vector<StageOutput> outputs, TroubleReport report)
    : Outputs(std::move(outputs)), Lists(Outputs.size()), Report(std::move(report)), Budget(PictureBytes) {}

void Stage::SetTarget(std::size_t output, PixelSize target) {
    if (std::exchange(Outputs[output].Target, target) != target) ++TargetsVersion;
}

Stage::~Stage() {
    Runs.clear();
}

Stage::Run& Stage::Get(const std::shared_ptr<const Layer>& layer) {
    auto& run = Runs[layer->Id];
    if (!run) run = std::make_unique<Run>();
    if (run->LaidOut == layer && run->Targets == TargetsVersion) return *run;
    run->LaidOut = layer;
    run->Targets = TargetsVersion;
    run->Pins.clear();
    for (std::size_t output = 0; output < Outputs.size(); ++output)
        LayOut(*run, output);
    OpenSources(*run);
    return *run;
}

void Stage::LayOut(Run& run, std::size_t output) {
    const StageOutput& target = Outputs[output];
    const auto view = ViewOf(*run.LaidOut->Preset, target.Number, target.Shape.Width, target.Shape.Height);
    if (!view) return;
    for (const auto* asset : FromBottomUp(*view->Canvas)) {
        const Area place = view->Place(*asset);
        if (IsVisible(place)) run.Pins.push_back({output, asset->full_path(), place, ControlsOf(*asset)});
    }
}

// Every asset that some output shows gets a source, and the size of the largest place at which it is drawn.
void Stage::OpenSources(Run& run) {
    std::map<std::string, PixelSize> sizes;
    for (const Run::Pin& pin : run.Pins) {
        const PixelSize target = Outputs[pin.Output].Target;
        PixelSize& size = sizes[pin.Path];
        size.Width = std::max(size.Width, Pixels(pin.Place.Width, target.Width));
        size.Height = std::max(size.Height, Pixels(pin.Place.Height, target.Height));
    }
    std::erase_if(run.Sources, [&](const auto& source) { return !sizes.contains(source.first); });
    for (const Medium& medium : run.LaidOut->Media) {
        const auto size = sizes.find(medium.Path);
        if (size == sizes.end() || !medium.File) continue;
        Run::Entry& entry = run.Sources[medium.Path];
        if (entry.File != medium.File)
            entry = {medium.File, std::make_unique<PictureSource>(medium.File, PictureServices{Budget, Leftovers})};
        entry.Source->SetSize(size->second);
    }
}

void Stage::Follow(const Scene& scene, TimePoint lightUp, Nanoseconds tick) {
    Busy = false;
    for (DrawList& list : Lists)
        list.clear();
    for (const auto& layer : scene.Layers) {
        Run& run = Get(layer);
        FollowSources(run, *layer, lightUp, tick);
        if (layer->At(lightUp) == nullptr) continue;
        Ledger.NoteRuns(layer->Id, !run.Pins.empty());
        List(run, *layer, lightUp);
    }
    PrimeInTurn(scene, lightUp);
    DropOthers(scene);
}

// Decoding up to where a run begins takes its time: if all that is known for the next seconds were got ready at once,
// what begins first might be ready last.
void Stage::PrimeInTurn(const Scene& scene, TimePoint lightUp) {
    std::vector<const std::shared_ptr<const Layer>*> coming;
    bool ready = true;
    for (const auto& layer : scene.Layers) {
        const TimePoint begin = layer->Spans.front().From;
        if (begin > lightUp) coming.push_back(&layer);
        if (begin <= lightUp && lightUp < begin + Patience) ready = ready && ShowsAll(*layer);
    }
    std::ranges::stable_sort(coming, {}, [](const auto* layer) { return (*layer)->Spans.front().From; });
    for (const auto* layer : coming)
        ready = ready && Prime(*layer);
    for (auto layer = scene.Primed.begin(); ready && layer != scene.Primed.end(); ++layer)
        Prime(*layer);
}

bool Stage::ShowsAll(const Layer& layer) const {
    return std::ranges::all_of(Runs.at(layer.Id)->Sources, [](const auto& entry) {
        return entry.second.Source->Shown() || entry.second.Source->HasFailed();
    });
}

// True when it is ready.
bool Stage::Prime(const std::shared_ptr<const Layer>& layer) {
    bool ready = true;
    for (auto& [path, entry] : Get(layer).Sources) {
        entry.Source->Prime(*layer);
        ready = entry.Source->IsReady(layer->Spans.front().Position) && ready;
    }
    return ready;
}

void Stage::Prepare(const Scene& scene, TimePoint lightUp, Nanoseconds tick) {
    for (const auto& layer : scene.Layers) {
        for (auto& [path, entry] : Get(layer).Sources)
            entry.Source->Prepare(*layer, lightUp, tick);
    }
}

void Stage::FollowSources(Run& run, const Layer& layer, TimePoint lightUp, Nanoseconds tick) {
    const Span* span = layer.At(lightUp);
    const bool coming = span == nullptr && layer.Spans.front().From > lightUp;
    Busy = Busy || coming || (span != nullptr && (span->Moves || span->Waits));
    for (auto& [path, entry] : run.Sources) {
        PictureSource& source = *entry.Source;
        source.Follow(layer, lightUp, tick);
        const auto& counts = source.Counted();
        const auto dropped = counts.Dropped - std::exchange(entry.Dropped, counts.Dropped);
        Counts.Dropped += dropped;
        Ledger.NoteDropped(layer.Id, dropped);
        const auto repeated = counts.Repeated - std::exchange(entry.Repeated, counts.Repeated);
        Counts.Repeated += repeated;
        if (counts.JumpTime) (std::exchange(run.HasShown, true) ? Counts.Seek : Counts.FirstPicture) = *counts.JumpTime;
        Busy = Busy || repeated > 0 || (span != nullptr && !source.Shown() && !source.HasFailed());
        const std::string problem = source.TakeProblem();
        if (!problem.empty()) Report(problem);
    }
}

void Stage::List(const Run& run, const Layer& layer, TimePoint lightUp) {
    const Span& span = *layer.At(lightUp);
    const Gains gains = GainsAt(*layer.Preset, span, span.PositionAt(lightUp));
    for (const Run::Pin& pin : run.Pins) {
        const auto found = run.Sources.find(pin.Path);
        if (found == run.Sources.end() || !found->second.Source->Shown()) continue;
        Lists[pin.Output].push_back({.Source = found->second.Source.get(),
                                     .Run = layer.Id,
                                     .Shown = found->second.Source->Shown(),
                                     .Place = pin.Place,
                                     .Colours = pin.Colours,
                                     .Light = gains.Light,
                                     .Opacity = gains.Opacity});
    }
}

void Stage::NoteShown(std::size_t output, TimePoint at) {
    for (const DrawItem& item : Lists[output])
        Ledger.NoteLit(item.Run, Outputs[output].Number, at);
}

void Stage::DropOthers(const Scene& scene) {
    std::set<RunId> wanted;
    for (const auto* layers : {&scene.Layers, &scene.Primed}) {
        for (const auto& layer : *layers)
            wanted.insert(layer->Id);
    }
    for (const auto& [id, run] : Runs)
        if (!wanted.contains(id)) Ledger.NoteOver(id);
    std::erase_if(Runs, [&](const auto& run) { return !wanted.contains(run.first); });
}

std::vector<ReadyRun> Stage::ReadyRuns(const Scene& scene, TimePoint at) {
    std::vector<ReadyRun> ready;
    for (const auto* layers : {&scene.Layers, &scene.Primed}) {
        for (const auto& layer : *layers) {
            const Span* span = layer->At(at);
            const auto found = Runs.find(layer->Id);
            if (span == nullptr || span->Moves || found == Runs.end()) continue;
            const bool all = std::ranges::all_of(
                found->second->Sources, [&](auto& entry) { return entry.second.Source->IsReady(span->Position); });
            if (all) ready.push_back({layer.get(), span->Position});
        }
    }
    return ready;
}

}  // namespace ZorvicRender
