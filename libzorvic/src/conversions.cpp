#include "conversions.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Zorvic::Internal {
namespace {

using Marks = std::unordered_map<std::int32_t, PresetMark>;
using WireMarks = google::protobuf::RepeatedPtrField<Wire::Mark>;

PinnedAsset FromWire(const Wire::PinnedAsset& wire) {
    PinnedAsset asset;
    asset.FullPath = wire.full_path();
    asset.PinnedCoords.Width = wire.width();
    asset.PinnedCoords.Height = wire.height();
    asset.PinnedCoords.X = wire.x();
    asset.PinnedCoords.Y = wire.y();
    asset.PinnedCoords.Z = wire.z();
    asset.PinnedCoords.Depth = wire.depth();
    asset.Hue = wire.hue();
    asset.Saturation = wire.saturation();
    asset.Brightness = wire.brightness();
    asset.Contrast = wire.contrast();
    return asset;
}

CanvasInfo FromWire(const Wire::Canvas& wire) {
    CanvasInfo canvas;
    const Coords2D custom{wire.custom_x(), wire.custom_y()};
    canvas.CanvasCfg.Orientation = CanvasOrientation(static_cast<CanvasOrientationEnum>(wire.orientation()), &custom);
    canvas.CanvasCfg.Dimensions = {wire.width(), wire.height()};
    canvas.CanvasCfg.NumOutputs = wire.num_outputs();
    canvas.SinkTypes = static_cast<SinkType>(wire.sink_types());
    canvas.Index = wire.index();
    canvas.Assets.reserve(static_cast<std::size_t>(wire.assets_size()));
    for (const auto& asset : wire.assets())
        canvas.Assets.push_back(FromWire(asset));
    return canvas;
}

Marks FromWire(const WireMarks& wire) {
    Marks marks;
    for (const auto& from : wire) {
        PresetMark& mark = marks[from.id()];
        mark.ID = from.id();
        mark.TimeMS = from.time_ms();
        mark.Name = from.name();
    }
    return marks;
}

void ToWire(const PinnedAsset& asset, Wire::PinnedAsset& wire) {
    wire.set_full_path(asset.FullPath);
    wire.set_width(asset.PinnedCoords.Width);
    wire.set_height(asset.PinnedCoords.Height);
    wire.set_x(asset.PinnedCoords.X);
    wire.set_y(asset.PinnedCoords.Y);
    wire.set_z(asset.PinnedCoords.Z);
    wire.set_depth(asset.PinnedCoords.Depth);
    wire.set_hue(asset.Hue);
    wire.set_saturation(asset.Saturation);
    wire.set_brightness(asset.Brightness);
    wire.set_contrast(asset.Contrast);
}

void ToWire(const CanvasInfo& canvas, Wire::Canvas& wire) {
    const ProjectorCanvasConfig& config = canvas.CanvasCfg;
    wire.set_index(canvas.Index);
    wire.set_orientation(static_cast<std::int32_t>(config.Orientation.Orientation));
    wire.set_custom_x(config.Orientation.CustomCoords.X);
    wire.set_custom_y(config.Orientation.CustomCoords.Y);
    wire.set_width(config.Dimensions.Width);
    wire.set_height(config.Dimensions.Height);
    wire.set_num_outputs(config.NumOutputs);
    wire.set_sink_types(canvas.SinkTypes);
    for (const PinnedAsset& asset : canvas.Assets)
        ToWire(asset, *wire.add_assets());
}

// The key is what makes a mark unique in its preset, so it is what travels; a record's own ID is a copy of it.
void ToWire(const Marks& marks, WireMarks& wire) {
    for (const auto& [id, mark] : marks) {
        Wire::Mark& to = *wire.Add();
        to.set_id(id);
        to.set_time_ms(mark.TimeMS);
        to.set_name(mark.Name);
    }
    std::sort(wire.begin(), wire.end(), [](const auto& a, const auto& b) { return a.id() < b.id(); });
}

}  // namespace

Preset FromWire(const Wire::Preset& wire) {
    Preset preset;
    preset.PK = wire.pk();
    preset.Name = wire.name();
    preset.Notes = wire.notes();
    preset.Color = wire.color();
    preset.Canvases.reserve(static_cast<std::size_t>(wire.canvases_size()));
    for (const auto& canvas : wire.canvases())
        preset.Canvases.push_back(FromWire(canvas));
    preset.Gotos = FromWire(wire.gotos());
    preset.Countdowns = FromWire(wire.countdowns());
    constexpr std::uint32_t loudest = std::numeric_limits<std::uint16_t>::max();
    for (const std::uint32_t level : wire.volume())
        preset.Volume.push_back(static_cast<std::uint16_t>(std::min(level, loudest)));
    for (const auto& tab : wire.tab_order())
        preset.TabDisplayOrder[tab.tab_id()] = TabOrdering(tab.tab_id(), tab.index());
    preset.Loop = wire.loop();
    preset.Link = wire.link();
    preset.DissolveInMS = wire.dissolve_in_ms();
    preset.DissolveOutMS = wire.dissolve_out_ms();
    preset.FadeInMS = wire.fade_in_ms();
    preset.FadeOutMS = wire.fade_out_ms();
    preset.InPosition = wire.in_position();
    preset.OutPosition = wire.out_position();
    preset.Dissolve = wire.dissolve();
    preset.FreezeAtEnd = wire.freeze_at_end();
    return preset;
}

Wire::Preset ToWire(const Preset& preset) {
    Wire::Preset wire;
    wire.set_pk(preset.PK);
    wire.set_name(preset.Name);
    wire.set_notes(preset.Notes);
    wire.set_color(preset.Color);
    for (const CanvasInfo& canvas : preset.Canvases)
        ToWire(canvas, *wire.add_canvases());
    ToWire(preset.Gotos, *wire.mutable_gotos());
    ToWire(preset.Countdowns, *wire.mutable_countdowns());
    wire.mutable_volume()->Assign(preset.Volume.begin(), preset.Volume.end());
    for (const auto& [id, tab] : preset.TabDisplayOrder) {
        Wire::TabOrdering& to = *wire.add_tab_order();
        to.set_tab_id(id);
        to.set_index(tab.Index);
    }
    wire.set_loop(preset.Loop);
    wire.set_link(preset.Link);
    wire.set_dissolve_in_ms(preset.DissolveInMS);
    wire.set_dissolve_out_ms(preset.DissolveOutMS);
    wire.set_fade_in_ms(preset.FadeInMS);
    wire.set_fade_out_ms(preset.FadeOutMS);
    wire.set_in_position(preset.InPosition);
    wire.set_out_position(preset.OutPosition);
    wire.set_dissolve(preset.Dissolve);
    wire.set_freeze_at_end(preset.FreezeAtEnd);
    return wire;
}

PresetState FromWire(const Wire::PresetState& wire) {
    PresetState state;
    state.PK = wire.pk();
    state.TRT = wire.trt();
    state.CurrentLoop = wire.current_loop();
    state.IsPlaying = wire.playing();
    state.IsPaused = wire.paused();
    state.IsSelected = wire.selected();
    return state;
}

TimeCode FromWire(const Wire::TimeCode& wire) {
    TimeCode timeCode;
    timeCode.PK = wire.pk();
    timeCode.Time = wire.time_ms();
    timeCode.VUData.assign(wire.levels().begin(), wire.levels().end());
    return timeCode;
}

KonaHardwareState FromWire(const Wire::HardwareState& wire) {
    KonaHardwareState state;
    const std::size_t outputs = std::min(state.Resolutions.size(), static_cast<std::size_t>(wire.resolutions_size()));
    for (std::size_t i = 0; i < outputs; ++i)
        state.Resolutions.at(i) = static_cast<ResolutionMode>(wire.resolutions(static_cast<int>(i)));
    state.RefreshRate = static_cast<RefreshMode>(wire.refresh_rate());
    state.HDRMode = static_cast<Zorvic::HDRMode>(wire.hdr_mode());
    state.EOTFSetting = static_cast<EOTFMode>(wire.eotf());
    state.AudioConfig = static_cast<KonaAudioConfig>(wire.audio_config());
    state.ConstLumin = wire.const_lumin();
    return state;
}

Asset FromWire(const Wire::Asset& wire) {
    Asset asset;
    asset.FullPath = wire.full_path();
    asset.Checksum = wire.checksum();
    asset.LastModified = wire.last_modified();
    asset.TotalSize = wire.total_size();
    asset.CurrentSize = wire.current_size();
    asset.Status = static_cast<AssetState>(wire.status());
    return asset;
}

AssetMetadata FromWire(const Wire::AssetMetadata& wire) {
    AssetMetadata metadata;
    metadata.FilePath = wire.file_path();
    metadata.VideoFormat = wire.video_format();
    metadata.AudioFormat = wire.audio_format();
    metadata.ContainerFormat = wire.container_format();
    metadata.Resolution = {wire.width(), wire.height()};
    metadata.TotalSize = wire.total_size();
    metadata.VBitrate = wire.video_bitrate();
    metadata.ABitrate = wire.audio_bitrate();
    metadata.ASampleRate = wire.sample_rate();
    metadata.AChannels = wire.channels();
    metadata.FPS = wire.fps();
    metadata.Duration = wire.duration_ms();
    return metadata;
}

Drive FromWire(const Wire::Drive& wire) {
    Drive drive;
    drive.Mountpoint = wire.mountpoint();
    drive.Total = wire.total();
    drive.Used = wire.used();
    drive.Free = wire.free();
    drive.IsExternal = wire.external();
    return drive;
}

ExternalAsset FromWire(const Wire::DirectoryEntry& wire) {
    ExternalAsset entry;
    entry.Filename = wire.filename();
    entry.FullPath = wire.full_path();
    entry.FileSize = wire.size();
    entry.IsDirectory = wire.directory();
    return entry;
}

float StoredPictureValue(float value) {
    constexpr double tolerance = 1e-6;
    const double magnitude = std::abs(static_cast<double>(value));
    const double hundredths = std::round(magnitude * 100.0);
    if (!(std::abs(magnitude - hundredths / 100.0) <= tolerance)) return value;  // NaN and infinity too
    float stored = static_cast<float>(hundredths / 100.0);
    // Exact: a float times 100 fits a double.
    if (static_cast<double>(stored) * 100.0 < hundredths) stored = std::nextafter(stored, 2 * stored);
    return value < 0 && stored > 0 ? -stored : stored;
}

void RoundPictureValues(Wire::Preset& preset) {
    for (auto& canvas : *preset.mutable_canvases()) {
        for (auto& asset : *canvas.mutable_assets()) {
            asset.set_hue(StoredPictureValue(asset.hue()));
            asset.set_saturation(StoredPictureValue(asset.saturation()));
            asset.set_brightness(StoredPictureValue(asset.brightness()));
            asset.set_contrast(StoredPictureValue(asset.contrast()));
        }
    }
}

}  // namespace Zorvic::Internal
