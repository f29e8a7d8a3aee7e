#include "daemon/housekeeper.h"

#include "fault.h"
#include "model/asset_link.h"
#include "model/unit_model.h"

#include <spdlog/spdlog.h>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace ZorvicUnit {

namespace {

constexpr std::chrono::seconds Period(2);

void SaveSelection(UnitModel& model) {
    try {
        model.SaveSelection();
    } catch (const Fault& fault) {
        spdlog::warn("saving which preset is selected: {}", fault.what());
    }
}

void RunHousekeeper(const std::stop_token& stop, UnitModel& model, AssetLink& assets) {
    NameThread("housekeeper");
    std::mutex mutex;
    std::condition_variable_any wake;
    while (!stop.stop_requested()) {
        std::unique_lock lock(mutex);
        wake.wait_for(lock, stop, Period, [] { return false; });
        SaveSelection(model);
        assets.ShowDrives();
    }
}

}  // namespace

Housekeeper::Housekeeper(UnitModel& model, AssetLink& assets)
    : Thread([&](const std::stop_token& stop) { RunHousekeeper(stop, model, assets); }) {}

}  // namespace ZorvicUnit
