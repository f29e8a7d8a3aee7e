#pragma once

#include "render/scene.h"

namespace ZorvicRender {

/// How much of a layer is left by its fades, 0 to 1.
struct Gains {
    float Light = 1;    ///< fades to black
    float Opacity = 1;  ///< fades to what lies below
};

Gains GainsAt(const zorvic::v1::Preset& preset, const Span& span, Nanoseconds position);

}  // namespace ZorvicRender
