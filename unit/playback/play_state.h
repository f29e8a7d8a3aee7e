#pragma once

#include "playback/levels.h"

#include <cstdint>

namespace ZorvicUnit {

struct PlayState {
    std::int32_t TRT = 0;           ///< ms
    std::uint32_t CurrentLoop = 0;  ///< pass now playing, from 1; 0 when stopped
    bool Playing = false;           ///< also while paused
    bool Paused = false;
};

struct PlayPosition {
    std::int32_t PK = 0;
    std::int32_t RemainingMS = 0;  ///< before the end of the running time
    StereoLevels Levels{};         ///< 0 while nothing moves
};

}  // namespace ZorvicUnit
