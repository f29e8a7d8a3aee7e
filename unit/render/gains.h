#pragma once

#include "render/scene.h"

namespace ZorvicRender {

/// How much of a preset is seen: light is lost towards black, opacity towards what lies below. Sound follows both.
struct Gains {
    float Light = 1;
    float Opacity = 1;
};

/// Of this pass at this position in the media.
Gains GainsAt(const zorvic::v1::Preset& preset, const Span& span, Nanoseconds position);

}  // namespace ZorvicRender
