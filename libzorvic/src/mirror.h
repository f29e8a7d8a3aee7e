#pragma once

#include "unknown_fields.h"
#include "wire.h"

#include <zorvic/types.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
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

using PresetList = std::vector<std::shared_ptr<const Preset>>;      // in order of PK
using AssetList = std::vector<std::shared_ptr<const StoredAsset>>;  // in order of path

const Preset* FindPreset(const PresetList& presets, std::int32_t pk);
const StoredAsset* FindAsset(const AssetList& assets, const std::string& path);

// Record by record, so that a caller's list from the last time gives its memory to the new one: a console that polls
// into the same list pays a quarter of what a new list costs.
void CopyRecords(const PresetList& from, std::vector<Preset>& to);
void CopyRecords(const AssetList& from, std::vector<Asset>& to);

/// Everything a unit has told at one revision. Never changes once published; what did not change is shared with the
/// revision before. The lists are never null.
struct UnitState {
    std::uint64_t Revision = 0;
    std::string GUID;
    std::string Nickname;
    KonaHardwareState Hardware;
    std::shared_ptr<const PresetList> Presets = std::make_shared<PresetList>();
    std::shared_ptr<const AssetList> Assets = std::make_shared<AssetList>();
    std::shared_ptr<const UnknownFields> Unknown = std::make_shared<UnknownFields>();
    std::shared_ptr<const std::vector<PresetState>> PresetStates =
        std::make_shared<std::vector<PresetState>>();  // by PK
    std::shared_ptr<const std::vector<Drive>> Drives = std::make_shared<std::vector<Drive>>();
    std::shared_ptr<const std::vector<TimeCode>> TimeCodes = std::make_shared<std::vector<TimeCode>>();
};

/// The unit's state as one state stream tells it. One thread feeds it, any thread reads it.
class Mirror {
public:
    /// Only the unit with this GUID is taken in; any unit when it is empty.
    explicit Mirror(std::string guid);

    /// The certificate of whoever answers names this unit; throws LinkError when it is not the one that is wanted. To be
    /// called before the first frame.
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
    void ApplyAssets(const Wire::AssetChange& change);
    void RememberUnknown(const Wire::Preset& preset);
    unsigned Publish();

    // Used by the feeding thread only: the revision in the making.
    std::string GUID;
    std::map<std::int32_t, std::shared_ptr<const Preset>> Presets;
    std::map<std::string, std::shared_ptr<const StoredAsset>> Assets;
    UnknownFields Unknown;
    UnitState Next;
    unsigned Changes = 0;     // kinds of change in Next that are not published yet
    bool InSnapshot = false;  // its last frame has not come yet

    mutable std::mutex Lock;  // guards Published and Closed
    mutable std::condition_variable Changed;
    std::shared_ptr<const UnitState> Published;
    bool Closed = false;
};

}  // namespace Zorvic::Internal
