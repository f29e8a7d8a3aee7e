#include "playback/trim.h"

namespace ZorvicUnit {

Trim EffectiveTrim(std::int32_t inPosition, std::int32_t outPosition, std::int32_t trt) {
    const std::int32_t out = outPosition > 0 && outPosition < trt ? outPosition : 0;
    const std::int32_t in = inPosition > out && inPosition <= trt ? inPosition : trt;
    return {.Start = std::chrono::milliseconds(trt - in), .End = std::chrono::milliseconds(trt - out)};
}

}  // namespace ZorvicUnit
