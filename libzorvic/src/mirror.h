#pragma once

#include "record_list.h"
#include "unknown_fields.h"
#include "wire.h"

#include <zorvic/types.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Zorvic::Internal {

struct StoredAsset {
    Asset Record;
    std::optional<AssetMetadata> Metadata;  // absent until the unit has probed the file
};

struct KeyOfPreset {
    std::int32_t operator()(const std::shared_ptr<const Preset>& preset) const { return preset->PK; }
};
struct KeyOfAsset {
    const std::string& operator()(const std::shared_ptr<const StoredAsset>& asset) const {
        return asset->Record.FullPath;
    }
};
struct KeyOfState {
    std::int32_t operator()(const PresetState& state) const { return state.PK; }
};

using PresetList = RecordList<std::shared_ptr<const Preset>, KeyOfPreset>;
using AssetList = RecordList<std::shared_ptr<const StoredAsset>, KeyOfAsset>;
using StateList = RecordList<PresetState, KeyOfState>;

const Preset* FindPreset(const PresetList& presets, std::int32_t pk);
const StoredAsset* FindAsset(const AssetList& assets, const std::string& path);

// Record by record, so that a caller's list from the last time gives its memory to the new one: a console that polls
// into the same list pays a quarter of what a new list costs.
void CopyRecords(const PresetList& from, std::vector<Preset>& to);
void CopyRecords(const AssetList& from, std::vector<Asset>& to);
void CopyRecords(const StateList& from, std::vector<PresetState>& to);

/// Everything a unit has told at one revision. Never changes once published; what did not change is shared with the
/// revision before. The lists are never null.
struct UnitState {
    std::uint64_t Revision = 0;
    std::uint64_t Run = 0;  // of the unit's program, in which the revision counts; 0 from one that never resumes
    std::string GUID;
    std::string Nickname;
    KonaHardwareState Hardware;
    std::shared_ptr<const PresetList> Presets = std::make_shared<PresetList>();
    std::shared_ptr<const AssetList> Assets = std::make_shared<AssetList>();
    std::shared_ptr<const UnknownFields> Unknown = std::make_shared<UnknownFields>();
    std::shared_ptr<const StateList> PresetStates = std::make_shared<StateList>();
    std::shared_ptr<const std::vector<Drive>> Drives = std::make_shared<std::vector<Drive>>();
    std::shared_ptr<const std::vector<TimeCode>> TimeCodes = std::make_shared<std::vector<TimeCode>>();
};

/// The unit's state as one state stream tells it. One thread feeds it, any thread reads it.
class Mirror {
public:
    /// Only the unit with this GUID is taken in; any unit when it is empty. A stream that begins with changes instead
    /// of a snapshot goes on from the known state; without one it is refused.
    explicit Mirror(std::string guid, std::shared_ptr<const UnitState> known = nullptr);

    /// The certificate of whoever answers names this unit; throws LinkError when it is not the one that is wanted. To
    /// be called before the first frame.
    void Certify(const std::string& guid);

    /// Takes in one frame and returns the kinds of change (EventBit) that it made visible; nothing shows while more
    /// frames of the same revision are to come. Throws LinkError for a frame that makes no sense or that comes from
    /// another unit; what was published before stays.
    unsigned Apply(const Wire::Frame& frame);

    /// The newest complete revision; null before the first snapshot.
    std::shared_ptr<const UnitState> Current() const;
    /// Waits until that revision shows, the mirror is closed or the time is over.
    void WaitForRevision(std::uint64_t revision, std::chrono::steady_clock::time_point deadline) const;
    /// Ends every wait: no frame will come any more.
    void Close();

private:
    void StartFrame(const Wire::Frame& frame);
    void ApplyPiece(const std::string& bytes);
    void ApplyIdentity(const Wire::Identity& identity);
    void ApplyPresets(const Wire::PresetChange& change);
    void ApplyStates(const Wire::PresetStates& states);
    void ApplyStateChange(const Wire::PresetStateChange& change);
    void ApplyAssets(const Wire::AssetChange& change);
    void RememberUnknown(const Wire::Preset& preset);
    unsigned Publish();

    // Used by the feeding thread only: the revision in the making.
    std::string GUID;
    PresetList Presets;
    AssetList Assets;
    StateList States;
    UnknownFields Unknown;
    UnitState Next;
    unsigned Changes = 0;     // kinds of change in Next that are not published yet
    bool InSnapshot = false;  // its last frame has not come yet
    bool Resumable = false;   // what is above is a whole state

    mutable std::mutex Lock;  // guards Published and Closed
    mutable std::condition_variable Changed;
    std::shared_ptr<const UnitState> Published;
    bool Closed = false;
};

}  // namespace Zorvic::Internal
