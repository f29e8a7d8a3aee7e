#include "assets/asset_cache.h"

#include "store/connection.h"
#include "store/sqlite_fault.h"
#include "thread_name.h"

#include <spdlog/spdlog.h>

#include <chrono>
#include <system_error>
#include <utility>

namespace ZorvicUnit {

namespace {

// A checkpoint fills the disk's queue, and saves of presets stand behind it: while files are read one after the other
// it waits, unless the log grows beyond so many pages of 4 KiB.
constexpr auto LongestLog = "PRAGMA wal_autocheckpoint = 8192";
constexpr std::chrono::seconds Quiet(2);

}  // namespace

AssetCache::AssetCache(std::filesystem::path file) : File(std::move(file)) {}

AssetCache::~AssetCache() {
    if (!Thread.joinable()) return;
    {
        const std::scoped_lock lock(Lock);
        Stop = true;
        Wake.notify_one();
    }
    Thread.join();
}

AssetCache::Content AssetCache::Open() {
    Content content;
    for (int tries = 0; tries < 2; ++tries) {
        try {
            Make();
            AssetTable table(*Rows);
            content = {table.Load(), table.LoadRefusals()};
            break;
        } catch (const Fault& fault) {
            content = {};
            ThrowAway(fault.what());
        }
    }
    if (Rows == nullptr) spdlog::error("there is no cache of what is known of assets");
    Thread = std::thread([this] { Run(); });
    return content;
}

// A power cut may cost the latest entries, which costs less than to wait for the disk at each.
void AssetCache::Make() {
    Rows = std::make_unique<Connection>(File, Connection::Access::Make);
    Rows->UseLog();
    Rows->Execute("PRAGMA synchronous = NORMAL");
    Rows->Execute(LongestLog);
    if (std::cmp_greater(Rows->SchemaVersion(), AssetTable::Steps().size()))
        throw StoreDamage("it was written by a newer version of this program");
    Rows->Migrate(AssetTable::Steps());
}

void AssetCache::ThrowAway(const char* why) {
    spdlog::warn("{} is thrown away, and made again from the files: {}", File.string(), why);
    Rows.reset();
    std::error_code missing;
    for (const char* part : {"", "-wal", "-shm"})
        std::filesystem::remove(File.string() + part, missing);
}

void AssetCache::Save(AssetRecord record) {
    Post([record = std::move(record)](AssetTable& table) { table.Save(record); });
}

void AssetCache::Save(AssetRefusal refusal) {
    const bool urgent = refusal.Broken;
    Post([refusal = std::move(refusal)](AssetTable& table) { table.Save(refusal); }, urgent);
}

void AssetCache::Save(AssetLevels levels) {
    Post([levels = std::move(levels)](AssetTable& table) { table.Save(levels); });
}

void AssetCache::Remove(std::vector<std::string> paths) {
    if (paths.empty()) return;
    Post([paths = std::move(paths)](AssetTable& table) {
        for (const std::string& path : paths)
            table.Remove(path);
    });
}

void AssetCache::LoadLevels(const AssetContent& content, TakeLevels take) {
    Post([content, take = std::move(take)](AssetTable& table) { take(table.LoadLevels(content)); });
}

void AssetCache::Post(Job job, bool urgent) {
    const std::scoped_lock lock(Lock);
    Jobs.push_back(std::move(job));
    Urgent = Urgent || urgent;
    Wake.notify_one();
}

void AssetCache::Run() {
    NameThread("zu-cache");
    std::unique_lock lock(Lock);
    const auto hasWork = [this] { return Stop || !Jobs.empty(); };
    while (true) {
        if (!Wake.wait_for(lock, Quiet, hasWork)) {
            lock.unlock();
            Checkpoint();
            lock.lock();
            Wake.wait(lock, hasWork);
        }
        if (Jobs.empty()) return;
        const auto jobs = std::exchange(Jobs, {});
        const bool urgent = std::exchange(Urgent, false);
        lock.unlock();
        Write(jobs, urgent);
        lock.lock();
    }
}

void AssetCache::Write(const std::vector<Job>& jobs, bool urgent) {
    if (Rows == nullptr) return;
    try {
        try {
            TryWrite(jobs, urgent);
        } catch (const StoreDamage& damage) {
            ThrowAway(damage.what());
            Make();
            TryWrite(jobs, urgent);
        }
    } catch (const std::exception& error) {
        spdlog::error("cannot keep what was read of assets: {}", error.what());
    }
}

void AssetCache::Checkpoint() {
    try {
        if (Rows != nullptr) Rows->Execute("PRAGMA wal_checkpoint(PASSIVE)");
    } catch (const std::exception& error) {
        spdlog::warn("bringing the cache's log into its file: {}", error.what());
    }
}

void AssetCache::TryWrite(const std::vector<Job>& jobs, bool urgent) {
    Rows->Execute(urgent ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = NORMAL");
    Transaction transaction(*Rows);
    AssetTable table(*Rows);
    for (const Job& job : jobs)
        job(table);
    transaction.Commit();
}

}  // namespace ZorvicUnit
