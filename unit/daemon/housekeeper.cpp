#include "daemon/housekeeper.h"

#include "assets/asset_store.h"
#include "fault.h"
#include "feed/feed.h"
#include "feed/pieces.h"
#include "log.h"
#include "model/unit_model.h"
#include "store/database.h"
#include "thread_name.h"

#include <spdlog/spdlog.h>

#include <chrono>

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

void ShowDrives(const AssetStore& assets, Feed& updates) {
    updates.Publish({DrivesChange(assets.Drives())});
}

void RunHousekeeper(const std::stop_token& stop, UnitModel& model, const AssetStore& assets, Database& rows,
                    Feed& updates) {
    NameThread("housekeeper");
    while (!stop.stop_requested()) {
        const auto until = std::chrono::steady_clock::now() + Period;
        while (model.WaitForSelection(stop, until))
            SaveSelection(model);
        SaveSelection(model);
        rows.CheckpointWhenIdle();
        ShowDrives(assets, updates);
        ReportLostLines();
    }
}

}  // namespace

Housekeeper::Housekeeper(UnitModel& model, const AssetStore& assets, Database& rows, Feed& updates) {
    ShowDrives(assets, updates);
    Thread = std::jthread([&](const std::stop_token& stop) { RunHousekeeper(stop, model, assets, rows, updates); });
}

}  // namespace ZorvicUnit
