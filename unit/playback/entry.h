#pragma once

#include "asset_catalog.h"
#include "clock.h"
#include "playback/trim.h"

#include <zorvic/v1/unit.pb.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ZorvicUnit {

/// What a preset does from a take, or from the link that begins it, until it ends.
struct PlayRun {
    using Duration = std::chrono::nanoseconds;
    struct Medium {
        std::optional<std::int32_t> LengthMS;
        std::shared_ptr<const Envelope> Levels;
    };

    std::uint64_t Place = 0;  ///< in the stack: higher is above
    Clock::TimePoint Anchor;  ///< when the position was Base; meaningless while it does not move
    Duration Base{0};         ///< elapsed time from the start of the media
    std::uint32_t Pass = 1;
    bool Paused = false;
    bool Waiting = true;                        ///< for the length of the media
    std::optional<Clock::TimePoint> HeldUntil;  ///< stands until then at the latest; nothing once it may move
    std::map<std::string, Medium> Media;        ///< by path, as this run met them

    bool Moves() const { return !Paused && !Waiting && !HeldUntil; }
    void LetGo(Clock::TimePoint at) {
        HeldUntil.reset();
        Anchor = at;
    }
    Duration Elapsed(Clock::TimePoint at) const { return Moves() ? Base + (at - Anchor) : Base; }
};

/// A preset as playback sees it, with its run when it plays.
struct PlayEntry {
    std::shared_ptr<const zorvic::v1::Preset> Preset;
    std::vector<std::string> Assets;  ///< their paths, each once
    std::int32_t TRT = 0;
    bool LengthKnown = false;
    bool Retired = false;
    std::optional<std::int32_t> Cue;  ///< remaining time at which the next run begins
    std::uint64_t Runs = 0;           ///< so far; also the number of the one that plays
    std::optional<PlayRun> Playing;

    Trim Window() const;
    bool Endless() const { return Preset->loop() == -1; }
    bool LastPass() const { return !Endless() && std::cmp_greater(Playing->Pass, Preset->loop()); }
    /// Nothing to play and nothing that holds it: over at the moment it begins.
    bool Instant() const { return LengthKnown && TRT == 0 && !Endless() && !Preset->freeze_at_end(); }
    /// True when a take goes on with the run instead of beginning one.
    bool Resumes() const;
    std::chrono::milliseconds CuedElapsed() const;
    /// Where the next run begins.
    std::chrono::nanoseconds StartElapsed() const;
    /// When the pass that plays is over, or the wait for its first pictures; nothing while it stands otherwise.
    std::optional<Clock::TimePoint> DueAt() const;
};

/// The assets of a preset, each once.
std::vector<std::string> PathsOf(const zorvic::v1::Preset& preset);

}  // namespace ZorvicUnit
