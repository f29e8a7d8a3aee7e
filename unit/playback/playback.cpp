#include "playback/playback.h"

#include "fault.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <limits>
#include <unordered_set>

namespace ZorvicUnit {

using std::chrono::duration_cast;
using std::chrono::milliseconds;

namespace {

// What the stored points (remaining times) mean for a running time of trt ms. An in point of 0 is not set; one that
// does not lie before the out point or lies beyond trt is ignored, and so is an out point outside of the running time.
// So the length is 0 only when trt is.
Trim EffectiveTrim(std::int32_t inPosition, std::int32_t outPosition, std::int32_t trt) {
    const std::int32_t out = outPosition > 0 && outPosition < trt ? outPosition : 0;
    const std::int32_t in = inPosition > out && inPosition <= trt ? inPosition : trt;
    return {.Start = milliseconds(trt - in), .End = milliseconds(trt - out)};
}

std::vector<std::string> PathsOf(const zorvic::v1::Preset& preset) {
    std::set<std::string> paths;
    for (const auto& canvas : preset.canvases()) {
        for (const auto& asset : canvas.assets())
            paths.insert(asset.full_path());
    }
    return {paths.begin(), paths.end()};
}

}  // namespace

struct Playback::Run {
    struct Medium {
        std::optional<std::int32_t> LengthMS;
        std::shared_ptr<const Envelope> Levels;
    };

    Clock::TimePoint Anchor;  ///< when the position was Base; meaningless while paused or waiting
    Duration Base{0};         ///< elapsed time from the start of the media
    std::uint32_t Pass = 1;
    bool Paused = false;
    bool Waiting = true;                  ///< for the length of the media
    std::map<std::string, Medium> Media;  ///< by path, as this run met them

    bool Moves() const { return !Paused && !Waiting; }
    Duration Elapsed(Clock::TimePoint at) const { return Moves() ? Base + (at - Anchor) : Base; }
};

struct Playback::Entry {
    PresetPtr Preset;
    std::vector<std::string> Assets;  ///< their paths, each once
    std::int32_t TRT = 0;
    bool LengthKnown = false;
    bool Retired = false;
    std::optional<std::int32_t> Cue;  ///< remaining time at which the next run begins
    std::optional<Run> Playing;

    Trim Window() const { return EffectiveTrim(Preset->in_position(), Preset->out_position(), TRT); }
    bool Endless() const { return Preset->loop() == -1; }
    bool LastPass() const { return !Endless() && std::cmp_greater(Playing->Pass, Preset->loop()); }

    // Nothing to play and nothing that holds it: over at the moment it begins.
    bool Instant() const { return LengthKnown && TRT == 0 && !Endless() && !Preset->freeze_at_end(); }

    milliseconds CuedElapsed() const { return milliseconds(TRT - std::clamp(*Cue, 0, TRT)); }

    Duration StartElapsed() const {
        const Trim window = Window();
        // A cue that leaves nothing to play would end the take at once and fire the linked preset.
        return Cue && CuedElapsed() < window.End ? CuedElapsed() : window.Start;
    }

    std::optional<Clock::TimePoint> EndsAt() const {
        if (!Playing || !Playing->Moves()) return std::nullopt;
        const Trim window = Window();
        if (window.Length() == milliseconds(0) && Endless()) return std::nullopt;
        return Playing->Anchor + std::max(Duration(window.End) - Playing->Base, Duration(0));
    }
};

Playback::Playback(const Clock& clock, const AssetCatalog& catalog) : Time(clock), Catalog(catalog), Now(clock.Now()) {}

Playback::~Playback() = default;

void Playback::Put(PresetPtr preset) {
    Advance();
    Entry& entry = Entries[preset->pk()];
    Rebase(entry);
    entry.Assets = PathsOf(*preset);
    entry.Preset = std::move(preset);
    RefreshLength(entry);
    SetOff(entry, Now);
    ++Version;
    Advance();
}

void Playback::Remove(std::int32_t pk) {
    Active.erase(pk);
    Entries.erase(pk);
    ++Version;
}

void Playback::Clear() {
    Active.clear();
    Entries.clear();
    ++Version;
}

void Playback::Take(std::int32_t pk) {
    Advance();
    Entry& entry = Find(pk);
    if (entry.Retired) throw Fault(FaultKind::Refused, "it is being deleted");
    if (UsesHeldAsset(entry)) throw Fault(FaultKind::Refused, "an asset of it is being deleted");
    TakeAt(entry, Now);
    Advance();
}

void Playback::Pause(std::int32_t pk, std::optional<bool> wanted) {
    Advance();
    Entry& entry = Find(pk);
    if (!entry.Playing) throw Fault(FaultKind::Refused, "it does not play");
    if (wanted == entry.Playing->Paused) return;
    Rebase(entry);
    entry.Playing->Paused = !entry.Playing->Paused;
    ++Version;
    Advance();
}

void Playback::End(std::int32_t pk) {
    Advance();
    Stop(Find(pk));
}

void Playback::Seek(std::int32_t pk, std::uint32_t timeMS) {
    Advance();
    Entry& entry = Find(pk);
    const bool negative = timeMS > static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max());
    const std::int32_t remaining = negative ? 0 : static_cast<std::int32_t>(timeMS);
    if (!entry.Playing || entry.Playing->Waiting) {
        entry.Cue = remaining;
        Active.insert(pk);
        return;
    }
    entry.Playing->Base = milliseconds(entry.TRT - std::min(remaining, entry.TRT));
    entry.Playing->Anchor = Now;
    Advance();
}

void Playback::SetRetired(std::int32_t pk, bool retired) {
    Advance();
    Entry& entry = Find(pk);
    if (retired && entry.Playing) throw Fault(FaultKind::Refused, "it plays");
    entry.Retired = retired;
}

void Playback::HoldAsset(const std::string& path) {
    Advance();
    for (const std::int32_t pk : Active) {
        const Entry& entry = Entries.at(pk);
        if (entry.Playing && std::find(entry.Assets.begin(), entry.Assets.end(), path) != entry.Assets.end())
            throw Fault(FaultKind::Refused, fmt::format("preset {} plays it", pk));
    }
    HeldAssets.insert(path);
}

void Playback::ReleaseAsset(const std::string& path) {
    const auto held = HeldAssets.find(path);
    if (held != HeldAssets.end()) HeldAssets.erase(held);
}

void Playback::AssetsChanged(std::span<const std::string> paths) {
    Advance();
    const std::unordered_set<std::string> changed(paths.begin(), paths.end());
    for (auto& [pk, entry] : Entries) {
        if (std::none_of(entry.Assets.begin(), entry.Assets.end(),
                         [&](const std::string& path) { return changed.contains(path); }))
            continue;
        Rebase(entry);
        RefreshLength(entry);
        SetOff(entry, Now);
    }
    Advance();
}

// Takes what is due in the order in which it fell due: one preset's end can begin another.
void Playback::Advance() {
    Now = Time.Now();
    for (;;) {
        Entry* next = nullptr;
        Clock::TimePoint due = Now;
        for (const std::int32_t pk : Active) {
            Entry& entry = Entries.at(pk);
            const auto end = entry.EndsAt();
            if (!end || *end > due || (next && *end == due)) continue;
            next = &entry;
            due = *end;
        }
        if (!next) return;
        FinishPass(*next, due);
    }
}

PlayState Playback::StateOf(std::int32_t pk) const {
    const auto found = Entries.find(pk);
    if (found == Entries.end()) return {};
    const Entry& entry = found->second;
    const auto& run = entry.Playing;
    return {
        .TRT = entry.TRT, .CurrentLoop = run ? run->Pass : 0, .Playing = run.has_value(), .Paused = run && run->Paused};
}

std::vector<PlayPosition> Playback::Positions() {
    std::vector<PlayPosition> positions;
    for (const std::int32_t pk : Active) {
        Entry& entry = Entries.at(pk);
        const auto& run = entry.Playing;
        const auto elapsed = run ? duration_cast<milliseconds>(run->Elapsed(Now)) : entry.CuedElapsed();
        const auto remaining = std::clamp<std::int64_t>(entry.TRT - elapsed.count(), 0, entry.TRT);
        PlayPosition position{.PK = pk, .RemainingMS = static_cast<std::int32_t>(remaining)};
        if (run && run->Moves()) position.Levels = LevelsOf(entry, elapsed);
        positions.push_back(position);
    }
    return positions;
}

StereoLevels Playback::LevelsOf(Entry& entry, milliseconds elapsed) const {
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
                       [this](std::int32_t pk) { return Entries.at(pk).EndsAt().has_value(); });
}

Playback::Entry& Playback::Find(std::int32_t pk) {
    const auto found = Entries.find(pk);
    if (found == Entries.end()) throw Fault(FaultKind::NotFound, "no such preset");
    return found->second;
}

bool Playback::UsesHeldAsset(const Entry& entry) const {
    return std::any_of(entry.Assets.begin(), entry.Assets.end(),
                       [this](const std::string& path) { return HeldAssets.contains(path); });
}

std::optional<std::int32_t> Playback::LengthOf(Entry& entry, const std::string& path) const {
    if (!entry.Playing) return Catalog.DurationMS(path);
    auto& length = entry.Playing->Media[path].LengthMS;
    if (!length) length = Catalog.DurationMS(path);
    return length;
}

void Playback::RefreshLength(Entry& entry) {
    std::optional<std::int32_t> longest;
    if (entry.Assets.empty()) longest = 0;
    for (const std::string& path : entry.Assets) {
        const auto length = LengthOf(entry, path);
        if (length) longest = std::max(longest.value_or(0), *length);
    }
    // An edit to files that are not probed yet must not end a run.
    if (!longest && entry.Playing && !entry.Playing->Waiting) return;
    if (entry.TRT != longest.value_or(0)) ++Version;
    entry.TRT = longest.value_or(0);
    entry.LengthKnown = longest.has_value();
}

// Lets a run that waits for its length move from here on, when the length is known.
void Playback::SetOff(Entry& entry, Clock::TimePoint at) {
    if (!entry.Playing || !entry.Playing->Waiting || !entry.LengthKnown) return;
    entry.Playing->Waiting = false;
    entry.Playing->Base = entry.StartElapsed();
    entry.Playing->Anchor = at;
    entry.Cue.reset();
}

void Playback::Begin(Entry& entry, Clock::TimePoint at) {
    entry.Playing.emplace();
    RefreshLength(entry);
    SetOff(entry, at);
    Active.insert(entry.Preset->pk());
    ++Version;
}

void Playback::TakeAt(Entry& entry, Clock::TimePoint at) {
    auto& run = entry.Playing;
    const bool resumes = run && run->Paused && (run->Waiting || run->Base < entry.Window().End);
    if (!resumes) {
        Begin(entry, at);
        return;
    }
    run->Paused = false;
    run->Anchor = at;
    ++Version;
}

void Playback::Stop(Entry& entry) {
    entry.Cue.reset();
    Active.erase(entry.Preset->pk());
    if (!entry.Playing) return;
    entry.Playing.reset();
    RefreshLength(entry);
    ++Version;
}

void Playback::FinishPass(Entry& entry, Clock::TimePoint at) {
    const Trim window = entry.Window();
    Run& run = *entry.Playing;
    // A pass without length would begin and end for ever.
    if (!entry.LastPass() && window.Length() > milliseconds(0)) {
        ++run.Pass;
        run.Base = window.Start;
        run.Anchor = at;
        ++Version;
        return;
    }
    if (entry.Preset->freeze_at_end()) {
        run.Base = window.End;
        run.Paused = true;
        ++Version;
        return;
    }
    const std::int32_t link = entry.Preset->link();
    Stop(entry);
    if (link > 0) FollowLink(link, at);
}

// Walks over linked presets without length until one plays or the walk comes back to where it has been.
void Playback::FollowLink(std::int32_t pk, Clock::TimePoint at) {
    std::set<std::int32_t> passed;
    while (pk > 0 && passed.insert(pk).second) {
        const auto found = Entries.find(pk);
        if (found == Entries.end() || found->second.Retired || UsesHeldAsset(found->second)) {
            spdlog::warn("following a link: preset {} is not there or on its way out", pk);
            return;
        }
        if (!found->second.Instant()) {
            TakeAt(found->second, at);
            return;
        }
        pk = found->second.Preset->link();
    }
}

// Makes the position of this moment the one to count from, before something that it is computed with changes.
void Playback::Rebase(Entry& entry) const {
    if (!entry.Playing) return;
    entry.Playing->Base = entry.Playing->Elapsed(Now);
    entry.Playing->Anchor = Now;
}

}  // namespace ZorvicUnit
