#pragma once

#include "asset_catalog.h"
#include "clock.h"
#include "playback/outlook.h"
#include "playback/play_event.h"
#include "playback/play_state.h"

#include <zorvic/v1/unit.pb.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ZorvicUnit {

struct PlayEntry;
struct PlayRun;

using PresetPtr = std::shared_ptr<const zorvic::v1::Preset>;

/// What plays, as a clock: a position is computed from the moment at which it last jumped, never added up, so that it
/// does not drift and a late call finds every pass and every linked preset begun at its right time.
///
/// A preset whose assets have no known length yet plays without moving, and starts to move when the length is known.
/// A run keeps the lengths and levels that it met: a file that is replaced or goes away under it does not change it.
/// Runs lie in a stack: each take puts its run on top, a linked one inherits the place of the one that it follows, and
/// a paused one keeps its place when it goes on. Not safe for use from several threads; the owner holds one lock around
/// every call.
class Playback {
public:
    /// Both must outlive the object.
    Playback(const Clock& clock, const AssetCatalog& catalog);
    ~Playback();

    /// Adds a preset, or takes over its edited state at once, playing or not.
    void Put(PresetPtr preset);
    /// Forgets a preset, playing or not.
    void Remove(std::int32_t pk);
    /// Ends everything and forgets all presets.
    void Clear();

    /// Starts at the in point (or at a cued position); resumes a paused preset; restarts a playing one, and one that is
    /// paused with nothing left to play. Throws Fault NotFound or Refused (preset or asset on its way out).
    void Take(std::int32_t pk);
    /// Pauses or goes on, whichever is wanted; without a wish the other one than before. Throws Fault NotFound, or
    /// Refused when the preset does not play.
    void Pause(std::int32_t pk, std::optional<bool> wanted = std::nullopt);
    /// Stops; a preset that does not play loses its cued position. Throws Fault NotFound.
    void End(std::int32_t pk);
    /// Jumps to a remaining time, clamped to the running time; above the signed range it counts as 0. Cues the next
    /// take of a preset that does not play. Throws Fault NotFound.
    void Seek(std::int32_t pk, std::uint32_t timeMS);

    /// While set, the preset can not begin to play. Setting it throws Fault NotFound, or Refused while it plays.
    void SetRetired(std::int32_t pk, bool retired);
    /// While held, no preset with this asset can begin to play. Throws Fault Refused while one plays.
    void HoldAsset(const std::string& path);
    void ReleaseAsset(const std::string& path);

    /// Looks up the lengths of these assets again.
    void AssetsChanged(std::span<const std::string> paths);

    /// While on, a take that begins a run of assets moves when its first pictures are ready, so that its start is not
    /// cut off, but at the latest after ColdTakeLimit. Until then it plays and stands at its start. Links are not held:
    /// they are known ahead. Turned off it lets go of those it holds.
    ///
    /// Outputs light up at whole multiples of `refresh`, when it is not 0. What is asked for (a take, going on, a seek)
    /// then moves from the next of these moments at which its pictures begin, so that they light up neither before
    /// their sound nor behind it. Links and loops are not moved: their seam would show.
    void HoldColdTakes(bool on, std::chrono::nanoseconds refresh = {});
    /// All runs, begun or next, whose pictures are ready at the position at which they begin. Replaces the list before;
    /// held runs of the list move from now on.
    void SetPrimed(std::vector<RunStart> ready);
    /// Lets the run move from now on, if it is held; wherever its pictures are.
    void MediaReady(std::int32_t pk, std::uint64_t run);
    static constexpr std::chrono::milliseconds ColdTakeLimit{400};

    /// Carries out everything that is due by now. The readers below show the moment of the last call of a member that
    /// is not const.
    void Advance();
    Clock::TimePoint ShownAt() const { return Now; }

    /// What has happened since the last call, in its order.
    std::vector<PlayEvent> TakeEvents() { return std::exchange(Events, {}); }

    /// Keys of all presets whose PlayState may have changed since the last call, also of those that are gone.
    std::set<std::int32_t> TakeChangedStates() { return std::exchange(ChangedStates, {}); }
    /// A stopped state for an unknown preset.
    PlayState StateOf(std::int32_t pk) const;
    /// Every preset that plays, is paused or is cued, by key.
    std::vector<PlayPosition> Positions();
    /// True while any position moves, or is held with its limit running.
    bool Rolling() const;

    /// What plays from now on. Changes nothing.
    ZorvicUnit::Outlook Outlook(Clock::TimePoint until) const;
    /// The run that a take would begin now, standing at its start; nothing while no take can or the length is unknown.
    std::optional<OutlookLayer> NextRun(std::int32_t pk, Clock::TimePoint until) const;
    /// Counts up with everything that may change an outlook or a next run, but not when it comes true.
    std::uint64_t OutlookVersion() const { return Plans; }

private:
    struct Due {
        Clock::TimePoint At;
        std::int32_t PK = 0;
    };

    /// Looks ahead for the origin: a copy of what plays, taking over links' targets when they are reached.
    explicit Playback(const Playback* origin);

    PlayEntry& Find(std::int32_t pk);
    PlayEntry* FindLinked(std::int32_t pk);
    bool UsesHeldAsset(const PlayEntry& entry) const;
    std::optional<std::int32_t> LengthOf(PlayEntry& entry, const std::string& path) const;
    void RefreshLength(PlayEntry& entry);
    void SetOff(PlayEntry& entry, Clock::TimePoint at);
    StereoLevels LevelsOf(PlayEntry& entry, std::chrono::nanoseconds elapsed) const;
    void Begin(PlayEntry& entry, Clock::TimePoint at, std::uint64_t place, bool cold);
    void Resume(PlayEntry& entry, Clock::TimePoint at);
    void Stop(PlayEntry& entry);
    std::optional<Due> NextDue(Clock::TimePoint until) const;
    std::int32_t CarryOut(const Due& due, Clock::TimePoint until);
    std::int32_t FinishPass(PlayEntry& entry, Clock::TimePoint at, Clock::TimePoint until);
    std::int32_t FollowLink(const PlayEntry& ended, Clock::TimePoint at, std::uint64_t place);
    void Rebase(PlayEntry& entry) const;
    void Tell(const PlayEntry& entry, PlayEvent event);
    void NoteChange(const PlayEntry& entry);
    void NoteUses(const PlayEntry& entry, bool uses);
    bool IsPrimed(const PlayEntry& entry) const;
    Clock::TimePoint OnRefresh(Clock::TimePoint at, std::chrono::nanoseconds elapsed) const;
    void MoveOnRefresh(PlayRun& run) const;
    template <typename Wanted>
    void ReleaseHeld(const Wanted& wanted);
    ZorvicUnit::Outlook Unroll(Clock::TimePoint until);

    const Clock& Time;
    const AssetCatalog& Catalog;
    const Playback* const Origin = nullptr;  ///< of a look-ahead
    std::map<std::int32_t, PlayEntry> Entries;
    std::unordered_map<std::string, std::set<std::int32_t>> Users;  ///< of each asset: keys of the entries
    std::set<std::int32_t> Active;                                  ///< keys of the entries that have a run or a cue
    std::multiset<std::string> HeldAssets;
    std::vector<RunStart> Primed;
    bool ColdTakesHeld = false;
    std::chrono::nanoseconds Refresh{0};
    std::uint64_t Takes = 0;  ///< those that began a run: the place of the last one in the stack
    std::vector<PlayEvent> Events;
    Clock::TimePoint Now;
    std::set<std::int32_t> ChangedStates;
    std::uint64_t Plans = 1;
};

}  // namespace ZorvicUnit
