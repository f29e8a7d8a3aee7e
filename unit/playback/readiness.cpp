#include "playback/entry.h"
#include "playback/playback.h"

#include <algorithm>
#include <utility>

namespace ZorvicUnit {

void Playback::HoldColdTakes(bool on) {
    Advance();
    ColdTakesHeld = on;
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
        if (!entry.Playing || !entry.Playing->ColdUntil || !wanted(entry)) continue;
        entry.Playing->LetGo(Now);
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

}  // namespace ZorvicUnit
