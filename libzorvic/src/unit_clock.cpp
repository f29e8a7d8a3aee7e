#include "unit_clock.h"

#include <algorithm>

namespace Zorvic::Internal {

void UnitClock::Heard(std::uint64_t sentMS, Clock::time_point now) {
    if (sentMS == 0) return;
    const std::scoped_lock lock(Lock);
    if (now - HalfMinute > std::chrono::seconds(30)) {
        AheadBefore = Ahead;
        Ahead = Unknown;
        HalfMinute = now;
    }
    const auto own = std::chrono::ceil<Milliseconds>(now.time_since_epoch());
    Ahead = std::max(Ahead, Milliseconds(sentMS) - own);
}

std::uint64_t UnitClock::At(Clock::time_point now) const {
    const std::scoped_lock lock(Lock);
    const Milliseconds ahead = std::max(Ahead, AheadBefore);
    if (ahead == Unknown) return 0;
    return static_cast<std::uint64_t>(
        std::max<Milliseconds::rep>(0, (std::chrono::floor<Milliseconds>(now.time_since_epoch()) + ahead).count()));
}

}  // namespace Zorvic::Internal
