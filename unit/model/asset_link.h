#pragma once

#include "asrun/recorder.h"
#include "caller.h"

#include <cstdint>
#include <mutex>
#include <set>
#include <string>

namespace ZorvicUnit {

struct AssetChanges;
class AssetStore;
class UnitModel;

/// Carries changes of the asset store to the model, in their order, and carries out the commands that change both. Safe
/// to use from several threads. The asset store calls it until the store's destructor has returned.
class AssetLink {
public:
    /// All must outlive the object's last call.
    AssetLink(AssetStore& assets, UnitModel& model, Recorder& record = Recorder::None());

    /// Throws Fault Refused while a preset plays whose asset would go. Both give the revision that holds their effect.
    std::uint64_t Delete(const std::string& path, const Caller& caller = {});
    std::uint64_t Install(const std::string& path, const Caller& caller = {});

private:
    std::uint64_t Pull();
    void Note(const AssetChanges& changes);

    std::mutex PullLock;  ///< keeps the order between taking changes and showing them; taken before the model's locks
    AssetStore& Assets;
    UnitModel& Model;
    Recorder& Record;
    std::set<std::string> Arriving;  ///< paths that are being imported; guarded by PullLock, as the next
    std::set<std::string> Failing;   ///< paths in state ERROR
};

}  // namespace ZorvicUnit
