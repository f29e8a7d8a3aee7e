#pragma once

#include "media_catalog.h"
#include "playback/trim.h"

#include <zorvic/v1/unit.pb.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace ZorvicUnit {

/// What stands on the left and right meter (0 to 100).
using StereoLevels = std::array<std::int32_t, 2>;

/// Where a pass of a preset is.
struct PassPosition {
    Trim Window;
    std::chrono::milliseconds Elapsed{0};  ///< from the start of the media
    bool First = false;                    ///< fades in
    bool Last = false;                     ///< fades out
};

/// The loudest of the media at this position, scaled by the preset's volume and its fades.
StereoLevels LevelsAt(const zorvic::v1::Preset& preset, const std::vector<std::string>& media,
                      const MediaCatalog& catalog, const PassPosition& position);

}  // namespace ZorvicUnit
