#include "playback/levels.h"

#include "playback/fades.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace ZorvicUnit {

namespace {

constexpr double FullVolume = 65535;

// A preset without volume entries plays at full volume; one entry holds for both channels.
double VolumeGain(const zorvic::v1::Preset& preset, int channel) {
    if (preset.volume().empty()) return 1;
    return std::min(preset.volume(std::min(channel, preset.volume_size() - 1)) / FullVolume, 1.0);
}

std::array<std::uint8_t, 2> Peak(const std::vector<std::shared_ptr<const Envelope>>& envelopes,
                                 std::chrono::nanoseconds elapsed) {
    std::array<std::uint8_t, 2> peak{};
    const auto steps = elapsed / std::chrono::milliseconds(Envelope::StepMS);
    const auto step = static_cast<std::size_t>(std::max<std::int64_t>(steps, 0));
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
    const double fade = FadesAt(preset, position).Sound();
    StereoLevels levels{};
    for (int channel = 0; channel < 2; ++channel) {
        const auto at = static_cast<std::size_t>(channel);
        const double level = peak[at] * fade * VolumeGain(preset, channel);
        levels[at] = static_cast<std::int32_t>(std::lround(std::clamp(level, 0.0, 100.0)));
    }
    return levels;
}

}  // namespace ZorvicUnit
