#include "playback/entry.h"
#include "playback/playback.h"

#include <algorithm>
#include <utility>

namespace ZorvicUnit {

void Playback::HoldColdTakes(bool on, std::chrono::nanoseconds refresh) {
    Advance();
    ColdTakesHeld = on;
    Refresh = refresh;
    if (on) return;
    Primed.clear();
    ReleaseHeld([](const PlayEntry&) { return true; });
}

void Playback::SetPrimed(std::vector<RunStart> ready) {
    Advance();
    Primed = std::move(ready);
    ReleaseHeld([this](const PlayEntry& entry) { return !entry.Playing->Waiting && IsPrimed(entry); });
}

void Playback::MediaReady(std::int32_t pk, std::uint64_t run) {
    Advance();
    ReleaseHeld([&](const PlayEntry& entry) { return entry.Preset->pk() == pk && entry.Runs == run; });
}

template <typename Wanted>
void Playback::ReleaseHeld(const Wanted& wanted) {
    for (const std::int32_t pk : Active) {
        PlayEntry& entry = Entries.at(pk);
        if (!entry.Playing || !entry.Playing->HeldUntil || !wanted(entry)) continue;
        PlayRun& run = *entry.Playing;
        run.HeldUntil = std::min(*run.HeldUntil, OnRefresh(Now, run.Base));
        ++Plans;
    }
    Advance();
}

// Of its present run, at the position from which it goes on.
bool Playback::IsPrimed(const PlayEntry& entry) const {
    return std::any_of(Primed.begin(), Primed.end(), [&](const RunStart& start) {
        return start.PK == entry.Preset->pk() && start.Run == entry.Runs && start.Elapsed == entry.Playing->Base;
    });
}

// The first moment at which a picture that begins here can light up on time: a picture that is asked for half an
// interval before a refresh is still drawn for it.
Clock::TimePoint Playback::OnRefresh(Clock::TimePoint at, std::chrono::nanoseconds elapsed) const {
    if (Refresh.count() == 0) return at;
    const auto phase = (at + Refresh / 2 - elapsed).time_since_epoch() % Refresh;
    return at + Refresh / 2 + (Refresh - phase) % Refresh;
}

void Playback::MoveOnRefresh(PlayRun& run) const {
    if (Refresh.count() == 0 || run.Paused) return;
    run.HeldUntil = std::max(run.HeldUntil.value_or(Now), OnRefresh(Now, run.Base));
}

}  // namespace ZorvicUnit
