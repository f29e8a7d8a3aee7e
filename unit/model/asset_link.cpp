#include "model/asset_link.h"

#include "model/unit_model.h"

namespace ZorvicUnit {

AssetLink::AssetLink(AssetStore& assets, UnitModel& model) : Assets(assets), Model(model) {
    Assets.SetListener([this] { Pull(); });
}

std::uint64_t AssetLink::Pull() {
    const std::scoped_lock lock(PullLock);
    return Model.ApplyAssets(Assets.TakeChanges());
}

void AssetLink::ShowDrives() {
    Model.ShowDrives(Assets.Drives());
}

std::uint64_t AssetLink::Delete(const std::string& path) {
    const UnitModel::AssetHold hold(Model, path);
    Assets.Delete(path);
    return Pull();
}

std::uint64_t AssetLink::Install(const std::string& path) {
    Assets.Install(path);
    return Pull();
}

zorvic::v1::ListDirectoryReply AssetLink::ListDirectory(const std::string& drive, const std::string& path) {
    zorvic::v1::ListDirectoryReply reply;
    const auto entries = Assets.ListDirectory(drive, path);
    reply.mutable_entries()->Assign(entries.begin(), entries.end());
    return reply;
}

}  // namespace ZorvicUnit
