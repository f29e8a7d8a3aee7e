#include "render/sound/track.h"

namespace ZorvicRender {

void Track::Mix(const Layer* layer, std::int64_t at, int frames, const SeamList& seams, float* sum) {
    const std::int64_t end = at + frames;
    while (at < end) {
        Passage passage = layer == nullptr ? Passage{.From = at} : PassageAt(*layer, at);
        if (seams.Has(passage.StopsAt)) passage.StopsAt = Never;
        const bool goesOn = passage.Sounds() && Current && Current->Offset() == passage.Offset;
        if (Current && !passage.Sounds()) {
            LetGo(!seams.Has(at));
        } else if (passage.Sounds() && !goesOn) {
            Follow(*layer, passage, at, seams);
        } else if (goesOn) {
            Current->Follow(Current->Reader(), *layer, passage);
        }
        const auto part = static_cast<int>(std::min(end, passage.Until) - at);
        Play(Current, at, part, sum);
        Play(Old, at, part, sum);
        at += part;
        sum += static_cast<std::ptrdiff_t>(part) * Channels;
    }
}

// A piece that does not go on from the one before.
void Track::Follow(const Layer& layer, const Passage& passage, std::int64_t at, const SeamList& seams) {
    const bool seamless = Current && passage.Of->Planned && passage.From == at;
    if (seamless) {
        Jump(layer, passage, at);
    } else {
        LetGo(true);
        Begin(layer, passage, at, seams);
    }
}

void Track::Jump(const Layer& layer, const Passage& passage, std::int64_t at) {
    Drop(Old);
    SoundReader* const next = Source.Borrow(at - passage.Offset);
    Source.Return(&Current->Reader());
    Current->Follow(*next, layer, passage);
}

void Track::Begin(const Layer& layer, const Passage& passage, std::int64_t at, const SeamList& seams) {
    const std::int64_t position = at - passage.Offset;
    SoundReader* const reader = Source.Borrow(position);
    // What begins with its media or takes over from another run must not lose its first milliseconds.
    const bool atOnce = position == 0 || (seams.Has(at) && passage.From == at);
    Current.emplace(*reader, layer, passage, at, atOnce);
    Source.OpenSpare();
}

// After this at least one reader is free.
void Track::LetGo(bool ramp) {
    Drop(Old);
    if (!Current) return;
    if (ramp && !Current->IsSilent()) {
        Old = std::move(Current);
        Old->Leave();
        Current.reset();
    } else {
        Drop(Current);
    }
}

void Track::Drop(std::optional<Voice>& voice) {
    if (voice) Source.Return(&voice->Reader());
    voice.reset();
}

void Track::Play(std::optional<Voice>& voice, std::int64_t at, int frames, float* sum) {
    if (!voice) return;
    if (!voice->Mix(at, frames, sum)) ++Torn;
    if (&voice == &Old && Old->IsSilent()) Drop(Old);
}

void Track::Prime(const Layer& layer, std::int64_t sample) {
    if (const auto position = NextEntry(layer, sample)) Source.Prime(*position);
}

bool Track::Ready(std::int64_t position) const {
    return Current || Source.Silent() || Source.Ready(position);
}

bool Track::Settled(const Layer& layer, std::int64_t sample) const {
    if (Source.Silent()) return true;
    const auto entry = NextEntry(layer, sample);
    return (!Current || Current->Reader().Ready(sample - Current->Offset())) && (!entry || Source.Ready(*entry));
}

}  // namespace ZorvicRender
