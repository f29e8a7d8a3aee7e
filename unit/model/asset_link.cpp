#include "model/asset_link.h"

#include "assets/asset_changes.h"
#include "assets/asset_store.h"
#include "model/unit_model.h"

#include <zorvic/enums.h>

namespace ZorvicUnit {

AssetLink::AssetLink(AssetStore& assets, UnitModel& model, Recorder& record)
    : Assets(assets), Model(model), Record(record) {
    Assets.SetListener([this] { Pull(); });
}

std::uint64_t AssetLink::Pull() {
    const std::scoped_lock lock(PullLock);
    const AssetChanges changes = Assets.TakeChanges();
    Note(changes);
    return Model.ApplyAssets(changes);
}

// What becomes of an import, and which files cannot be played. Called with PullLock held.
void AssetLink::Note(const AssetChanges& changes) {
    for (const std::string& path : changes.Removed) {
        Arriving.erase(path);
        Failing.erase(path);
    }
    for (const auto& asset : changes.Upserted) {
        const std::string& path = asset.full_path();
        const bool failed = asset.status() == Zorvic::ZORVIC_ASSETSTATE_ERROR;
        if (!failed) Failing.erase(path);
        if (failed && Failing.insert(path).second)
            Record.Fault((Arriving.contains(path) ? "import of " : "cannot be played: ") + path +
                         (Arriving.contains(path) ? " failed" : ""));
        if (asset.status() == Zorvic::ZORVIC_ASSETSTATE_INGESTING) {
            Arriving.insert(path);
        } else if (Arriving.erase(path) > 0 && !failed) {
            Record.Note(Zorvic::ZORVIC_ASRUN_IMPORT, path + " is there");
        }
    }
}

std::uint64_t AssetLink::Delete(const std::string& path, const Caller& caller) {
    // Ending an import waits for the disk and takes nothing from whoever plays.
    if (!Assets.EndImport(path, caller)) {
        const UnitModel::AssetHold hold(Model, path);
        Assets.Delete(path, caller);
    }
    Record.Note(Zorvic::ZORVIC_ASRUN_DELETE, path, caller.Who);
    return Pull();
}

std::uint64_t AssetLink::Install(const std::string& path, const Caller& caller) {
    Assets.Install(path, caller);
    Record.Note(Zorvic::ZORVIC_ASRUN_IMPORT, path, caller.Who);
    return Pull();
}

}  // namespace ZorvicUnit
