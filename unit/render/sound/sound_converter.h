#pragma once

#include "media/av_types.h"
#include "render/sound/resampler.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace ZorvicRender {

/// Makes unbroken sound of 48 kHz stereo from decoded frames, each sample at the place that its time stamp says; gaps
/// become silence. For one thread.
class SoundConverter {
public:
    /// Takes frames of sound and the position of the first; false when no more are wanted.
    using Sink = std::function<bool(std::int64_t position, const float* frames, std::size_t count)>;

    explicit SoundConverter(Sink sink) : Out(std::move(sink)) {}

    /// What follows is wanted from this position on.
    void Restart(std::int64_t position);
    /// The frame's position in its own samples, nothing for one that follows on. False when no more is wanted.
    bool Add(const AVFrame& frame, std::optional<std::int64_t> position);
    /// Gives what the filter still holds.
    bool Finish();

private:
    bool Matches(const AVFrame& frame) const;
    bool SetUp(const AVFrame& frame);
    void Align();
    std::optional<std::int64_t> Placed(const AVFrame& frame, std::optional<std::int64_t> position);
    bool AddSilence(std::int64_t samples);
    bool Feed(const AVFrame& frame, int skip, int samples);
    bool Convert(const std::uint8_t** planes, int samples);

    const Sink Out;
    Resampler Converter;
    ZorvicUnit::AvFrame Silence;          ///< of the format that Converter takes
    std::int64_t Wanted = 0;              ///< 48 kHz
    std::int64_t Given = 0;               ///< 48 kHz: the next frame that comes out
    std::int64_t Fed = 0;                 ///< the next sample that goes in
    std::optional<std::int64_t> At;       ///< where the next frame begins if it follows on
    std::optional<std::int64_t> Doubted;  ///< where the next frame begins if a leap far ahead was meant
    std::vector<float> Buffer;
};

}  // namespace ZorvicRender
