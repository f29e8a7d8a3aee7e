#include "playback/entry.h"

#include <algorithm>
#include <set>

namespace ZorvicUnit {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

namespace {

// What the stored points (remaining times) mean for a running time of trt ms. An in point of 0 is not set; one that
// does not lie before the out point or lies beyond trt is ignored, and so is an out point outside of the running time.
// So the length is 0 only when trt is.
Trim EffectiveTrim(std::int32_t inPosition, std::int32_t outPosition, std::int32_t trt) {
    const std::int32_t out = outPosition > 0 && outPosition < trt ? outPosition : 0;
    const std::int32_t in = inPosition > out && inPosition <= trt ? inPosition : trt;
    return {.Start = milliseconds(trt - in), .End = milliseconds(trt - out)};
}

}  // namespace

std::vector<std::string> PathsOf(const zorvic::v1::Preset& preset) {
    std::set<std::string> paths;
    for (const auto& canvas : preset.canvases()) {
        for (const auto& asset : canvas.assets())
            paths.insert(asset.full_path());
    }
    return {paths.begin(), paths.end()};
}

Trim PlayEntry::Window() const {
    return EffectiveTrim(Preset->in_position(), Preset->out_position(), TRT);
}

bool PlayEntry::Resumes() const {
    return Playing && Playing->Paused && (Playing->Waiting || Playing->Base < Window().End);
}

milliseconds PlayEntry::CuedElapsed() const {
    return milliseconds(TRT - std::clamp(*Cue, 0, TRT));
}

nanoseconds PlayEntry::StartElapsed() const {
    const Trim window = Window();
    // A cue that leaves nothing to play would end the take at once and fire the linked preset.
    return Cue && CuedElapsed() < window.End ? CuedElapsed() : window.Start;
}

std::optional<Clock::TimePoint> PlayEntry::DueAt() const {
    if (!Playing || Playing->Paused || Playing->Waiting) return std::nullopt;
    if (Playing->HeldUntil) return Playing->HeldUntil;
    const Trim window = Window();
    if (window.Length() == nanoseconds(0) && Endless()) return std::nullopt;
    return Playing->Anchor + std::max(window.End - Playing->Base, nanoseconds(0));
}

}  // namespace ZorvicUnit
