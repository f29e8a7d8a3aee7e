#pragma once

#include <zorvic/types.h>

#include <cstdint>
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

    /// An asset that is not READY, or has no checksum yet, is never probed. One whose probe failed is not probed again
    /// until it changes; a probe that a lost link ended does not count.
    Zorvic::AssetMetadata* LookupAsset(const Zorvic::Asset& asset);
    /// Reads the unit's whole asset list on every call: for user actions, not for periodic updates. An asset that is
    /// not READY, or has no checksum yet, is probed on every call.
    Zorvic::AssetMetadata* LookupAsset(const std::string& path);
    /// Another number whenever a look-up met the asset with another content or status than the one before, or not at
    /// all; 0 for an asset that is not known to be there. So what a look-up by path answered, a failure too, can be
    /// kept until this changes. Asks the unit nothing.
    std::uint64_t Revision(const std::string& path) const;

private:
    struct MDMember {
        Zorvic::Asset AssetInfo;  ///< as it was when the metadata was read
        Zorvic::AssetMetadata Metadata;
    };

    struct Sighting {
        std::string Checksum;
        Zorvic::AssetState Status;
        std::uint64_t Revision;
        bool HasFailed;  ///< the unit was asked and could not tell
    };

    // All: caller holds Lock.
    void Note(const Zorvic::Asset& asset);
    const Zorvic::AssetMetadata* FindFresh(const Zorvic::Asset& asset) const;
    Zorvic::AssetMetadata* Probe(const Zorvic::Asset& asset);

    mutable std::mutex Lock;                         ///< guards all below
    std::unordered_map<std::string, MDMember> Data;  ///< by asset path; entries are never removed
    std::unordered_map<std::string, Sighting> Seen;  ///< by asset path
    std::uint64_t LastRevision = 0;
    const std::string GUID;
};
