#pragma once

#include <zorvic/zorvic.h>

#include <string>

/// A preset that fills one output of full HD with C:\Assets\clip.mov.
inline Zorvic::Preset ClipPreset(const std::string& name) {
    Zorvic::Preset preset;
    preset.Name = name;
    auto& canvas = preset.Canvases.emplace_back();
    canvas.CanvasCfg.Orientation.Orientation = Zorvic::CanvasOrientationEnum::Single;
    canvas.CanvasCfg.Dimensions = {1920, 1080};
    canvas.CanvasCfg.NumOutputs = 1;
    Zorvic::AttachAssetToCanvas(Zorvic::ZORVIC_ECALIGN_STRETCHED, "C:\\Assets\\clip.mov", {1920, 1080}, canvas);
    preset.Volume = {65535, 65535};
    return preset;
}
