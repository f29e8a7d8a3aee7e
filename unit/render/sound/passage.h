#pragma once

#include "render/sound/samples.h"

#include <limits>
#include <optional>

namespace ZorvicRender {

constexpr std::int64_t Never = std::numeric_limits<std::int64_t>::max();

/// A stretch of output samples in which a layer is silent or plays one unbroken piece of its media: output sample n is
/// sample n - Offset of the media.
struct Passage {
    const Span* Of = nullptr;  ///< null: silent
    std::int64_t From = 0;
    std::int64_t Until = Never;
    std::int64_t Offset = 0;
    std::int64_t StopsAt = Never;  ///< the sound ends there, as far as is known; at or after Until

    bool Sounds() const { return Of != nullptr; }
};

/// The passage that holds this output sample.
Passage PassageAt(const Layer& layer, std::int64_t sample);

/// Where in the media the first passage begins, at this output sample or later, that does not just go on.
std::optional<std::int64_t> NextEntry(const Layer& layer, std::int64_t sample);

}  // namespace ZorvicRender
