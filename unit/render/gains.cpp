#include "render/gains.h"

#include <algorithm>

namespace ZorvicRender {

namespace {

// The builder's box counts the fade in seconds and stores its number as it stands.
constexpr std::int32_t MostFadeSeconds = 99;

// 0 before the ramp, 1 after it.
float Ramp(Nanoseconds into, std::int64_t lengthMS) {
    if (lengthMS <= 0) return 1;
    const auto length = static_cast<double>(Nanoseconds(std::chrono::milliseconds(lengthMS)).count());
    return static_cast<float>(std::clamp(static_cast<double>(into.count()) / length, 0.0, 1.0));
}

std::int64_t FadeOutMS(const zorvic::v1::Preset& preset) {
    const std::int32_t stored = preset.fade_out_ms();
    return stored > 0 && stored <= MostFadeSeconds ? std::int64_t{stored} * 1000 : stored;
}

}  // namespace

Gains GainsAt(const zorvic::v1::Preset& preset, const Span& span, Nanoseconds position) {
    Gains gains;
    if (span.FirstPass) {
        gains.Light *= Ramp(position - span.WindowStart, preset.fade_in_ms());
        gains.Opacity *= Ramp(position - span.WindowStart, preset.dissolve_in_ms());
    }
    if (span.LastPass) {
        gains.Light *= Ramp(span.WindowEnd - position, FadeOutMS(preset));
        gains.Opacity *= Ramp(span.WindowEnd - position, preset.dissolve_out_ms());
    }
    return gains;
}

}  // namespace ZorvicRender
