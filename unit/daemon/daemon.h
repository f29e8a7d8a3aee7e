#pragma once

#include "announce/announcer.h"
#include "asrun/recorder.h"
#include "asrun/sheet.h"
#include "assets/asset_store.h"
#include "clock.h"
#include "daemon/housekeeper.h"
#include "daemon/options.h"
#include "daemon/power_switch.h"
#include "daemon/ticker.h"
#include "feed/feed.h"
#include "model/asset_link.h"
#include "model/unit_model.h"
#include "outputs/previews.h"
#include "outputs/renderer.h"
#include "rpc/server.h"
#include "rpc/unit_service.h"
#include "store/database.h"
#include "store/store_directory.h"

#include <zorvic/v1/unit.pb.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

namespace ZorvicUnit {

/// The running unit: all parts in the order in which they depend on each other. Everything is up when the constructor
/// returns; it throws Fault when the store or the port can not be used.
class Daemon {
public:
    /// The switch must outlive the object.
    Daemon(const Options& options, PowerSwitch& power);
    ~Daemon();
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    const Server& Listener() const { return *Requests; }
    /// Serves until it is asked to end (SHUTDOWN) or to start again (REBOOT).
    zorvic::v1::PowerAction Run();
    /// Shutdown, in this order: nobody finds the unit; sessions end; commands in flight finish; the threads that
    /// change state stop; the asset store joins its workers, while what they report to is still there; the
    /// database is closed, complete without its log; at last the as-run sheet, in which all of them write.
    void Stop();

private:
    UnitModel::Profile MakeProfile(const Options& options);
    std::shared_ptr<grpc::ServerCredentials> SetUpAccess(const std::filesystem::path& directory);
    void StartRenderer(const Options& options);
    AnnouncerConfig MakeAnnouncement(const Options& options) const;
    void SoftReboot();

    PowerSwitch& Power;
    StoreDirectory Directory;
    Sheet Pages;
    Recorder Record{Pages};
    Database Rows;
    SteadyClock Time;
    Feed Updates;
    std::unique_ptr<AssetStore> Assets;
    const UnitModel::Profile Profile;
    UnitModel Model;
    AssetLink Link;
    Previews Pictures;
    UnitService Service;
    std::optional<Ticker> Ticking;
    std::optional<Housekeeper> Keeping;
    std::optional<Renderer> Showing;
    std::optional<Server> Requests;
    std::optional<Announcer> Announcing;
};

}  // namespace ZorvicUnit
