#pragma once

#include "clock.h"
#include "render/kept_file.h"

#include <render.pb.h>

#include <chrono>
#include <compare>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ZorvicRender {

using Nanoseconds = std::chrono::nanoseconds;
using TimePoint = ZorvicUnit::Clock::TimePoint;

/// One run of a preset, over all outlooks that show it.
struct RunId {
    std::int32_t PK = 0;
    std::uint64_t Number = 0;
    auto operator<=>(const RunId&) const = default;
};

/// A moment as the unit says it.
inline TimePoint ToTime(std::int64_t nanoseconds) {
    return TimePoint(Nanoseconds(nanoseconds));
}

/// A stretch of time in which the position of a run moves with the clock or stands.
struct Span {
    TimePoint From;
    TimePoint Until;
    Nanoseconds Position{0};  ///< in the media, at From
    bool Moves = false;
    bool Waits = false;    ///< stands until its first pictures are ready
    bool Planned = false;  ///< what came before ends here by itself (a loop): no click, no black, no repeated picture
    Nanoseconds WindowStart{0};
    Nanoseconds WindowEnd{0};
    bool FirstPass = false;
    bool LastPass = false;

    Nanoseconds PositionAt(TimePoint at) const { return Moves ? Position + (at - From) : Position; }
    /// The same for every piece of one uninterrupted stretch.
    Nanoseconds Offset() const { return Moves ? Position - From.time_since_epoch() : Position; }
    bool Continues(const Span& before) const { return Moves == before.Moves && Offset() == before.Offset(); }
};

struct Medium {
    std::string Path;                ///< as the preset names it
    std::shared_ptr<KeptFile> File;  ///< the same for the whole run; null: not to be opened
};

/// One run of a preset with its place in time.
struct Layer {
    RunId Id;
    std::shared_ptr<const zorvic::v1::Preset> Preset;
    std::vector<Medium> Media;
    std::vector<Span> Spans;    ///< in order of time, without gaps, never empty
    bool EndsByItself = false;  ///< the last span's end is the run's own, not the outlook's

    /// Null before the first span, and after the run has ended. A run whose end is not known goes on as it last did:
    /// the unit may be late.
    const Span* At(TimePoint time) const;
    /// The next span after this moment that does not continue the one before it; null when none is known.
    const Span* JumpAfter(TimePoint time) const;
};

/// What plays and will play, as the unit said last, with the past that a slower reader may still need.
struct Scene {
    std::vector<std::shared_ptr<const Layer>> Layers;  ///< from the bottom of the stack
    std::vector<std::shared_ptr<const Layer>> Primed;  ///< likely to be taken next: one span that stands

    /// Of those that play.
    const Layer* Find(const RunId& id) const;
    /// The file that a run has been given, playing or primed; null when it has none.
    std::shared_ptr<KeptFile> FindFile(const RunId& id, const std::string& path) const;
};

/// The scene after this outlook: layers that go on keep the last second before it, and their files. `opening` is given
/// to the files that are new.
Scene NextScene(const Scene& before, const zorvic::render::Outlook& outlook, const KeptFile::Report& opening = {});

}  // namespace ZorvicRender
