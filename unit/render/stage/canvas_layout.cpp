#include "render/stage/canvas_layout.h"

#include <zorvic/enums.h>

#include <algorithm>
#include <vector>

namespace ZorvicRender {

namespace {

std::vector<const zorvic::v1::Canvas*> InOrder(const zorvic::v1::Preset& preset) {
    std::vector<const zorvic::v1::Canvas*> canvases;
    for (const auto& canvas : preset.canvases())
        canvases.push_back(&canvas);
    std::ranges::stable_sort(canvases, {}, [](const auto* canvas) { return canvas->index(); });
    return canvases;
}

CanvasView Cut(const zorvic::v1::Canvas& canvas, std::uint32_t place, Area whole) {
    const double count = canvas.num_outputs();
    Area part = whole;
    switch (static_cast<Zorvic::CanvasOrientationEnum>(canvas.orientation())) {
        case Zorvic::CanvasOrientationEnum::Landscape:
            part.Width = whole.Width / count;
            part.X = part.Width * place;
            break;
        case Zorvic::CanvasOrientationEnum::Portrait:
            part.Height = whole.Height / count;
            part.Y = part.Height * place;
            break;
        default:
            break;
    }
    return {&canvas, part};
}

}  // namespace

Area CanvasView::Place(const zorvic::v1::PinnedAsset& asset) const {
    return {.X = (asset.x() - Part.X) / Part.Width,
            .Y = (asset.y() - Part.Y) / Part.Height,
            .Width = asset.width() / Part.Width,
            .Height = asset.height() / Part.Height};
}

std::optional<CanvasView> ViewOf(const zorvic::v1::Preset& preset, std::uint32_t output, double outputWidth,
                                 double outputHeight) {
    std::uint64_t taken = 0;  // counts of outputs may be anything
    for (const auto* canvas : InOrder(preset)) {
        const std::uint64_t first = taken + 1;
        taken += canvas->num_outputs();
        if (output < first || output > taken) continue;
        const bool sized = canvas->width() > 0 && canvas->height() > 0;
        const Area whole{.Width = sized ? canvas->width() : outputWidth,
                         .Height = sized ? canvas->height() : outputHeight};
        return Cut(*canvas, static_cast<std::uint32_t>(output - first), whole);
    }
    return std::nullopt;
}

}  // namespace ZorvicRender
