#pragma once

#include "render/scene.h"

#include <cstdint>

namespace ZorvicRender {

/// Sound is mixed as interleaved frames of two floats, left first.
constexpr int SampleRate = 48000;
constexpr int Channels = 2;
/// Length of the ramps that keep cuts from clicking, and the most that is mixed in one go: 5 and 10 ms.
constexpr int RampFrames = SampleRate / 200;
constexpr int BlockFrames = SampleRate / 100;

/// The sample nearest to this moment or position; integers, so that two spans that touch share a boundary.
constexpr std::int64_t SampleAt(Nanoseconds time) {
    constexpr std::int64_t Up = 6, Down = 125'000;  // 48000 / 10^9
    const std::int64_t scaled = Up * time.count() + Down / 2;
    return scaled / Down - (scaled % Down < 0 ? 1 : 0);
}
constexpr std::int64_t SampleAt(TimePoint time) {
    return SampleAt(time.time_since_epoch());
}

constexpr TimePoint TimeOf(std::int64_t sample) {
    return TimePoint(Nanoseconds(sample * 125'000 / 6));
}

}  // namespace ZorvicRender
