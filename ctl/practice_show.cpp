#include "practice_show.h"

#include "unit.h"
#include "words.h"

#include <zorvic/extras.h>
#include <zorvic/layout.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace ZorvicCtl {
namespace {

using Zorvic::Asset;
using Zorvic::Preset;

Zorvic::PresetMark MarkAt(std::int32_t id, std::int32_t remainingMS, const char* name) {
    Zorvic::PresetMark mark;
    mark.ID = id;
    mark.TimeMS = remainingMS;
    mark.Name = name;
    return mark;
}

Preset PresetOf(const Asset& asset, const Zorvic::AssetMetadata& metadata) {
    Preset preset;
    const std::string file = FileName(asset.FullPath);
    preset.Name = file.substr(0, file.rfind('.'));
    Zorvic::CanvasInfo& canvas = preset.Canvases.emplace_back();
    canvas.CanvasCfg.Orientation = {Zorvic::CanvasOrientationEnum::Single, nullptr};
    canvas.CanvasCfg.Dimensions = {1920, 1080};
    canvas.CanvasCfg.NumOutputs = 1;
    canvas.SinkTypes = Zorvic::ZORVIC_SINK_KONA;
    Zorvic::AttachAssetToCanvas(Zorvic::ZORVIC_ECALIGN_SCALED_CENTERED, asset.FullPath, metadata.Resolution, canvas);
    preset.Volume = {65535, 65535};
    preset.Gotos = {{1, MarkAt(1, metadata.Duration, "Top")}, {2, MarkAt(2, metadata.Duration / 2, "Middle")}};
    preset.Countdowns = {{1, MarkAt(1, metadata.Duration / 4, "Stand by")}};
    return preset;
}

bool IsRead(const Asset& asset) {
    return asset.Status == Zorvic::ZORVIC_ASSETSTATE_READY || asset.Status == Zorvic::ZORVIC_ASSETSTATE_ERROR;
}

}  // namespace

// From the last to the first, because a link needs the key of what it leads to.
void FillWithPresets(const std::string& host) {
    constexpr std::chrono::minutes ReadLimit(2);
    Unit unit(host);
    if (!unit.Presets().empty()) return;
    std::vector<Asset> assets;
    const auto isReady = [&] {
        assets = unit.Assets();
        return !assets.empty() && std::ranges::all_of(assets, IsRead);
    };
    WaitUntil(unit.Link(), isReady, ReadLimit);
    std::int32_t place = static_cast<std::int32_t>(assets.size());
    std::int32_t next = 0;
    for (auto asset = assets.rbegin(); asset != assets.rend(); ++asset) {
        Zorvic::AssetMetadata metadata;
        if (unit.Link().ReadAssetMetadata(asset->FullPath, metadata) != Zorvic::ZORVIC_STATUS_OK) continue;
        Preset preset = PresetOf(*asset, metadata);
        preset.Link = std::exchange(next, 0);
        preset.TabDisplayOrder[0] = Zorvic::TabOrdering(0, --place);
        unit.Check(unit.Link().CreatePreset(preset), "create the preset " + preset.Name);
        next = Zorvic::LastCreatedPreset(unit.Link());
    }
}

}  // namespace ZorvicCtl
