#include "preset_fields.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>

namespace Zorvic::Internal {
namespace {

using std::to_string;
using Marks = std::unordered_map<std::int32_t, PresetMark>;

/// "1:02:03.456"
std::string TimeText(std::int32_t timeMS) {
    const std::int64_t whole = timeMS;
    const std::int64_t ms = whole < 0 ? -whole : whole;
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%s%" PRId64 ":%02d:%02d.%03d", whole < 0 ? "-" : "", ms / 3'600'000,
                  static_cast<int>(ms / 60'000 % 60), static_cast<int>(ms / 1000 % 60), static_cast<int>(ms % 1000));
    return text.data();
}

/// With as many digits as it takes to tell it from every other value.
std::string NumberText(float value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.9g", static_cast<double>(value == 0 ? 0 : value));
    return text.data();
}

std::string SizeText(const Size2D& size) {
    return to_string(size.Width) + 'x' + to_string(size.Height);
}

std::string PlaceText(const Coords2D& at) {
    return to_string(at.X) + ',' + to_string(at.Y);
}

std::string OrientationText(const CanvasOrientation& orientation) {
    static const std::array<const char*, 6> names = {"Invalid",  "Custom",    "Single",
                                                     "Standard", "Landscape", "Portrait"};
    const auto number = static_cast<std::size_t>(orientation.Orientation);
    const std::string name = number < names.size() ? names.at(number) : to_string(number);
    return orientation.CustomCoords == Coords2D{} ? name : name + " at " + PlaceText(orientation.CustomCoords);
}

std::string CanvasText(const CanvasInfo& canvas) {
    const auto& config = canvas.CanvasCfg;
    return SizeText(config.Dimensions) + ", " + OrientationText(config.Orientation) +
           ", outputs: " + to_string(config.NumOutputs) + ", sinks: " + to_string(canvas.SinkTypes);
}

std::string AssetText(const PinnedAsset& asset) {
    const Cube& at = asset.PinnedCoords;
    std::string text = asset.FullPath + ", " + SizeText(at) + " at " + PlaceText(at) + ", level " + to_string(at.Z);
    if (at.Depth != 1) text += ", depth " + to_string(at.Depth);
    const std::pair<const char*, float> values[] = {{"hue", asset.Hue},
                                                    {"saturation", asset.Saturation},
                                                    {"brightness", asset.Brightness},
                                                    {"contrast", asset.Contrast}};
    for (const auto& [name, value] : values)
        if (value != 0) text += std::string(", ") + name + ' ' + NumberText(value);
    return text;
}

void AddCanvases(PresetFields& fields, const Preset& preset) {
    for (std::size_t i = 0; i < preset.Canvases.size(); ++i) {
        const CanvasInfo& canvas = preset.Canvases[i];
        const std::string name = "Canvas " + to_string(i + 1);
        fields.Add(name, to_string(canvas.Index) + ": " + CanvasText(canvas));
        for (std::size_t number = 0; number < canvas.Assets.size(); ++number)
            fields.Add(name + ", media " + to_string(number + 1), AssetText(canvas.Assets[number]));
    }
}

void AddMarks(PresetFields& fields, const char* kind, const Marks& marks) {
    const std::map<std::int32_t, PresetMark> sorted(marks.begin(), marks.end());
    for (const auto& [id, mark] : sorted)
        fields.Add(kind + to_string(id), TimeText(mark.TimeMS) + ' ' + mark.Name);
}

std::string LinkText(const Preset& preset, const PresetNames& names) {
    const auto found = names.find(preset.Link);
    if (preset.Link <= 0 || found == names.end()) return {};
    const auto& [name, number] = found->second.first;
    return number == 0 ? '"' + name + '"' : '"' + name + "\", number " + to_string(number + 1);
}

std::string VolumeText(const Preset& preset) {
    std::string text;
    for (const std::uint16_t level : preset.Volume)
        text += (text.empty() ? "" : " ") + to_string(level);
    return text;
}

}  // namespace

PresetNames NamedPresets(const std::vector<Preset>& presets) {
    PresetNames names;
    std::map<std::string, int> seen;
    std::vector<const Preset*> sorted;
    std::transform(presets.begin(), presets.end(), std::back_inserter(sorted), [](const Preset& p) { return &p; });
    std::sort(sorted.begin(), sorted.end(), [](const Preset* a, const Preset* b) { return a->PK < b->PK; });
    for (const Preset* preset : sorted)
        names[preset->PK] = {{preset->Name, seen[preset->Name]++}, preset};
    return names;
}

void PresetFields::Add(const std::string& name, std::string text) {
    Names.push_back(name);
    Texts[name] = std::move(text);
}

PresetFields FieldsOf(const Preset& preset, const PresetNames& names) {
    PresetFields fields;
    fields.Add("Notes", preset.Notes);
    fields.Add("Colour", preset.Color);
    AddCanvases(fields, preset);
    AddMarks(fields, "Goto ", preset.Gotos);
    AddMarks(fields, "Countdown ", preset.Countdowns);
    fields.Add("Volume", VolumeText(preset));
    for (const auto& [id, tab] : preset.TabDisplayOrder)
        fields.Add(id == 0 ? "Place in the list" : "Place in tab " + to_string(id), to_string(tab.Index));
    fields.Add("Loop", preset.Loop == -1 ? "without end" : to_string(preset.Loop));
    fields.Add("Link", LinkText(preset, names));
    const std::pair<const char*, std::int32_t> times[] = {
        {"Dissolve in", preset.DissolveInMS}, {"Dissolve out", preset.DissolveOutMS},
        {"Fade in", preset.FadeInMS},         {"Fade out", preset.FadeOutMS},
        {"In point", preset.InPosition},      {"Out point", preset.OutPosition}};
    for (const auto& [name, time] : times)
        fields.Add(name, TimeText(time));
    fields.Add("Dissolve", to_string(preset.Dissolve));
    fields.Add("Hold at the end", preset.FreezeAtEnd ? "yes" : "no");
    return fields;
}

}  // namespace Zorvic::Internal
