#pragma once

#include "render/sound/resampler.h"

#include <vector>

namespace ZorvicRender {

/// Plays 48 kHz stereo a little faster or slower.
class DriftResampler {
public:
    DriftResampler();
    /// Forgets what it holds.
    void Restart();
    /// The result stands until the next call.
    const std::vector<float>& Convert(const float* frames, int count, double speed);
    /// Frames that went in and have not come out.
    double Held() const;

private:
    Resampler Converter;
    std::vector<float> Out;
};

}  // namespace ZorvicRender
