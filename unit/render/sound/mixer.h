#pragma once

#include "render/reaper.h"
#include "render/sound/track.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace ZorvicRender {

/// Mixes what a scene plays. Files are opened, read and closed by other threads; what they do not have in time is
/// silence.
class Mixer {
public:
    /// Interleaved frames from this output sample (48 kHz since the epoch of the steady clock) on; clipped hard at 1.
    /// For one thread, with samples that go on from call to call; a leap forward is a cut.
    void Mix(const Scene& scene, std::int64_t first, int frames, float* out);

    /// The layer sounds, or can begin at the position of its first span. From any thread.
    bool Ready(const Layer& layer, Nanoseconds position) const;
    /// All that the layers need from this sample on is decoded: for a clock that can wait.
    bool Settled(std::int64_t sample) const;
    /// How often sound that was heard was not there in time. From any thread.
    std::uint64_t Underruns() const;

private:
    using Key = std::pair<RunId, std::string>;  ///< run and path of the medium
    struct Entry {
        std::shared_ptr<KeptFile> File;
        std::unique_ptr<Track> Sound;
        std::shared_ptr<const Layer> Playing;  ///< null: waits or is over
        bool Wanted = false;
    };

    void Admit(const Scene& scene);
    void Admit(const std::shared_ptr<const Layer>& layer, bool plays);
    void NoteSeams(const Scene& scene, std::int64_t first);
    bool HasSound(const Layer& layer) const;
    void MixBlock(std::int64_t first, int frames, float* out);
    void Prime(const Scene& scene, std::int64_t sample);
    void DismissSilent();
    void Retire(std::unique_ptr<Track> track);

    Reaper Graves;
    mutable std::mutex Lock;  ///< guards all below
    std::map<Key, Entry> Tracks;
    SeamList Seams;
    std::uint64_t TornBefore = 0;  ///< of tracks that are gone
};

}  // namespace ZorvicRender
