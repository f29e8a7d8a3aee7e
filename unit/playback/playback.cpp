#include "playback/playback.h"

#include "fault.h"
#include "playback/entry.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <limits>

namespace ZorvicUnit {

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using What = PlayEvent::What;

namespace {

// How many of those that would have passed are the preset's to play, behind the one that begins and before the last.
std::int64_t PassesUntil(const PlayEntry& entry, std::int64_t passed) {
    if (entry.Endless()) return passed;
    return std::min(passed, entry.Preset->loop() - std::int64_t{entry.Playing->Pass});
}

std::int32_t RemainingMS(const PlayEntry& entry, nanoseconds elapsed) {
    const auto remaining = entry.TRT - duration_cast<milliseconds>(elapsed).count();
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(remaining, 0, entry.TRT));
}

}  // namespace

Playback::Playback(const Clock& clock, const AssetCatalog& catalog) : Time(clock), Catalog(catalog), Now(clock.Now()) {}

Playback::~Playback() = default;

void Playback::Put(PresetPtr preset) {
    Advance();
    const auto [found, isNew] = Entries.try_emplace(preset->pk());
    PlayEntry& entry = found->second;
    Rebase(entry);
    NoteUses(entry, false);
    entry.Assets = PathsOf(*preset);
    entry.Preset = std::move(preset);
    NoteUses(entry, true);
    RefreshLength(entry);
    SetOff(entry, Now);
    if (isNew) NoteChange(entry);
    ++Plans;
    Advance();
}

void Playback::Remove(std::int32_t pk) {
    Active.erase(pk);
    if (const auto entry = Entries.find(pk); entry != Entries.end()) {
        NoteUses(entry->second, false);
        Entries.erase(entry);
    }
    ChangedStates.insert(pk);
    ++Plans;
}

void Playback::Clear() {
    for (const std::int32_t pk : Active)
        if (Entries.at(pk).Playing) Tell(Entries.at(pk), {.Kind = What::Ended, .Asked = true, .At = Now});
    for (const auto& [pk, entry] : Entries)
        ChangedStates.insert(pk);
    Active.clear();
    Entries.clear();
    Users.clear();
    Primed.clear();
    ++Plans;
}

void Playback::Take(std::int32_t pk) {
    Advance();
    PlayEntry& entry = Find(pk);
    if (entry.Retired) throw Fault(FaultKind::Refused, "it is being deleted");
    if (UsesHeldAsset(entry)) throw Fault(FaultKind::Refused, "an asset of it is being deleted");
    const bool resumes = entry.Resumes();
    if (resumes) {
        Resume(entry, Now);
        MoveOnRefresh(*entry.Playing);
    } else {
        Begin(entry, Now, ++Takes, ColdTakesHeld && !entry.Assets.empty());
    }
    Tell(entry, {.Kind = resumes ? What::Resumed : What::Taken, .Asked = true, .At = Now});
    ++Plans;
    Advance();
}

void Playback::Pause(std::int32_t pk, std::optional<bool> wanted) {
    Advance();
    PlayEntry& entry = Find(pk);
    if (!entry.Playing) throw Fault(FaultKind::Refused, "it does not play");
    if (wanted == entry.Playing->Paused) return;
    if (entry.Playing->Paused) {
        Resume(entry, Now);
        MoveOnRefresh(*entry.Playing);
    } else {
        Rebase(entry);
        entry.Playing->Paused = true;
        NoteChange(entry);
    }
    Tell(entry, {.Kind = entry.Playing->Paused ? What::Paused : What::Resumed, .Asked = true, .At = Now});
    ++Plans;
    Advance();
}

void Playback::End(std::int32_t pk) {
    Advance();
    PlayEntry& entry = Find(pk);
    if (entry.Playing) Tell(entry, {.Kind = What::Ended, .Asked = true, .At = Now});
    Stop(entry);
    ++Plans;
}

void Playback::Seek(std::int32_t pk, std::uint32_t timeMS) {
    Advance();
    PlayEntry& entry = Find(pk);
    ++Plans;
    const bool negative = timeMS > static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max());
    const std::int32_t remaining = negative ? 0 : static_cast<std::int32_t>(timeMS);
    if (!entry.Playing || entry.Playing->Waiting) {
        entry.Cue = remaining;
        Active.insert(pk);
        Tell(entry, {.Kind = What::Cued, .Asked = true, .At = Now, .RemainingMS = remaining});
        return;
    }
    const std::int32_t before = RemainingMS(entry, entry.Playing->Elapsed(Now));
    entry.Playing->Base = milliseconds(entry.TRT - std::min(remaining, entry.TRT));
    entry.Playing->Anchor = Now;
    MoveOnRefresh(*entry.Playing);
    Tell(entry, {.Kind = What::Sought, .Asked = true, .At = Now, .From = before});
    Advance();
}

void Playback::SetRetired(std::int32_t pk, bool retired) {
    Advance();
    PlayEntry& entry = Find(pk);
    if (retired && entry.Playing) throw Fault(FaultKind::Refused, "it plays");
    entry.Retired = retired;
    ++Plans;
}

void Playback::HoldAsset(const std::string& path) {
    Advance();
    for (const std::int32_t pk : Active) {
        const PlayEntry& entry = Entries.at(pk);
        if (entry.Playing && std::find(entry.Assets.begin(), entry.Assets.end(), path) != entry.Assets.end())
            throw Fault(FaultKind::Refused, fmt::format("preset {} plays it", pk));
    }
    HeldAssets.insert(path);
    ++Plans;
}

void Playback::ReleaseAsset(const std::string& path) {
    const auto held = HeldAssets.find(path);
    if (held == HeldAssets.end()) return;
    HeldAssets.erase(held);
    ++Plans;
}

void Playback::AssetsChanged(std::span<const std::string> paths) {
    Advance();
    std::set<std::int32_t> concerned;
    for (const std::string& path : paths)
        if (const auto users = Users.find(path); users != Users.end())
            concerned.insert(users->second.begin(), users->second.end());
    for (const std::int32_t pk : concerned) {
        PlayEntry& entry = Entries.at(pk);
        Rebase(entry);
        RefreshLength(entry);
        SetOff(entry, Now);
        ++Plans;
    }
    Advance();
}

void Playback::Advance() {
    Now = Time.Now();
    while (const auto due = NextDue(Now))
        CarryOut(*due, Now);
}

// What falls due first: one preset's end can begin another.
std::optional<Playback::Due> Playback::NextDue(Clock::TimePoint until) const {
    std::optional<Due> next;
    for (const std::int32_t pk : Active) {
        const auto at = Entries.at(pk).DueAt();
        if (at && *at <= until && (!next || *at < next->At)) next = {*at, pk};
    }
    return next;
}

// Gives the preset that begins or goes on through a link, or 0.
std::int32_t Playback::CarryOut(const Due& due, Clock::TimePoint until) {
    PlayEntry& entry = Entries.at(due.PK);
    if (!entry.Playing->HeldUntil) return FinishPass(entry, due.At, until);
    entry.Playing->LetGo(due.At);
    return 0;
}

PlayState Playback::StateOf(std::int32_t pk) const {
    const auto found = Entries.find(pk);
    if (found == Entries.end()) return {};
    const PlayEntry& entry = found->second;
    const auto& run = entry.Playing;
    return {
        .TRT = entry.TRT, .CurrentLoop = run ? run->Pass : 0, .Playing = run.has_value(), .Paused = run && run->Paused};
}

std::vector<PlayPosition> Playback::Positions() {
    std::vector<PlayPosition> positions;
    for (const std::int32_t pk : Active) {
        PlayEntry& entry = Entries.at(pk);
        const auto& run = entry.Playing;
        const nanoseconds elapsed = run ? run->Elapsed(Now) : entry.CuedElapsed();
        PlayPosition position{.PK = pk, .RemainingMS = RemainingMS(entry, elapsed)};
        if (run && run->Moves()) position.Levels = LevelsOf(entry, elapsed);
        positions.push_back(position);
    }
    return positions;
}

StereoLevels Playback::LevelsOf(PlayEntry& entry, nanoseconds elapsed) const {
    std::vector<std::shared_ptr<const Envelope>> envelopes;
    for (const std::string& path : entry.Assets) {
        auto& levels = entry.Playing->Media[path].Levels;
        if (!levels) levels = Catalog.Levels(path);
        envelopes.push_back(levels);
    }
    return LevelsAt(*entry.Preset, envelopes, {entry.Window(), elapsed, entry.Playing->Pass == 1, entry.LastPass()});
}

bool Playback::Rolling() const {
    return std::any_of(Active.begin(), Active.end(),
                       [this](std::int32_t pk) { return Entries.at(pk).DueAt().has_value(); });
}

PlayEntry& Playback::Find(std::int32_t pk) {
    const auto found = Entries.find(pk);
    if (found == Entries.end()) throw Fault(FaultKind::NotFound, "no such preset");
    return found->second;
}

PlayEntry* Playback::FindLinked(std::int32_t pk) {
    const auto found = Entries.find(pk);
    if (found != Entries.end()) return &found->second;
    if (!Origin) return nullptr;
    const auto linked = Origin->Entries.find(pk);
    return linked == Origin->Entries.end() ? nullptr : &Entries.emplace(pk, linked->second).first->second;
}

bool Playback::UsesHeldAsset(const PlayEntry& entry) const {
    return std::any_of(entry.Assets.begin(), entry.Assets.end(),
                       [this](const std::string& path) { return HeldAssets.contains(path); });
}

std::optional<std::int32_t> Playback::LengthOf(PlayEntry& entry, const std::string& path) const {
    if (!entry.Playing) return Catalog.DurationMS(path);
    auto& length = entry.Playing->Media[path].LengthMS;
    if (!length) length = Catalog.DurationMS(path);
    return length;
}

void Playback::RefreshLength(PlayEntry& entry) {
    std::optional<std::int32_t> longest;
    if (entry.Assets.empty()) longest = 0;
    for (const std::string& path : entry.Assets) {
        const auto length = LengthOf(entry, path);
        if (length) longest = std::max(longest.value_or(0), *length);
    }
    // An edit to files that are not probed yet must not end a run.
    if (!longest && entry.Playing && !entry.Playing->Waiting) return;
    if (entry.TRT != longest.value_or(0)) NoteChange(entry);
    entry.TRT = longest.value_or(0);
    entry.LengthKnown = longest.has_value();
}

// Lets a run that waits for its length move from here on, when the length is known.
void Playback::SetOff(PlayEntry& entry, Clock::TimePoint at) {
    if (!entry.Playing || !entry.Playing->Waiting || !entry.LengthKnown) return;
    PlayRun& run = *entry.Playing;
    run.Waiting = false;
    run.Base = entry.StartElapsed();
    run.Anchor = at;
    entry.Cue.reset();
    if (run.HeldUntil) run.HeldUntil = std::max(*run.HeldUntil, at);
    if (run.HeldUntil && IsPrimed(entry)) run.HeldUntil = OnRefresh(at, run.Base);
}

void Playback::Begin(PlayEntry& entry, Clock::TimePoint at, std::uint64_t place, bool cold) {
    entry.Playing.emplace().Place = place;
    ++entry.Runs;
    if (cold) entry.Playing->HeldUntil = at + ColdTakeLimit;
    RefreshLength(entry);
    SetOff(entry, at);
    Active.insert(entry.Preset->pk());
    NoteChange(entry);
}

void Playback::Resume(PlayEntry& entry, Clock::TimePoint at) {
    PlayRun& run = *entry.Playing;
    run.Paused = false;
    run.Anchor = at;
    // A limit that passed during the pause must not let it begin in the past.
    if (run.HeldUntil) run.HeldUntil = std::max(*run.HeldUntil, at);
    NoteChange(entry);
}

void Playback::Stop(PlayEntry& entry) {
    entry.Cue.reset();
    Active.erase(entry.Preset->pk());
    if (!entry.Playing) return;
    entry.Playing.reset();
    RefreshLength(entry);
    NoteChange(entry);
}

// Passes that have begun and ended until then are left out: they concern nobody else.
std::int32_t Playback::FinishPass(PlayEntry& entry, Clock::TimePoint at, Clock::TimePoint until) {
    const Trim window = entry.Window();
    PlayRun& run = *entry.Playing;
    // A pass without length would begin and end for ever.
    if (!entry.LastPass() && window.Length() > nanoseconds(0)) {
        const std::int64_t passed = PassesUntil(entry, (until - at) / window.Length());
        run.Pass += static_cast<std::uint32_t>(1 + passed);
        run.Base = window.Start;
        run.Anchor = at + passed * window.Length();
        Tell(entry, {.Kind = What::Looped, .At = run.Anchor, .Pass = run.Pass});
        NoteChange(entry);
        return 0;
    }
    if (entry.Preset->freeze_at_end()) {
        run.Base = window.End;
        run.Paused = true;
        Tell(entry, {.Kind = What::Held, .At = at});
        NoteChange(entry);
        return 0;
    }
    const std::uint64_t place = run.Place;
    Tell(entry, {.Kind = What::Ended, .At = at});
    Stop(entry);
    return FollowLink(entry, at, place);
}

// Walks over linked presets without length until one plays or the walk comes back to where it has been.
std::int32_t Playback::FollowLink(const PlayEntry& ended, Clock::TimePoint at, std::uint64_t place) {
    std::int32_t pk = ended.Preset->link();
    std::set<std::int32_t> passed;
    while (pk > 0 && passed.insert(pk).second) {
        PlayEntry* const entry = FindLinked(pk);
        if (!entry || entry->Retired || UsesHeldAsset(*entry)) {
            if (!Origin) spdlog::warn("following a link: preset {} is not there or on its way out", pk);
            return 0;
        }
        if (!entry->Instant()) {
            const bool resumes = entry->Resumes();
            if (resumes)
                Resume(*entry, at);
            else
                Begin(*entry, at, place, false);
            Tell(*entry, {.Kind = resumes ? What::Resumed : What::Linked, .At = at, .From = ended.Preset->pk()});
            return pk;
        }
        pk = entry->Preset->link();
    }
    return 0;
}

// A look-ahead tells nothing: it may not come to that.
void Playback::Tell(const PlayEntry& entry, PlayEvent event) {
    if (Origin) return;
    event.Preset = entry.Preset;
    event.Run = entry.Runs;
    if (entry.Playing && !event.RemainingMS && entry.LengthKnown)
        event.RemainingMS = RemainingMS(entry, entry.Playing->Elapsed(event.At));
    Events.push_back(std::move(event));
}

void Playback::NoteChange(const PlayEntry& entry) {
    ChangedStates.insert(entry.Preset->pk());
}

void Playback::NoteUses(const PlayEntry& entry, bool uses) {
    for (const std::string& path : entry.Assets) {
        auto& users = Users[path];
        if (uses) users.insert(entry.Preset->pk());
        if (!uses) users.erase(entry.Preset->pk());
        if (users.empty()) Users.erase(path);
    }
}

// Makes the position of this moment the one to count from, before something that it is computed with changes.
void Playback::Rebase(PlayEntry& entry) const {
    if (!entry.Playing) return;
    entry.Playing->Base = entry.Playing->Elapsed(Now);
    entry.Playing->Anchor = Now;
}

}  // namespace ZorvicUnit
