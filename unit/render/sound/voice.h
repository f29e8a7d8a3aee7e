#pragma once

#include "render/sound/passage.h"
#include "render/sound/sound_reader.h"

#include <array>
#include <memory>

namespace ZorvicRender {

/// One unbroken piece of a file's sound as it is heard, with its gain.
class Voice {
public:
    /// Begins at once, or over a ramp.
    Voice(SoundReader& reader, const Layer& layer, const Passage& passage, std::int64_t at, bool atOnce);

    /// What applies from here on. The reader may be another one where the passage jumps.
    void Follow(SoundReader& reader, const Layer& layer, const Passage& passage);
    /// Fades out from here on.
    void Leave() { Leaving = true; }
    /// Adds at most BlockFrames frames to the sum. Returns false when the sound was not there in time.
    bool Mix(std::int64_t at, int frames, float* sum);

    SoundReader& Reader() const { return *Source; }
    std::int64_t Offset() const { return Shift; }
    bool IsSilent() const { return Edge == 0; }

private:
    std::array<float, Channels> GainsFor(std::int64_t sample) const;
    std::array<float, Channels> NextGains(std::int64_t sample, int frames) const;

    SoundReader* Source;
    std::shared_ptr<const zorvic::v1::Preset> Preset;
    Span Pass;
    std::int64_t Shift;
    std::int64_t StopsAt;
    bool Leaving = false;
    int Edge;  ///< of the ramp, 0 to RampFrames
    std::array<float, Channels> Gain;
};

}  // namespace ZorvicRender
