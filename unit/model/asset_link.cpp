#include "model/asset_link.h"

#include "assets/asset_store.h"
#include "model/unit_model.h"

namespace ZorvicUnit {

AssetLink::AssetLink(AssetStore& assets, UnitModel& model) : Assets(assets), Model(model) {
    Assets.SetListener([this] { Pull(); });
}

std::uint64_t AssetLink::Pull() {
    const std::scoped_lock lock(PullLock);
    return Model.ApplyAssets(Assets.TakeChanges());
}

std::uint64_t AssetLink::Delete(const std::string& path) {
    const UnitModel::AssetHold hold(Model, path);
    Assets.Delete(path);
    return Pull();
}

std::uint64_t AssetLink::Install(const std::string& path, const Caller& caller) {
    Assets.Install(path, caller);
    return Pull();
}

}  // namespace ZorvicUnit
