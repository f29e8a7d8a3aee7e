#pragma once

#include "assets/asset_store.h"

#include <zorvic/v1/unit.pb.h>

#include <cstdint>
#include <mutex>
#include <string>

namespace ZorvicUnit {

class UnitModel;

/// Carries changes of the asset store to the model, in their order, and commands on assets the other way. Safe to use
/// from several threads. The asset store calls it until the store's destructor has returned.
class AssetLink {
public:
    /// Both must outlive the object's last call.
    AssetLink(AssetStore& assets, UnitModel& model);

    /// Shows what has changed; gives the revision that holds it.
    std::uint64_t Pull();
    /// Shows the drives and how full they are; takes up to 120 ms for each that is slow.
    void ShowDrives();

    /// Throws Fault Refused while a preset that uses the asset plays.
    std::uint64_t Delete(const std::string& path);
    std::uint64_t Install(const std::string& path);
    zorvic::v1::AssetMetadata ReadMetadata(const std::string& path) const { return Assets.ReadMetadata(path); }
    zorvic::v1::ListDirectoryReply ListDirectory(const std::string& drive, const std::string& path);

private:
    std::mutex PullLock;  ///< keeps the order between taking changes and showing them; taken before the model's locks
    AssetStore& Assets;
    UnitModel& Model;
};

}  // namespace ZorvicUnit
