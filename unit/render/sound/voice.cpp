#include "render/sound/voice.h"

#include "render/gains.h"

#include <algorithm>

namespace ZorvicRender {

namespace {

constexpr float FullVolume = 65535;

// The whole way of a volume takes at least this long: 10 ms.
constexpr float FullMoveFrames = SampleRate / 100.F;

// A preset without volume entries plays at full volume; one entry holds for both channels.
float VolumeOf(const zorvic::v1::Preset& preset, int channel) {
    if (preset.volume().empty()) return 1;
    const std::uint32_t stored = preset.volume(std::min(channel, preset.volume_size() - 1));
    return std::min(static_cast<float>(stored) / FullVolume, 1.F);
}

}  // namespace

Voice::Voice(SoundReader& reader, const Layer& layer, const Passage& passage, std::int64_t at, bool atOnce)
    : Source(&reader),
      Preset(layer.Preset),
      Pass(*passage.Of),
      Shift(passage.Offset),
      StopsAt(passage.StopsAt),
      Edge(atOnce ? RampFrames : 0),
      Gain(GainsFor(at)) {}

void Voice::Follow(SoundReader& reader, const Layer& layer, const Passage& passage) {
    Source = &reader;
    Preset = layer.Preset;
    Pass = *passage.Of;
    Shift = passage.Offset;
    StopsAt = passage.StopsAt;
}

std::array<float, Channels> Voice::GainsFor(std::int64_t sample) const {
    const Gains gains = GainsAt(*Preset, Pass, Pass.PositionAt(TimeOf(sample)));
    const float fade = gains.Light * gains.Opacity;
    return {fade * VolumeOf(*Preset, 0), fade * VolumeOf(*Preset, 1)};
}

std::array<float, Channels> Voice::NextGains(std::int64_t sample, int frames) const {
    if (Leaving) return Gain;
    const float most = static_cast<float>(frames) / FullMoveFrames;
    std::array<float, Channels> next = GainsFor(sample + frames);
    for (std::size_t channel = 0; channel < next.size(); ++channel)
        next[channel] = std::clamp(next[channel], Gain[channel] - most, Gain[channel] + most);
    return next;
}

bool Voice::Mix(std::int64_t at, int frames, float* sum) {
    std::array<float, std::size_t{BlockFrames} * Channels> sound;
    const auto there = static_cast<int>(Source->Read(at - Shift, static_cast<std::size_t>(frames), sound.data()));
    const bool torn = there < frames && Edge > 0;
    const std::array<float, Channels> next = NextGains(at, frames);
    // Where the sound ends, it is let down before.
    const std::int64_t loudUntil = std::min(there < frames ? std::int64_t{there} : Never, StopsAt - at) - RampFrames;
    for (int i = 0; i < frames; ++i) {
        const bool loud = !Leaving && i < loudUntil;
        Edge = i >= there ? 0 : std::clamp(Edge + (loud ? 1 : -1), 0, RampFrames);
        const float edge = static_cast<float>(Edge) / RampFrames;
        const float way = static_cast<float>(i + 1) / static_cast<float>(frames);
        for (std::size_t channel = 0; channel < next.size(); ++channel) {
            const std::size_t slot = static_cast<std::size_t>(i) * Channels + channel;
            sum[slot] += sound[slot] * edge * (Gain[channel] + (next[channel] - Gain[channel]) * way);
        }
    }
    Gain = next;
    return !torn;
}

}  // namespace ZorvicRender
