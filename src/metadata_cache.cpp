#include "metadata_cache.h"

#include "sessionmanager.h"

#include <algorithm>
#include <memory>
#include <vector>

MetadataCache::MetadataCache(const std::string& guid) : GUID(guid) {}

Zorvic::AssetMetadata* MetadataCache::LookupAsset(const Zorvic::Asset& asset) {
    if (asset.Status != Zorvic::ZORVIC_ASSETSTATE_READY || asset.Checksum.empty()) return nullptr;
    const std::lock_guard lock(Lock);
    if (const auto* metadata = FindFresh(asset)) return new Zorvic::AssetMetadata(*metadata);
    return Probe(asset);
}

Zorvic::AssetMetadata* MetadataCache::LookupAsset(const std::string& path) {
    const auto handle = FindSession(GUID);
    if (!handle) return nullptr;
    std::vector<Zorvic::Asset> assets;
    if (handle->GetSession()->GetAssets(assets) != Zorvic::ZORVIC_STATUS_OK) return nullptr;
    const auto asset = std::find_if(assets.begin(), assets.end(),
                                    [&path](const Zorvic::Asset& candidate) { return candidate.FullPath == path; });
    if (asset == assets.end()) return nullptr;

    const std::lock_guard lock(Lock);
    if (const auto* metadata = FindFresh(*asset)) return new Zorvic::AssetMetadata(*metadata);
    return Probe(*asset);
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
    if (handle->GetSession()->ReadAssetMetadata(asset.FullPath, metadata) != Zorvic::ZORVIC_STATUS_OK) return nullptr;
    Data[asset.FullPath] = {asset, metadata};
    return new Zorvic::AssetMetadata(metadata);
}
