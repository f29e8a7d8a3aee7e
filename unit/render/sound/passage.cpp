#include "render/sound/passage.h"

namespace ZorvicRender {

namespace {

std::int64_t OffsetOf(const Span& span) {
    return SampleAt(span.From.time_since_epoch() - span.Position);
}

// The last span of a run whose end is not known goes on.
std::int64_t EndOf(const Layer& layer, std::size_t index) {
    const bool open = index + 1 == layer.Spans.size() && !layer.EndsByItself;
    return open ? Never : SampleAt(layer.Spans[index].Until);
}

std::int64_t StopOf(const Layer& layer, std::size_t index) {
    const bool last = index + 1 == layer.Spans.size();
    return last || !layer.Spans[index + 1].Moves ? EndOf(layer, index) : Never;
}

Passage ToPassage(const Layer& layer, std::size_t index) {
    const Span& span = layer.Spans[index];
    Passage passage{.From = SampleAt(span.From), .Until = EndOf(layer, index)};
    if (!span.Moves) return passage;
    passage.Of = &span;
    passage.Offset = OffsetOf(span);
    passage.StopsAt = StopOf(layer, index);
    return passage;
}

bool GoesOn(const Span& span, const Span& before) {
    return before.Moves && OffsetOf(before) == OffsetOf(span);
}

}  // namespace

Passage PassageAt(const Layer& layer, std::int64_t sample) {
    const std::int64_t begin = SampleAt(layer.Spans.front().From);
    if (sample < begin) return {.From = sample, .Until = begin};
    for (std::size_t i = 0; i < layer.Spans.size(); ++i) {
        if (sample < EndOf(layer, i)) return ToPassage(layer, i);
    }
    return {.From = sample};
}

std::optional<std::int64_t> NextEntry(const Layer& layer, std::int64_t sample) {
    const Span* before = nullptr;
    std::optional<std::int64_t> standing;
    for (std::size_t i = 0; i < layer.Spans.size(); ++i) {
        const Span& span = layer.Spans[i];
        const std::int64_t from = SampleAt(span.From);
        const bool enters = span.Moves && (before == nullptr || !GoesOn(span, *before));
        if (from >= sample && enters) return from - OffsetOf(span);
        if (!span.Moves && sample < EndOf(layer, i)) standing = SampleAt(span.Position);
        before = &span;
    }
    return standing;
}

}  // namespace ZorvicRender
