#pragma once

#include "asset_catalog.h"
#include "playback/trim.h"

#include <zorvic/v1/unit.pb.h>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace ZorvicUnit {

/// What stands on the left and right meter (0 to 100).
using StereoLevels = std::array<std::int32_t, 2>;

/// The loudest of the assets (null: no sound) at this position, scaled by the preset's volume and its fades.
StereoLevels LevelsAt(const zorvic::v1::Preset& preset, const std::vector<std::shared_ptr<const Envelope>>& envelopes,
                      const PassPosition& position);

}  // namespace ZorvicUnit
