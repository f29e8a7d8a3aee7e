#pragma once

#include <zorvic/types.h>

#include <mutex>
#include <string>
#include <unordered_map>

/// What the probes of one unit's assets found, so that an unchanged asset is probed once.
///
/// Results are newly allocated and owned by the caller. Null means that no metadata is available: no session, unknown
/// path, unready asset or failed probe. GUI thread only: the two look-ups take this lock and the registry's in opposite
/// orders.
class MetadataCache {
public:
    explicit MetadataCache(const std::string& guid);
    MetadataCache(const MetadataCache&) = delete;
    MetadataCache& operator=(const MetadataCache&) = delete;

    /// An asset that is not READY, or has no checksum yet, is never probed.
    Zorvic::AssetMetadata* LookupAsset(const Zorvic::Asset& asset);
    /// Reads the unit's whole asset list on every call: for user actions, not for periodic updates. An asset that is
    /// not READY, or has no checksum yet, is probed on every call.
    Zorvic::AssetMetadata* LookupAsset(const std::string& path);

private:
    struct MDMember {
        Zorvic::Asset AssetInfo;  ///< as it was when the metadata was read
        Zorvic::AssetMetadata Metadata;
    };

    // Both: caller holds Lock.
    const Zorvic::AssetMetadata* FindFresh(const Zorvic::Asset& asset) const;
    Zorvic::AssetMetadata* Probe(const Zorvic::Asset& asset);

    std::mutex Lock;                                 ///< guards Data
    std::unordered_map<std::string, MDMember> Data;  ///< by asset path; entries are never removed
    const std::string GUID;
};
