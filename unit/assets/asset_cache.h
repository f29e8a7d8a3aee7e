#pragma once

#include "assets/asset_table.h"

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace ZorvicUnit {

class Connection;

/// Keeps what was read of the assets over restarts, in a file of its own that can always be computed again: a damaged
/// one is thrown away. One thread of normal priority writes and reads it, so that nobody waits for the disk behind a
/// thread that the system lets wait itself. Safe to use from several threads.
class AssetCache {
public:
    explicit AssetCache(std::filesystem::path file);
    /// Writes what waits.
    ~AssetCache();

    struct Content {
        std::vector<AssetRecord> Records;
        std::vector<AssetRefusal> Refusals;
    };
    /// Once, before all that follows. A cache that cannot be used is logged and does without.
    Content Open();

    // To be written soon; a failure is logged only: the next start reads the files again.
    void Save(AssetRecord record);
    /// What has crashed once must not do so again when the power fails: `refusal.Broken` is synchronised at once.
    void Save(AssetRefusal refusal);
    void Save(AssetLevels levels);
    void Remove(std::vector<std::string> paths);

    using TakeLevels = std::function<void(std::shared_ptr<const Envelope>)>;
    /// After all that waits to be written; `take` is called from the cache's thread, with null when there are none.
    void LoadLevels(const AssetContent& content, TakeLevels take);

private:
    using Job = std::function<void(AssetTable&)>;
    void Post(Job job, bool urgent = false);
    void Run();
    void Write(const std::vector<Job>& jobs, bool urgent);
    void Checkpoint();
    void TryWrite(const std::vector<Job>& jobs, bool urgent);
    void Make();
    void ThrowAway(const char* why);

    const std::filesystem::path File;
    std::unique_ptr<Connection> Rows;  ///< of the thread, once it runs

    std::mutex Lock;  ///< guards the three below
    std::condition_variable Wake;
    std::vector<Job> Jobs;
    bool Urgent = false;
    bool Stop = false;
    std::thread Thread;
};

}  // namespace ZorvicUnit
