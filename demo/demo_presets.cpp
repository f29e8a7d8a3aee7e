// zorvic-demo-presets HOST left|right: gives an empty unit the presets of a small show. A unit that already holds
// presets is left alone.

#include <zorvic/zorvic.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

namespace {

struct DemoMark {
    int ElapsedMS;
    const char* Name;
};

struct DemoPreset {
    const char* Name;
    const char* Notes;
    const char* File;
    int Loop = 0;
    const char* LinkTo = nullptr;  // name of a preset that stands above in the list
    bool Freeze = false;
    int TrimInMS = 0;           // cut from the start
    int OutMS = 0;              // cut from the end
    std::uint32_t Outputs = 1;  // side by side, showing one picture
    std::vector<DemoMark> Gotos{};
    std::vector<DemoMark> Countdowns{};
};

// A preset stands below the one it links to, because the link needs its key.
const std::vector<DemoPreset> StageLeft = {
    {.Name = "Overture",
     .Notes = "Go with the conductor's upbeat",
     .File = "Overture.mov",
     .Freeze = true,
     .Gotos = {{0, "Top"}, {15000, "Second theme"}, {30000, "Coda"}},
     .Countdowns = {{12000, "Lights up"}, {38000, "Tabs out"}}},
    {.Name = "House open",
     .Notes = "Loops until front of house gives clearance",
     .File = "House Open.mp4",
     .Loop = -1,
     .LinkTo = "Overture",
     .Gotos = {{240000, "Last minute"}},
     .Countdowns = {{240000, "Beginners' call"}}},
    {.Name = "Storm", .Notes = "Scene 2, thunder on channel 1", .File = "Storm Loop.mp4", .Loop = 3},
    {.Name = "Interview",
     .Notes = "Trimmed: starts on her first word",
     .File = "Interview.mpg",
     .TrimInMS = 4000,
     .OutMS = 5000,
     .Gotos = {{30000, "Answer"}, {60000, "Laugh"}},
     .Countdowns = {{80000, "Stand by storm"}}},
    {.Name = "Facade",
     .Notes = "Both projectors, no sound, runs under the narration",
     .File = "Facade Mapping.mp4",
     .Outputs = 2},
    {.Name = "Safety curtain", .Notes = "Interval, holds", .File = "Safety Curtain.mp4", .Freeze = true},
    {.Name = "Title card", .Notes = "", .File = "Title Card.png", .Freeze = true},
};

const std::vector<DemoPreset> StageRight = {
    {.Name = "River",
     .Notes = "Follows the walk-in by itself",
     .File = "River.mov",
     .Freeze = true,
     .Gotos = {{10000, "Bridge"}}},
    {.Name = "Walk-in music",
     .Notes = "",
     .File = "Walk In Music.mp4",
     .LinkTo = "River",
     .Countdowns = {{210000, "Doors close"}}},
    {.Name = "Night sky", .Notes = "Loop under the monologue", .File = "Night Sky.mp4", .Loop = -1},
    {.Name = "Curtain call", .Notes = "", .File = "Curtain Call.mpg"},
    {.Name = "Black", .Notes = "Emergency black", .File = "Black.png", .Freeze = true},
};

const Zorvic::Asset* FindAsset(const std::vector<Zorvic::Asset>& assets, const std::string& file) {
    const auto found = std::find_if(assets.begin(), assets.end(),
                                    [&](const Zorvic::Asset& asset) { return asset.FullPath.ends_with("\\" + file); });
    return found == assets.end() || found->Status != Zorvic::ZORVIC_ASSETSTATE_READY ? nullptr : &*found;
}

/// A fresh unit still probes its files: waits up to two minutes until every file of the show is ready.
bool WaitForAssets(Zorvic::Session& session, const std::vector<DemoPreset>& show, std::vector<Zorvic::Asset>& assets) {
    for (int attempt = 0; attempt < 240; ++attempt) {
        if (session.GetAssets(assets) != Zorvic::ZORVIC_STATUS_OK) return false;
        if (std::all_of(show.begin(), show.end(),
                        [&](const DemoPreset& preset) { return FindAsset(assets, preset.File); }))
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
    }
    return false;
}

std::unordered_map<std::int32_t, Zorvic::PresetMark> MarksOf(const std::vector<DemoMark>& marks, int trtMS) {
    std::unordered_map<std::int32_t, Zorvic::PresetMark> result;
    for (std::int32_t id = 1; const DemoMark& mark : marks) {
        Zorvic::PresetMark& stored = result[id];
        stored.ID = id++;
        stored.TimeMS = trtMS - mark.ElapsedMS;
        stored.Name = mark.Name;
    }
    return result;
}

std::int32_t KeyOf(Zorvic::Session& session, const std::string& name) {
    std::vector<Zorvic::Preset> presets;
    session.GetPresets(presets);
    const auto found =
        std::find_if(presets.begin(), presets.end(), [&](const Zorvic::Preset& preset) { return preset.Name == name; });
    return found == presets.end() ? 0 : found->PK;
}

bool CreateDemoPreset(Zorvic::Session& session, const DemoPreset& demo, const Zorvic::Asset& asset,
                      std::int32_t order) {
    Zorvic::AssetMetadata metadata;
    if (session.ReadAssetMetadata(asset.FullPath, metadata) != Zorvic::ZORVIC_STATUS_OK) return false;

    using Orientation = Zorvic::CanvasOrientationEnum;
    Zorvic::CanvasInfo canvas;
    canvas.CanvasCfg.Orientation = {demo.Outputs > 1 ? Orientation::Landscape : Orientation::Single, nullptr};
    canvas.CanvasCfg.Dimensions = {1920 * static_cast<std::int32_t>(demo.Outputs), 1080};
    canvas.CanvasCfg.NumOutputs = demo.Outputs;
    canvas.SinkTypes = Zorvic::ZORVIC_SINK_KONA;
    const auto alignment = demo.Outputs > 1 ? Zorvic::ZORVIC_ECALIGN_STRETCHED : Zorvic::ZORVIC_ECALIGN_SCALED_CENTERED;
    if (Zorvic::AttachAssetToCanvas(alignment, asset.FullPath, metadata.Resolution, canvas) != Zorvic::ZORVIC_STATUS_OK)
        return false;

    Zorvic::Preset preset;
    preset.Name = demo.Name;
    preset.Notes = demo.Notes;
    preset.Canvases = {canvas};
    preset.Gotos = MarksOf(demo.Gotos, metadata.Duration);
    preset.Countdowns = MarksOf(demo.Countdowns, metadata.Duration);
    preset.Volume = std::vector<std::uint16_t>(2, 65535);
    preset.TabDisplayOrder[0] = Zorvic::TabOrdering(0, order);
    preset.Loop = demo.Loop;
    preset.Link = demo.LinkTo ? KeyOf(session, demo.LinkTo) : 0;
    preset.InPosition = demo.TrimInMS ? metadata.Duration - demo.TrimInMS : 0;
    preset.OutPosition = demo.OutMS;
    preset.FreezeAtEnd = demo.Freeze;
    return session.CreatePreset(preset) == Zorvic::ZORVIC_STATUS_OK;
}

int Fill(const std::string& host, const std::vector<DemoPreset>& show) {
    Zorvic::Session session(host, 1);
    std::vector<Zorvic::Preset> presets;
    if (!session.Connected() || session.GetPresets(presets) != Zorvic::ZORVIC_STATUS_OK) {
        std::cerr << "No unit answers at " << host << "\n";
        return 1;
    }
    if (!presets.empty()) return 0;

    std::vector<Zorvic::Asset> assets;
    if (!WaitForAssets(session, show, assets)) {
        std::cerr << "The unit at " << host << " lacks some of the demo media\n";
        return 1;
    }
    for (std::int32_t order = 0; const DemoPreset& demo : show) {
        if (!CreateDemoPreset(session, demo, *FindAsset(assets, demo.File), order++)) {
            std::cerr << "The unit at " << host << " refused the preset " << demo.Name << "\n";
            return 1;
        }
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string which = argc == 3 ? argv[2] : "";
    if (which != "left" && which != "right") {
        std::cerr << "usage: zorvic-demo-presets HOST left|right\n";
        return 2;
    }
    return Fill(argv[1], which == "left" ? StageLeft : StageRight);
}
