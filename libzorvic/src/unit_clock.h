#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>

namespace Zorvic::Internal {

/// The unit's clock as its frames show it. Any frame may have been on its way for long, so the one that was quickest
/// tells most; but only of the last minute, because no two clocks run alike. One thread tells it of frames, any reads.
class UnitClock {
public:
    using Clock = std::chrono::steady_clock;

    /// A frame that was sent at this time of the unit's, in milliseconds, has come. 0: its unit shows no clock.
    void Heard(std::uint64_t sentMS, Clock::time_point now);
    /// What the unit's clock shows now, or less: by as much as the quickest frame was on its way. 0 when that is not
    /// known.
    std::uint64_t At(Clock::time_point now) const;

private:
    using Milliseconds = std::chrono::milliseconds;
    static constexpr Milliseconds Unknown = Milliseconds::min();

    mutable std::mutex Lock;  // guards what follows
    // How far the unit's clock is ahead of ours at least, by the frames of this half minute and of the one before.
    Milliseconds Ahead = Unknown;
    Milliseconds AheadBefore = Unknown;
    Clock::time_point HalfMinute{};
};

}  // namespace Zorvic::Internal
