#pragma once

#include "playback/trim.h"

#include <zorvic/v1/unit.pb.h>

namespace ZorvicUnit {

/// How much of a preset is seen and heard, from 0 to 1. Clock and renderer both ask here, so that meters, picture and
/// sound agree; it knows nothing of either.
struct FadeGains {
    double Light = 1;    ///< of the picture: fades to black
    double Opacity = 1;  ///< against what lies below: dissolves
    double Sound() const { return Light * Opacity; }
};

FadeGains FadesAt(const zorvic::v1::Preset& preset, const PassPosition& position);

}  // namespace ZorvicUnit
