#pragma once

#include "render/outputs/output_surface.h"

#include <memory>
#include <vector>

using SDL_GLContext = void*;

namespace ZorvicRender {

std::unique_ptr<OutputSurface> MakeOffscreenSurface(const zorvic::render::Output& output);

/// Outputs of which at least one is a window or fills a display; all share one graphics context.
class WindowSurfaces final : public Surfaces {
public:
    /// Throws Fault, naming the option, when one can not be opened.
    explicit WindowSurfaces(const zorvic::render::Setup& setup);
    ~WindowSurfaces() override;

    OutputSurface& At(std::size_t output) override { return *Outputs[output]; }
    void PumpEvents() override;

private:
    class Window;

    SDL_GLContext Context = nullptr;
    std::vector<std::unique_ptr<OutputSurface>> Outputs;
    std::vector<Window*> Windows;  ///< those of Outputs that are
};

}  // namespace ZorvicRender
