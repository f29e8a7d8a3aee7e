#include "model/preset_rules.h"
#include "model/unit_model.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace ZorvicUnit {

Outlook UnitModel::LookAhead(std::chrono::nanoseconds length) {
    const std::scoped_lock lock(ModelLock);
    Playing.Advance();
    Publish({});
    Outlook outlook = Playing.Outlook(Playing.ShownAt() + length);
    for (const std::int32_t pk : LikelyNext()) {
        if (auto next = Playing.NextRun(pk, outlook.Until)) outlook.Primed.push_back(std::move(*next));
    }
    return outlook;
}

// The list is in the order in which consoles show it.
std::vector<std::int32_t> UnitModel::LikelyNext() const {
    const auto selected = Presets.find(Selected);
    if (selected == Presets.end()) return {};
    const auto below = Places.upper_bound({FirstTab(*selected->second)->index(), Selected});

    std::vector<std::int32_t> likely;
    if (!Playing.StateOf(Selected).Playing) likely.push_back(Selected);
    for (const std::int32_t pk : {selected->second->link(), below != Places.end() ? below->second : 0})
        if (pk != Selected && std::ranges::find(likely, pk) == likely.end()) likely.push_back(pk);
    return likely;
}

void UnitModel::SetPlayListener(std::function<void()> listener) {
    const std::scoped_lock lock(ModelLock);
    PlayListener = std::move(listener);
}

void UnitModel::TellPlayListener() {
    const std::pair now(Playing.OutlookVersion(), Selected);
    if (std::exchange(ToldOutlook, now) != now && PlayListener) PlayListener();
}

}  // namespace ZorvicUnit
