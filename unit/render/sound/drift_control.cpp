#include "render/sound/drift_control.h"

#include <algorithm>
#include <cmath>

namespace ZorvicRender {

namespace {

constexpr double SmoothingSeconds = 1;

// Critically damped: settles within a minute and swings no further than it has to.
constexpr double ErrorGain = 0.1;
constexpr double DriftGain = ErrorGain * ErrorGain / 4;

}  // namespace

DriftControl::Steering DriftControl::Update(double error, double elapsed) {
    Smoothed += (error - Smoothed) * std::min(1.0, elapsed / SmoothingSeconds);
    if (std::abs(Smoothed) > MostError) {
        Smoothed = 0;
        return {Drift, error};
    }
    const double wanted = Drift + ErrorGain * Smoothed;
    const double speed = std::clamp(wanted, -MostSpeed, MostSpeed);
    // At the limit nothing is learned: it would have to be unlearned again.
    if (speed == wanted) Drift += DriftGain * Smoothed * elapsed;
    return {speed, std::nullopt};
}

}  // namespace ZorvicRender
