#pragma once

#include "clock.h"

#include <zorvic/v1/unit.pb.h>

#include <cstdint>
#include <memory>
#include <optional>

namespace ZorvicUnit {

/// Something that has happened in playback.
struct PlayEvent {
    enum class What { Taken, Paused, Resumed, Ended, Sought, Cued, Linked, Looped, Held };

    What Kind = What::Taken;
    bool Asked = false;  ///< by a command; otherwise it follows from what was there
    Clock::TimePoint At;
    std::shared_ptr<const zorvic::v1::Preset> Preset = {};
    std::uint64_t Run = 0;                         ///< counts the runs of the preset
    std::optional<std::int32_t> RemainingMS = {};  ///< position afterwards; of what has ended, its last one
    std::int32_t From = 0;  ///< of a seek: position before; of a link: key of the preset that it follows
    std::uint32_t Pass = 1;
};

}  // namespace ZorvicUnit
