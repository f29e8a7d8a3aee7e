#pragma once

#include "render/sound/sound_source.h"
#include "render/sound/voice.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace ZorvicRender {

/// Output samples at which a run begins as another one ends by itself.
class SeamList {
public:
    void Add(std::int64_t sample) {
        if (!Has(sample)) Samples.push_back(sample);
    }
    bool Has(std::int64_t sample) const { return std::find(Samples.begin(), Samples.end(), sample) != Samples.end(); }
    void ForgetBefore(std::int64_t sample) {
        std::erase_if(Samples, [&](std::int64_t at) { return at < sample; });
    }

private:
    std::vector<std::int64_t> Samples;
};

/// The sound of one file in one run: what is heard of it, and what fades out after a cut.
class Track {
public:
    explicit Track(std::shared_ptr<KeptFile> file) : Source(std::move(file)) {}

    /// Adds the sound of at most BlockFrames frames to the sum; without a layer the run is over.
    void Mix(const Layer* layer, std::int64_t at, int frames, const SeamList& seams, float* sum);
    /// Lets the spare reader wait where the layer will jump to after this sample.
    void Prime(const Layer& layer, std::int64_t sample);

    /// Sounds already, or can begin at this position of the media.
    bool Ready(std::int64_t position) const;
    /// All that the next block and the next jump need is decoded.
    bool Settled(const Layer& layer, std::int64_t sample) const;
    bool HasSound() const { return !Source.Silent(); }
    bool IsSilent() const { return !Current && !Old; }
    std::uint64_t Underruns() const { return Torn; }

private:
    void Follow(const Layer& layer, const Passage& passage, std::int64_t at, const SeamList& seams);
    void Begin(const Layer& layer, const Passage& passage, std::int64_t at, const SeamList& seams);
    void Jump(const Layer& layer, const Passage& passage, std::int64_t at);
    void LetGo(bool ramp);
    void Drop(std::optional<Voice>& voice);
    void Play(std::optional<Voice>& voice, std::int64_t at, int frames, float* sum);

    SoundSource Source;
    std::optional<Voice> Current;
    std::optional<Voice> Old;
    std::uint64_t Torn = 0;
};

}  // namespace ZorvicRender
