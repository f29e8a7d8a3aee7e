#include "render/sound/mixer.h"

#include <algorithm>

namespace ZorvicRender {

void Mixer::Mix(const Scene& scene, std::int64_t first, int frames, float* out) {
    const std::lock_guard guard(Lock);
    Admit(scene);
    NoteSeams(scene, first);
    for (int done = 0; done < frames; done += BlockFrames) {
        const int part = std::min(frames - done, BlockFrames);
        MixBlock(first + done, part, out + static_cast<std::ptrdiff_t>(done) * Channels);
        Prime(scene, first + done + part);
    }
    DismissSilent();
}

void Mixer::Admit(const Scene& scene) {
    for (auto& [key, entry] : Tracks) {
        entry.Playing.reset();
        entry.Wanted = false;
    }
    for (const auto& layer : scene.Primed)
        Admit(layer, false);
    for (const auto& layer : scene.Layers)
        Admit(layer, true);
}

void Mixer::Admit(const std::shared_ptr<const Layer>& layer, bool plays) {
    for (const Medium& medium : layer->Media) {
        if (!medium.File) continue;
        Entry& entry = Tracks[{layer->Id, medium.Path}];
        // What sounds goes on with its file.
        if (entry.Sound == nullptr || (!plays && entry.File != medium.File)) {
            if (entry.Sound != nullptr) Retire(std::move(entry.Sound));
            entry.File = medium.File;
            entry.Sound = std::make_unique<Track>(medium.File);
        }
        entry.Wanted = true;
        if (plays) entry.Playing = layer;
    }
}

bool Mixer::HasSound(const Layer& layer) const {
    return std::any_of(layer.Media.begin(), layer.Media.end(), [&](const Medium& medium) {
        const auto found = Tracks.find({layer.Id, medium.Path});
        return found != Tracks.end() && found->second.Sound->HasSound();
    });
}

// A run that nothing audible follows fades out, so that its cut does not click.
void Mixer::NoteSeams(const Scene& scene, std::int64_t first) {
    Seams.ForgetBefore(first - SampleRate);
    for (const auto& ending : scene.Layers) {
        if (!ending->EndsByItself) continue;
        const TimePoint end = ending->Spans.back().Until;
        const bool followed = std::any_of(scene.Layers.begin(), scene.Layers.end(), [&](const auto& next) {
            return next->Spans.front().From == end && next->Spans.front().Moves && HasSound(*next);
        });
        if (followed) Seams.Add(SampleAt(end));
    }
}

void Mixer::MixBlock(std::int64_t first, int frames, float* out) {
    const std::size_t count = static_cast<std::size_t>(frames) * Channels;
    std::fill_n(out, count, 0.F);
    for (auto& [key, entry] : Tracks)
        entry.Sound->Mix(entry.Playing.get(), first, frames, Seams, out);
    std::transform(out, out + count, out, [](float value) { return std::clamp(value, -1.F, 1.F); });
}

void Mixer::Prime(const Scene& scene, std::int64_t sample) {
    const auto prime = [&](const Layer& layer) {
        for (const Medium& medium : layer.Media) {
            const auto found = Tracks.find({layer.Id, medium.Path});
            if (found != Tracks.end()) found->second.Sound->Prime(layer, sample);
        }
    };
    for (const auto& layer : scene.Layers)
        prime(*layer);
    for (const auto& layer : scene.Primed) {
        if (scene.Find(layer->Id) == nullptr) prime(*layer);
    }
}

void Mixer::DismissSilent() {
    for (auto at = Tracks.begin(); at != Tracks.end();) {
        Entry& entry = at->second;
        if (entry.Wanted || !entry.Sound->IsSilent()) {
            ++at;
            continue;
        }
        Retire(std::move(entry.Sound));
        at = Tracks.erase(at);
    }
}

void Mixer::Retire(std::unique_ptr<Track> track) {
    TornBefore += track->Underruns();
    Graves.Take(std::move(track));
}

bool Mixer::Ready(const Layer& layer, Nanoseconds position) const {
    const std::int64_t sample = SampleAt(position);
    const std::lock_guard guard(Lock);
    return std::all_of(layer.Media.begin(), layer.Media.end(), [&](const Medium& medium) {
        if (!medium.File) return true;
        const auto found = Tracks.find({layer.Id, medium.Path});
        return found != Tracks.end() && found->second.Sound->Ready(sample);
    });
}

bool Mixer::Settled(std::int64_t sample) const {
    const std::lock_guard guard(Lock);
    return std::all_of(Tracks.begin(), Tracks.end(), [&](const auto& track) {
        const Entry& entry = track.second;
        return entry.Playing == nullptr || entry.Sound->Settled(*entry.Playing, sample);
    });
}

std::uint64_t Mixer::Underruns() const {
    const std::lock_guard guard(Lock);
    std::uint64_t torn = TornBefore;
    for (const auto& [key, entry] : Tracks)
        torn += entry.Sound->Underruns();
    return torn;
}

}  // namespace ZorvicRender
