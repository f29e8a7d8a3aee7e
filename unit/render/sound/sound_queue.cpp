#include "render/sound/sound_queue.h"

#include "render/sound/samples.h"

#include <algorithm>

namespace ZorvicRender {

void SoundQueue::Restart(std::int64_t position) {
    First = position;
    Size = 0;
}

std::size_t SoundQueue::Slot(std::int64_t position) const {
    constexpr auto Length = static_cast<std::int64_t>(Capacity);
    const std::int64_t slot = position % Length;
    return static_cast<std::size_t>(slot < 0 ? slot + Length : slot);
}

std::size_t SoundQueue::Append(std::int64_t position, const float* frames, std::size_t count) {
    if (Ring.empty()) Ring.resize(Capacity * Channels);
    const auto known = static_cast<std::size_t>(std::max<std::int64_t>(End() - position, 0));
    if (known >= count) return count;
    const std::size_t taken = std::min(count - known, Room());
    for (std::size_t done = 0; done < taken;) {
        const std::size_t slot = Slot(End());
        const std::size_t run = std::min(taken - done, Capacity - slot);
        std::copy_n(frames + (known + done) * Channels, run * Channels,
                    Ring.begin() + static_cast<long>(slot) * Channels);
        done += run;
        Size += run;
    }
    return known + taken;
}

void SoundQueue::DropBefore(std::int64_t position) {
    if (position <= First) return;
    Size = static_cast<std::size_t>(std::max<std::int64_t>(End() - position, 0));
    First = position;
}

std::size_t SoundQueue::Copy(std::int64_t position, std::size_t count, float* out) const {
    if (position < First || position >= End()) return 0;
    const std::size_t there = std::min(count, static_cast<std::size_t>(End() - position));
    for (std::size_t done = 0; done < there;) {
        const std::size_t slot = Slot(position + static_cast<std::int64_t>(done));
        const std::size_t run = std::min(there - done, Capacity - slot);
        std::copy_n(Ring.begin() + static_cast<long>(slot) * Channels, run * Channels, out + done * Channels);
        done += run;
    }
    return there;
}

}  // namespace ZorvicRender
