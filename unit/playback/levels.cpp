#include "playback/levels.h"

#include <algorithm>
#include <cmath>

namespace ZorvicUnit {

namespace {

constexpr double FullVolume = 65535;

// 0 before the ramp, 1 after it.
double Ramp(std::chrono::milliseconds into, std::int32_t lengthMS) {
    if (lengthMS <= 0) return 1;
    return std::clamp(static_cast<double>(into.count()) / lengthMS, 0.0, 1.0);
}

double FadeGain(const zorvic::v1::Preset& preset, const PassPosition& position) {
    double gain = 1;
    if (position.First) gain *= Ramp(position.Elapsed - position.Window.Start, preset.fade_in_ms());
    if (position.Last) gain *= Ramp(position.Window.End - position.Elapsed, preset.fade_out_ms());
    return gain;
}

// A preset without volume entries plays at full volume; one entry holds for both channels.
double VolumeGain(const zorvic::v1::Preset& preset, int channel) {
    if (preset.volume().empty()) return 1;
    return std::min(preset.volume(std::min(channel, preset.volume_size() - 1)) / FullVolume, 1.0);
}

std::array<std::uint8_t, 2> Peak(const std::vector<std::shared_ptr<const Envelope>>& envelopes,
                                 std::chrono::milliseconds elapsed) {
    std::array<std::uint8_t, 2> peak{};
    const auto step = static_cast<std::size_t>(std::max<std::int64_t>(elapsed.count(), 0) / Envelope::StepMS);
    for (const auto& envelope : envelopes) {
        if (!envelope || step >= envelope->Levels.size()) continue;
        for (std::size_t channel = 0; channel < peak.size(); ++channel)
            peak[channel] = std::max(peak[channel], envelope->Levels[step][channel]);
    }
    return peak;
}

}  // namespace

StereoLevels LevelsAt(const zorvic::v1::Preset& preset, const std::vector<std::shared_ptr<const Envelope>>& envelopes,
                      const PassPosition& position) {
    const auto peak = Peak(envelopes, position.Elapsed);
    const double fade = FadeGain(preset, position);
    StereoLevels levels{};
    for (int channel = 0; channel < 2; ++channel) {
        const auto at = static_cast<std::size_t>(channel);
        const double level = peak[at] * fade * VolumeGain(preset, channel);
        levels[at] = static_cast<std::int32_t>(std::lround(std::clamp(level, 0.0, 100.0)));
    }
    return levels;
}

}  // namespace ZorvicUnit
