#pragma once

#include <render.pb.h>

#include <chrono>
#include <cstdint>

namespace ZorvicRender {

/// The time from one refresh to the next. Outputs light up at its multiples on the steady clock, so that those of all
/// units of one machine do so together, and whoever plans what they show knows when.
inline std::chrono::nanoseconds RefreshPeriod(const zorvic::render::Setup& setup) {
    return std::chrono::nanoseconds(std::int64_t{1'000'000'000} * setup.refresh_denominator() /
                                    setup.refresh_numerator());
}

}  // namespace ZorvicRender
