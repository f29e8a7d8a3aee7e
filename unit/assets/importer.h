#pragma once

#include "assets/asset_index.h"
#include "assets/asset_scanner.h"
#include "assets/worker.h"
#include "caller.h"
#include "drives/drive_reader.h"
#include "drives/drive_table.h"
#include "store/import_table.h"

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
    Importer(DrivePlace folder, const DriveTable& drives, ImportTable& orders, AssetIndex& index, AssetScanner& scanner,
             std::function<void()> notify);
    /// Gives up the running copy and removes what there is of it; its order stays.
    ~Importer();

    /// Removes what an interrupted run has left. Before the first Add().
    void Sweep() const;

    /// Takes up the orders that earlier runs have left, and lists those that have failed. Once, before the first Add().
    void Resume();

    /// Lists the asset as being ingested, keeps the order and queues the copy. Misused (a name that would be hidden),
    /// Refused, NotFound (no directory for assets), and what the database throws.
    void Add(const SourceFile& source, const DrivePlace& place, const Caller& caller);

    /// Ends an import or dismisses a failed one; false when there is none. Refused when it is being finished.
    /// TooLate, with the import going on, when the caller has given up.
    bool End(const std::string& path, const Caller& caller);

private:
    struct Order {
        ImportOrder Kept;
        std::filesystem::path Source;  ///< on the host; empty when it is still to be looked for
        std::uint64_t Number = 0;
    };
    void Queue(Order order);
    void TakeUp(const ImportOrder& kept);
    bool IsDone(const ImportOrder& kept) const;
    void Carry(Order order);
    void Finish(const Order& order, const AssetRecord& record, const std::filesystem::path& part);
    void Fail(const Order& order, const std::string& reason);
    AssetRecord CopyAndProbe(const Order& order, const std::filesystem::path& part);
    void ShowProgress(const Order& order, std::int64_t done);
    void InTurn(const std::function<void()>& change);
    static void Keep(const std::function<void()>& change);

    const DrivePlace Folder;
    const DriveTable& Drives;
    ImportTable& Orders;
    AssetIndex& Index;
    AssetScanner& Scanner;
    const std::function<void()> Notify;
    std::chrono::steady_clock::time_point LastShown;  ///< of the thread only
    Worker Writer;                                    ///< of orders, for the thread that copies
    Worker Copies;
};

}  // namespace ZorvicUnit
