#pragma once

#include <render.pb.h>
#include <zorvic/v1/unit.pb.h>

namespace ZorvicUnit {

/// What the renderer tells of itself, as the protocol shows it.
zorvic::v1::Figures FiguresOf(const zorvic::render::Beat& beat);

}  // namespace ZorvicUnit
