#include "render/outputs/output_surface.h"

#include "render/gl/gl_context.h"
#include "render/outputs/window_surfaces.h"

#include <GLES2/gl2.h>

#include <algorithm>
#include <optional>

namespace ZorvicRender {

namespace {

constexpr int PreviewWidth = 320;

class HeadlessSurfaces final : public Surfaces {
public:
    explicit HeadlessSurfaces(const zorvic::render::Setup& setup) {
        if (!setup.outputs().empty()) Context.emplace();
        for (const auto& output : setup.outputs())
            Outputs.push_back(MakeOffscreenSurface(output));
    }
    OutputSurface& At(std::size_t output) override { return *Outputs[output]; }

private:
    std::optional<HeadlessContext> Context;  ///< where there is something to draw
    std::vector<std::unique_ptr<OutputSurface>> Outputs;
};

class OffscreenSurface final : public OutputSurface {
public:
    explicit OffscreenSurface(PixelSize size) : Pixels(size) {}
    void Bind() override { Pixels.Bind(); }
    PixelSize Size() const override { return Pixels.Size(); }
    void Present() override { glFinish(); }

private:
    Canvas Pixels;
};

}  // namespace

std::unique_ptr<OutputSurface> MakeOffscreenSurface(const zorvic::render::Output& output) {
    return std::make_unique<OffscreenSurface>(
        PreviewSize({static_cast<int>(output.width()), static_cast<int>(output.height())}));
}

PixelSize PreviewSize(PixelSize shape) {
    const int width = std::min(PreviewWidth, shape.Width);
    return {width, std::max(1, width * shape.Height / shape.Width)};
}

Area FitShape(PixelSize shape, PixelSize surface) {
    const double scale =
        std::min(static_cast<double>(surface.Width) / shape.Width, static_cast<double>(surface.Height) / shape.Height);
    const double width = shape.Width * scale;
    const double height = shape.Height * scale;
    return {(surface.Width - width) / 2, (surface.Height - height) / 2, width, height};
}

std::unique_ptr<Surfaces> OpenSurfaces(const zorvic::render::Setup& setup) {
    const bool windows = std::any_of(setup.outputs().begin(), setup.outputs().end(), [](const auto& output) {
        return output.sink() != zorvic::render::Output::SINK_OFFSCREEN;
    });
    if (windows) return std::make_unique<WindowSurfaces>(setup);
    return std::make_unique<HeadlessSurfaces>(setup);
}

}  // namespace ZorvicRender
