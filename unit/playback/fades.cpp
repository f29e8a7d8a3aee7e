#include "playback/fades.h"

#include <algorithm>

namespace ZorvicUnit {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

namespace {

// The preset builder stores what its box of whole seconds ("5s Fade") shows.
milliseconds FadeOutLength(std::int32_t stored) {
    constexpr std::int32_t LastOfBox = 99;
    return stored <= LastOfBox ? std::chrono::seconds(stored) : milliseconds(stored);
}

// 0 before the ramp, 1 after it.
double Ramp(nanoseconds into, nanoseconds length) {
    if (length <= nanoseconds(0)) return 1;
    return std::clamp(static_cast<double>(into.count()) / static_cast<double>(length.count()), 0.0, 1.0);
}

}  // namespace

FadeGains FadesAt(const zorvic::v1::Preset& preset, const PassPosition& position) {
    FadeGains gains;
    if (position.First) {
        const nanoseconds into = position.Elapsed - position.Window.Start;
        gains.Light *= Ramp(into, milliseconds(preset.fade_in_ms()));
        gains.Opacity *= Ramp(into, milliseconds(preset.dissolve_in_ms()));
    }
    if (position.Last) {
        const nanoseconds left = position.Window.End - position.Elapsed;
        gains.Light *= Ramp(left, FadeOutLength(preset.fade_out_ms()));
        gains.Opacity *= Ramp(left, milliseconds(preset.dissolve_out_ms()));
    }
    return gains;
}

}  // namespace ZorvicUnit
