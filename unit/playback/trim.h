#pragma once

#include <chrono>
#include <cstdint>

namespace ZorvicUnit {

/// The part of a preset that plays, as elapsed time from the start of its media. The wire counts the other way
/// (remaining time); elapsed time stays true when the running time changes under a playing preset.
struct Trim {
    std::chrono::milliseconds Start{0};
    std::chrono::milliseconds End{0};
    std::chrono::milliseconds Length() const { return End - Start; }
};

/// What the stored points (remaining times) mean for a running time of trt ms. An in point of 0 is not set; one that
/// does not lie before the out point or lies beyond trt is ignored, and so is an out point outside of the media. So
/// the length is 0 only when trt is.
Trim EffectiveTrim(std::int32_t inPosition, std::int32_t outPosition, std::int32_t trt);

}  // namespace ZorvicUnit
