#pragma once

#include "asset_catalog.h"

#include <zorvic/v1/unit.pb.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

namespace ZorvicUnit {

/// What stands on the left and right meter (0 to 100).
using StereoLevels = std::array<std::int32_t, 2>;

/// The part of a preset that plays, as elapsed time from the start of its assets. The wire counts the other way
/// (remaining time); elapsed time stays true when the running time changes under a playing preset.
struct Trim {
    std::chrono::milliseconds Start{0};
    std::chrono::milliseconds End{0};
    std::chrono::milliseconds Length() const { return End - Start; }
};

/// Where a pass of a preset is.
struct PassPosition {
    Trim Window;
    std::chrono::milliseconds Elapsed{0};  ///< from the start of the assets
    bool First = false;                    ///< fades in
    bool Last = false;                     ///< fades out
};

/// The loudest of the assets (null: no sound) at this position, scaled by the preset's volume and its fades.
StereoLevels LevelsAt(const zorvic::v1::Preset& preset, const std::vector<std::shared_ptr<const Envelope>>& envelopes,
                      const PassPosition& position);

}  // namespace ZorvicUnit
