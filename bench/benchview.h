#pragma once

#include "sessionmanager.h"
#include "style.h"
#include "support/fakezorvic.h"
#include "zorvicview.h"

#include <benchmark/benchmark.h>

#include <QApplication>

#include <iostream>
#include <memory>
#include <string>

/// A visible unit view on a scripted unit with `count` presets, the first of them selected.
class BenchView {
public:
    explicit BenchView(int count) {
        for (int i = 0; i < count; ++i) {
            Zorvic::Preset preset;
            preset.Name = "Preset number " + std::to_string(i);
            preset.Notes = i % 3 == 0 ? "wait for the call" : "";
            preset.Volume.assign(16, 65535);
            preset.Canvases.resize(1);
            preset.Canvases[0].CanvasCfg.NumOutputs = 1;
            preset.Canvases[0].CanvasCfg.Dimensions = {1920, 1080};
            preset.Canvases[0].CanvasCfg.Orientation.Orientation = Zorvic::CanvasOrientationEnum::Single;
            Zorvic::AttachAssetToCanvas(Zorvic::ZORVIC_ECALIGN_CENTERED, "C:\\Assets\\clip.mov", {1920, 1080},
                                        preset.Canvases[0]);
            Unit.AddPreset(preset, 90000);
        }
        Unit.States[0].IsSelected = true;
        delete Sessions.CreateSessionByIP("host");
        View = std::make_unique<ZorvicView>("guid", "host");
        View->AcceptPresetStates();
        View->resize(1280, 720);
        View->show();
        QApplication::processEvents();
    }

    FakeZorvic::Unit& Unit = (FakeZorvic::Reset(), FakeZorvic::AddUnit("host", "guid"));
    SessionManager Sessions;
    std::unique_ptr<ZorvicView> View;
};

/// Runs the program's benchmarks on the offscreen platform, in the console's own look.
inline int RunViewBenchmarks(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    std::cerr.rdbuf(nullptr);  // log lines would be measured with the rest
    QApplication application(argc, argv);
    TryLoadStyle(application);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
