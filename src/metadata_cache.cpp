#include "metadata_cache.h"

#include "sessionmanager.h"

#include <algorithm>
#include <memory>
#include <vector>

MetadataCache::MetadataCache(const std::string& guid) : GUID(guid) {}

Zorvic::AssetMetadata* MetadataCache::LookupAsset(const Zorvic::Asset& asset) {
    const std::scoped_lock lock(Lock);
    Note(asset);
    if (asset.Status != Zorvic::ZORVIC_ASSETSTATE_READY || asset.Checksum.empty()) return nullptr;
    if (const auto* metadata = FindFresh(asset)) return new Zorvic::AssetMetadata(*metadata);
    // Every refresh of a list would ask the unit again.
    return Seen[asset.FullPath].HasFailed ? nullptr : Probe(asset);
}

Zorvic::AssetMetadata* MetadataCache::LookupAsset(const std::string& path) {
    const auto handle = FindSession(GUID);
    std::vector<Zorvic::Asset> assets;
    if (!handle || handle->GetSession()->GetAssets(assets) != Zorvic::ZORVIC_STATUS_OK) assets.clear();
    const auto asset = std::find_if(assets.begin(), assets.end(),
                                    [&path](const Zorvic::Asset& candidate) { return candidate.FullPath == path; });
    const std::scoped_lock lock(Lock);
    if (asset == assets.end()) {
        Seen.erase(path);
        return nullptr;
    }
    Note(*asset);
    if (const auto* metadata = FindFresh(*asset)) return new Zorvic::AssetMetadata(*metadata);
    return Probe(*asset);
}

std::uint64_t MetadataCache::Revision(const std::string& path) const {
    const std::scoped_lock lock(Lock);
    const auto found = Seen.find(path);
    return found == Seen.end() ? 0 : found->second.Revision;
}

void MetadataCache::Note(const Zorvic::Asset& asset) {
    const auto found = Seen.find(asset.FullPath);
    if (found != Seen.end() && found->second.Checksum == asset.Checksum && found->second.Status == asset.Status) return;
    Seen[asset.FullPath] = {asset.Checksum, asset.Status, ++LastRevision, false};
}

const Zorvic::AssetMetadata* MetadataCache::FindFresh(const Zorvic::Asset& asset) const {
    const auto found = Data.find(asset.FullPath);
    if (found == Data.end() || asset.Checksum.empty()) return nullptr;
    const auto& known = found->second.AssetInfo;
    return asset.Checksum == known.Checksum && asset.Status == known.Status ? &found->second.Metadata : nullptr;
}

Zorvic::AssetMetadata* MetadataCache::Probe(const Zorvic::Asset& asset) {
    const auto handle = FindSession(GUID);
    if (!handle) return nullptr;
    Zorvic::AssetMetadata metadata;
    const auto status = handle->GetSession()->ReadAssetMetadata(asset.FullPath, metadata);
    // A lost link says nothing about the asset.
    if (status == Zorvic::ZORVIC_STATUS_NETWORKERROR) {
        Seen.erase(asset.FullPath);
    } else {
        Seen[asset.FullPath].HasFailed = status != Zorvic::ZORVIC_STATUS_OK;
    }
    if (status != Zorvic::ZORVIC_STATUS_OK) return nullptr;
    Data[asset.FullPath] = {asset, metadata};
    return new Zorvic::AssetMetadata(metadata);
}
