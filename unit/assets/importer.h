#pragma once

#include "assets/asset_index.h"
#include "assets/asset_scanner.h"
#include "assets/worker.h"
#include "drives/drive_reader.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>

namespace ZorvicUnit {

/// Copies files into the store, one after the other, in a thread of its own. A copy carries a hidden name until it is
/// complete, on disk and known to be media; only then does it take the place of an older file.
class Importer {
public:
    /// `folder` is where the store keeps its assets; `notify` is called from the thread when the index has changed.
    Importer(DrivePlace folder, AssetIndex& index, AssetScanner& scanner, std::function<void()> notify);
    /// Gives up the running copy and removes what there is of it.
    ~Importer();

    /// Removes what an interrupted run has left. Before the first Add().
    void Sweep() const;

    /// Lists the asset as being ingested and queues the copy. Misused (a name that would be hidden), Refused, NotFound
    /// (no directory for assets).
    void Add(const SourceFile& source, const std::string& name);

private:
    struct Order {
        SourceFile Source;
        std::string Path;              ///< of the asset
        std::filesystem::path Target;  ///< on the host
        std::uint64_t Number = 0;
    };
    void Carry(const Order& order);
    AssetRecord CopyAndProbe(const Order& order, const std::filesystem::path& part);
    void ShowProgress(const Order& order, std::int64_t done);

    const DrivePlace Folder;
    AssetIndex& Index;
    AssetScanner& Scanner;
    const std::function<void()> Notify;
    std::chrono::steady_clock::time_point LastShown;  ///< of the thread only
    Worker Copies;
};

}  // namespace ZorvicUnit
