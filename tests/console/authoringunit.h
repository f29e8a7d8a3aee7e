#pragma once

#include "metadata_cache.h"
#include "sessionmanager.h"
#include "support/fakezorvic.h"

#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <string>

constexpr const char* Wide = "C:\\Assets\\wide.mov";     // 640x300
constexpr const char* Full = "C:\\Assets\\full.mov";     // 1920x1080
constexpr const char* Sound = "C:\\Assets\\sound.wav";   // no picture
constexpr const char* Gone = "C:\\Assets\\<b>gone.mov";  // not on the unit

inline void AddAssets(FakeZorvic::Unit& unit) {
    const std::map<std::string, Zorvic::Size2D> sizes = {{Wide, {640, 300}}, {Full, {1920, 1080}}, {Sound, {0, 0}}};
    for (const auto& [path, size] : sizes) {
        Zorvic::Asset& asset = unit.Assets.emplace_back();
        asset.FullPath = path;
        asset.Checksum = "checksum";
        asset.Status = Zorvic::ZORVIC_ASSETSTATE_READY;
        unit.Metadata[path].FilePath = path;
        unit.Metadata[path].Resolution = size;
    }
}

inline Zorvic::CanvasInfo Canvas(std::uint32_t index, const Zorvic::Size2D& size = {1920, 1080},
                                 std::uint32_t outputs = 1) {
    using Zorvic::CanvasOrientationEnum;
    Zorvic::CanvasInfo canvas;
    canvas.Index = index;
    canvas.CanvasCfg.Dimensions = size;
    canvas.CanvasCfg.NumOutputs = outputs;
    canvas.CanvasCfg.Orientation = {outputs == 1 ? CanvasOrientationEnum::Single : CanvasOrientationEnum::Landscape,
                                    nullptr};
    return canvas;
}
/// The same with an asset of 640x300 on it.
inline Zorvic::CanvasInfo Canvas(const std::string& path, Zorvic::EasyCanvasAlignment alignment,
                                 Zorvic::CanvasInfo canvas = Canvas(0)) {
    Zorvic::AttachAssetToCanvas(alignment, path, {640, 300}, canvas);
    return canvas;
}
inline Zorvic::Preset PresetWith(const std::string& path, Zorvic::EasyCanvasAlignment alignment) {
    Zorvic::Preset preset;
    preset.PK = 7;
    preset.Name = "Act";
    preset.Canvases = {Canvas(path, alignment)};
    return preset;
}
inline Zorvic::Cube Placed(Zorvic::EasyCanvasAlignment alignment) {
    return Canvas("any", alignment).Assets.at(0).PinnedCoords;
}

/// A connected unit with a few assets, and what the authoring windows write to the log meanwhile.
class AuthoringTest : public testing::Test {
protected:
    AuthoringTest() {
        testing::internal::CaptureStderr();
        AddAssets(Unit);
        Unit.Hardware.Resolutions = {Zorvic::ZORVIC_RES_1080P, Zorvic::ZORVIC_RES_1080P, Zorvic::ZORVIC_RES_720P,
                                     Zorvic::ZORVIC_RES_2160P};
        const std::unique_ptr<SessionHandle> handle(Registry.CreateSessionByIP("unit"));
    }
    ~AuthoringTest() override {
        testing::internal::GetCapturedStderr();
        FakeZorvic::Reset();
    }

    bool Logged(const std::string& text) {
        Log += testing::internal::GetCapturedStderr();
        testing::internal::CaptureStderr();
        return Log.find(text) != std::string::npos;
    }

    FakeZorvic::Unit& Unit = FakeZorvic::AddUnit("unit", "GUID");
    SessionManager Registry;
    MetadataCache Cache{"GUID"};
    std::string Log;
};
