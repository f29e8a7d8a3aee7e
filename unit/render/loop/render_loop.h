#pragma once

#include "render/gl/compositor.h"
#include "render/loop/wire.h"
#include "render/outputs/output_surface.h"
#include "render/stage/stage.h"

#include <render.pb.h>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace ZorvicRender {

/// Shows what plays, refresh after refresh, on all outputs, and tells the unit how it goes. For the main thread.
class RenderLoop {
public:
    /// Whether the sound of a layer can begin here.
    using SoundIsReady = std::function<bool(const Layer&, Nanoseconds position)>;
    using SoundFigures = std::function<zorvic::render::AudioFigures()>;

    /// Opens the outputs. Throws Fault, naming the option, when one can not be opened.
    RenderLoop(const zorvic::render::Setup& setup, Wire& unit);

    /// Until the unit is gone.
    void Run(const SoundIsReady& soundIsReady, const SoundFigures& soundFigures);

private:
    struct Output {
        std::uint32_t Number = 1;
        PixelSize Shape;
        DrawList Shown{};
        std::uint64_t Presented = 0;
        std::uint64_t Late = 0;
    };

    TimePoint NextTick(TimePoint after) const;
    std::shared_ptr<const Scene> AwaitScene(TimePoint until, TimePoint middle);
    void ShowAll(TimePoint lightUp);
    std::optional<TimePoint> Show(std::size_t number, TimePoint lightUp);
    void Report(const Scene& scene, TimePoint lightUp, const SoundIsReady& soundIsReady,
                const SoundFigures& soundFigures);
    void SendFirstFrames(const Scene& scene, TimePoint lightUp, const SoundIsReady& soundIsReady);
    void SendRunFigures(TimePoint lightUp);
    void SendBeat(const SoundFigures& soundFigures);
    void SendPreview(TimePoint lightUp);
    std::vector<StageOutput> StageOutputs() const;

    Wire& Unit;
    const Nanoseconds Tick;
    Nanoseconds Lead;  ///< how long before its moment the drawing of a picture begins
    std::unique_ptr<Surfaces> Targets;
    std::vector<Output> Outputs;
    std::optional<Compositor> Painter;  ///< none without outputs
    Stage Pictures;
    std::optional<Canvas> Small;  ///< for the preview
    std::vector<std::pair<RunId, Nanoseconds>> Ready;
    bool ReadySent = false;
    TimePoint LastBeat{};
    TimePoint LastPreview{};
};

}  // namespace ZorvicRender
