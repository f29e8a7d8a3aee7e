#pragma once

#include "asset_catalog.h"
#include "clock.h"
#include "playback/levels.h"

#include <zorvic/v1/unit.pb.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace ZorvicUnit {

struct PlayEntry;

using PresetPtr = std::shared_ptr<const zorvic::v1::Preset>;

struct PlayState {
    std::int32_t TRT = 0;           ///< ms
    std::uint32_t CurrentLoop = 0;  ///< pass now playing, from 1; 0 when stopped
    bool Playing = false;           ///< also while paused
    bool Paused = false;
};

struct PlayPosition {
    std::int32_t PK = 0;
    std::int32_t RemainingMS = 0;  ///< before the end of the running time
    StereoLevels Levels{};         ///< 0 while nothing moves
};

/// What plays, as a clock: a position is computed from the moment at which it last jumped, never added up, so that it
/// does not drift and a late call finds every pass and every linked preset begun at its right time.
///
/// A preset whose assets have no known length yet plays without moving, and starts to move when the length is known.
/// A run keeps the lengths and levels that it met: a file that is replaced or goes away under it does not change it.
/// Not safe for use from several threads; the owner holds one lock around every call.
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

    /// Carries out everything that is due by now. The readers below show the moment of the last call of a member that
    /// is not const.
    void Advance();

    /// Counts up whenever a PlayState may have changed.
    std::uint64_t StatesVersion() const { return Version; }
    /// A stopped state for an unknown preset.
    PlayState StateOf(std::int32_t pk) const;
    /// Every preset that plays, is paused or is cued, by key.
    std::vector<PlayPosition> Positions();
    /// True while any position moves.
    bool Rolling() const;

private:
    PlayEntry& Find(std::int32_t pk);
    bool UsesHeldAsset(const PlayEntry& entry) const;
    std::optional<std::int32_t> LengthOf(PlayEntry& entry, const std::string& path) const;
    void RefreshLength(PlayEntry& entry);
    void SetOff(PlayEntry& entry, Clock::TimePoint at);
    StereoLevels LevelsOf(PlayEntry& entry, std::chrono::nanoseconds elapsed) const;
    void Begin(PlayEntry& entry, Clock::TimePoint at);
    void TakeAt(PlayEntry& entry, Clock::TimePoint at);
    void Stop(PlayEntry& entry);
    void FinishPass(PlayEntry& entry, Clock::TimePoint at);
    void FollowLink(std::int32_t pk, Clock::TimePoint at);
    void Rebase(PlayEntry& entry) const;

    const Clock& Time;
    const AssetCatalog& Catalog;
    std::map<std::int32_t, PlayEntry> Entries;
    std::set<std::int32_t> Active;  ///< keys of the entries that have a run or a cue
    std::multiset<std::string> HeldAssets;
    Clock::TimePoint Now;
    std::uint64_t Version = 1;
};

}  // namespace ZorvicUnit
