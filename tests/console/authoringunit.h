#pragma once

#include "metadata_cache.h"
#include "sessionmanager.h"
#include "support/fakezorvic.h"

#include <gmock/gmock.h>

#include <iostream>
#include <memory>
#include <sstream>
#include <string>

/// A connected unit with a few assets, and what the authoring windows write to the log meanwhile.
class AuthoringTest : public testing::Test {
protected:
    static constexpr const char* Wide = "C:\\Assets\\wide.mov";     // 640x300
    static constexpr const char* Full = "C:\\Assets\\full.mov";     // 1920x1080
    static constexpr const char* Sound = "C:\\Assets\\sound.wav";   // no picture
    static constexpr const char* Gone = "C:\\Assets\\<b>gone.mov";  // not on the unit

    AuthoringTest() {
        OldBuffer = std::cerr.rdbuf(LogText.rdbuf());
        AddAsset(Wide, {640, 300});
        AddAsset(Full, {1920, 1080});
        AddAsset(Sound, {0, 0});
        Unit.Hardware.Resolutions = {Zorvic::ZORVIC_RES_1080P, Zorvic::ZORVIC_RES_1080P, Zorvic::ZORVIC_RES_720P,
                                     Zorvic::ZORVIC_RES_2160P};
        const std::unique_ptr<SessionHandle> handle(Registry.CreateSessionByIP("unit"));
    }
    ~AuthoringTest() override {
        std::cerr.rdbuf(OldBuffer);
        FakeZorvic::Reset();
    }

    void AddAsset(const std::string& path, const Zorvic::Size2D& size) {
        Zorvic::Asset asset;
        asset.FullPath = path;
        asset.Checksum = "checksum";
        asset.Status = Zorvic::ZORVIC_ASSETSTATE_READY;
        Unit.Assets.push_back(asset);
        Zorvic::AssetMetadata& metadata = Unit.Metadata[path];
        metadata.FilePath = path;
        metadata.Resolution = size;
    }

    static Zorvic::CanvasInfo Canvas(std::uint32_t index, const Zorvic::Size2D& size = {1920, 1080},
                                     std::uint32_t outputs = 1) {
        Zorvic::CanvasInfo canvas;
        canvas.Index = index;
        canvas.CanvasCfg.Dimensions = size;
        canvas.CanvasCfg.NumOutputs = outputs;
        canvas.CanvasCfg.Orientation = {
            outputs == 1 ? Zorvic::CanvasOrientationEnum::Single : Zorvic::CanvasOrientationEnum::Landscape, nullptr};
        return canvas;
    }
    /// A preset whose first canvas shows the asset, placed like this.
    static Zorvic::Preset PresetWith(const std::string& path, Zorvic::EasyCanvasAlignment alignment,
                                     const Zorvic::Size2D& assetSize = {640, 300}) {
        Zorvic::Preset preset;
        preset.PK = 7;
        preset.Name = "Act";
        preset.Canvases = {Canvas(0)};
        Zorvic::AttachAssetToCanvas(alignment, path, assetSize, preset.Canvases[0]);
        return preset;
    }
    static Zorvic::Cube Placed(Zorvic::EasyCanvasAlignment alignment, const Zorvic::Size2D& assetSize = {640, 300}) {
        return PresetWith("any", alignment, assetSize).Canvases.at(0).Assets.at(0).PinnedCoords;
    }

    bool Logged(const std::string& text) const { return LogText.str().find(text) != std::string::npos; }

    FakeZorvic::Unit& Unit = FakeZorvic::AddUnit("unit", "GUID");
    SessionManager Registry;
    MetadataCache Cache{"GUID"};
    std::ostringstream LogText;

private:
    std::streambuf* OldBuffer;
};
