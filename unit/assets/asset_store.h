#pragma once

#include "asset_catalog.h"
#include "assets/asset_changes.h"
#include "assets/media_process.h"
#include "caller.h"
#include "clock.h"
#include "files/drive_place.h"

#include <zorvic/v1/unit.pb.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ZorvicUnit {

class Database;

/// Everything on the unit's disks: the assets in the store, their metadata and levels, the drives, and imports.
///
/// Paths are the unit's own: drive C is the store's directory, assets live below "C:\Assets". All members may be called
/// from any thread and return soon: files are read by worker threads. Failures throw Fault.
class AssetStore final : public AssetCatalog {
public:
    struct Options {
        std::filesystem::path StoreDirectory;  ///< must exist; "Assets" is made below it
        std::vector<DriveRoot> Drives;         ///< beside C
        bool Watch = true;                     ///< notice changes of the disk unasked; false leaves it to RescanNow()
        std::filesystem::path Reader = MediaProgram();  ///< the program that opens media files
    };

    /// Touches neither disk nor threads. Orders to import are kept in the database. The database and the clock must
    /// outlive the store.
    AssetStore(const Options& options, Database& database, const Clock& clock);
    /// Stops and joins all workers; ends a running import and removes its unfinished file. Takes below a second unless
    /// a disk hangs.
    ~AssetStore() override;

    /// Called whenever TakeChanges() has something to give: from a worker thread or from within Install(), Delete() and
    /// RescanNow(), never with a lock of the store held. Set it before Start(); it must be callable until the
    /// destructor has returned.
    void SetListener(std::function<void()> listener);

    /// Reads the store's directory (assets known from before are READY at once) and starts the workers. Throws Fault
    /// when the program that reads media files is not there.
    void Start();

    /// What changed since the last call, in one step. To keep the order of changes, take and apply them under one lock
    /// of the caller's own; after Install() and Delete() they hold the effect of that call.
    AssetChanges TakeChanges();

    std::optional<std::int32_t> DurationMS(const std::string& path) const override;
    std::shared_ptr<const Envelope> Levels(const std::string& path) const override;

    /// The file of an asset whose streams were read without harm; empty when there is none.
    std::string HostFile(const std::string& path) const;

    /// Lists an asset that does harm when it is played as ERROR until its file changes.
    void Condemn(const std::string& path, const std::string& reason);

    /// Metadata of an asset, read from its file (within 1.5 s, or Slow) when it is not known yet. NotFound: no such
    /// asset, or no file of it yet; Refused: the file cannot be read as media, or its reading has failed before.
    zorvic::v1::AssetMetadata ReadMetadata(const std::string& path) const;

    /// Ends an asset's import, or dismisses its failed import (then a file that the import would have replaced shows
    /// again); false when there is none. Misused (not the path of an asset), Refused (it is just being finished), and
    /// what the database throws.
    bool EndImport(const std::string& path, const Caller& caller = {});
    /// The same, or removes an asset and its file. NotFound, Internal (the disk refused).
    void Delete(const std::string& path, const Caller& caller = {});

    /// Drive C first, then the external ones in the order given.
    std::vector<zorvic::v1::Drive> Drives() const;

    /// One directory of a drive: directories, then media files, each by name without regard to case. Slow after 120 ms;
    /// the listing goes on and answers a later call. NotFound, Misused.
    std::vector<zorvic::v1::DirectoryEntry> ListDirectory(const std::string& drive, const std::string& path);

    /// Starts copying a file of a drive to "C:\Assets". The asset is listed as INGESTING on return, and the order is on
    /// disk: a restart takes it up again. How it ends shows in the asset's state. NotFound, Misused, Refused (already
    /// an asset, or already on its way), Slow, TooLate, DiskFull.
    void Install(const std::string& path, const Caller& caller = {});

    /// Compares the disk with the list now, in the caller's thread.
    void RescanNow();

private:
    struct Impl;
    std::unique_ptr<Impl> Parts;
};

}  // namespace ZorvicUnit
