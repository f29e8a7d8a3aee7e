#pragma once

#include "clock.h"
#include "playback/trim.h"

#include <zorvic/v1/unit.pb.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

namespace ZorvicUnit {

/// A stretch of time in which the position of a run moves with the clock or stands.
struct OutlookSpan {
    Clock::TimePoint From;
    Clock::TimePoint Until;
    std::chrono::nanoseconds Elapsed{0};  ///< from the start of the media, at From
    bool Moves = false;
    bool Waits = false;  ///< stands until its first pictures are ready, or the length of its media is known; not paused
    Trim Window;
    bool First = false;  ///< pass: fades in
    bool Last = false;   ///< pass: fades out
};

/// One run of a preset: from a take, or from the link that begins it, until it ends.
struct OutlookLayer {
    std::shared_ptr<const zorvic::v1::Preset> Preset;
    std::uint64_t Run = 0;           ///< counts the runs of this preset
    std::vector<OutlookSpan> Spans;  ///< in order of time, without gaps
};

/// What plays from now on, unless a command comes between: loops, links, trims and freezes carried out ahead of time.
struct Outlook {
    Clock::TimePoint Until;            ///< at most as asked for: presets of a few milliseconds shorten it
    std::vector<OutlookLayer> Layers;  ///< from the bottom of the stack
    std::vector<OutlookLayer> Primed;  ///< likely to be taken next: one span that stands at the start
};

/// Where a run, begun or next, begins.
struct RunStart {
    std::int32_t PK = 0;
    std::uint64_t Run = 0;
    std::chrono::nanoseconds Elapsed{0};
};

}  // namespace ZorvicUnit
