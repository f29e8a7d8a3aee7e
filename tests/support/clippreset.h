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

/// One with two canvases, marks, two tabs and a value in every field that an operator sets.
inline Zorvic::Preset FilledPreset() {
    Zorvic::Preset preset = ClipPreset("<b>Öpening & \"12 - Storm\"\t→</b>");
    preset.PK = 7;
    preset.Notes = "two\nlines & more";
    preset.Link = 12;
    preset.Loop = 5;
    preset.FadeInMS = 1;
    preset.FadeOutMS = 9;
    preset.InPosition = 9000;
    preset.OutPosition = -1;
    preset.Volume = {0, 65535, 7};
    for (const int id : {0, 3}) {
        preset.TabDisplayOrder[id] = Zorvic::TabOrdering(id, id + 4);
        preset.Gotos[id].TimeMS = preset.Countdowns[id].TimeMS = id * 1000;
    }
    preset.Canvases.push_back(preset.Canvases[0]);
    preset.Canvases[1].Index = 1;
    preset.Canvases[1].CanvasCfg.Dimensions = {1280, 720};
    preset.Canvases[1].Assets[0].FullPath = "C:\\Assets\\é.mov";
    preset.Canvases[1].Assets[0].PinnedCoords.X = -500;
    preset.Canvases[1].Assets[0].Hue = -0.29F;
    return preset;
}
