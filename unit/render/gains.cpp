#include "render/gains.h"

#include "playback/fades.h"

namespace ZorvicRender {

Gains GainsAt(const zorvic::v1::Preset& preset, const Span& span, Nanoseconds position) {
    const auto fades = ZorvicUnit::FadesAt(preset, {.Window = {span.WindowStart, span.WindowEnd},
                                                    .Elapsed = position,
                                                    .First = span.FirstPass,
                                                    .Last = span.LastPass});
    return {static_cast<float>(fades.Light), static_cast<float>(fades.Opacity)};
}

}  // namespace ZorvicRender
