#pragma once

#include "assets/asset_cache.h"
#include "assets/asset_index.h"
#include "assets/change_watch.h"
#include "assets/media_reader.h"
#include "assets/worker.h"
#include "drives/drive_table.h"
#include "files/tree_walk.h"

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace ZorvicUnit {

/// Keeps the index equal to the disk: looks for files, and has new ones read, first their streams, then their checksum,
/// then their levels, each by a thread of its own, so that a long film does not keep a short one waiting.
class AssetScanner {
public:
    /// `reader` is the program that opens media files. `notify` is called from the worker threads, without a lock, when
    /// the index may have changed.
    AssetScanner(std::filesystem::path reader, const DriveTable& drives, AssetIndex& index, AssetCache& cache,
                 const Clock& clock, std::function<void()> notify);
    ~AssetScanner();

    /// Scans once in the calling thread, then on every change when `watch` is set. Throws Fault when there is no
    /// reader.
    void Start(bool watch);
    /// Compares disk and index once, in the calling thread; scans of several threads go one after the other.
    void Scan();

    /// Keeps what was read, and goes on with the levels.
    void Keep(const AssetRecord& record);

    /// Reads a file before all that wait; throws like MediaReader.
    zorvic::v1::AssetMetadata Probe(const std::filesystem::path& file, const ReadLimit& limit);

    /// Lists an asset as ERROR until its file changes, over restarts too.
    void Condemn(const std::string& path, const std::string& reason);

    /// Has levels brought back from the cache.
    void LoadLevels(const AssetContent& content);

private:
    struct Pace {
        std::chrono::milliseconds Quiet;  ///< until the next look when nothing is reported
        std::chrono::milliseconds Pause;  ///< between two looks whatever is reported
    };
    Pace NextPace();
    void WatchLoop();
    void ReadStreams(const AssetContent& content);
    void Refuse(const AssetContent& content, const FileFault& fault);
    void TryAgain(const AssetContent& content, const Worker& reader, const std::exception& error);
    void ReadChecksum(const AssetContent& content);
    void ReadLevels(const AssetContent& content);
    void ComputeLevels(const AssetContent& content);
    /// Throws Fault when it is gone or leads off its drive by now.
    std::filesystem::path FileOf(const AssetContent& content) const;

    const std::filesystem::path Reader;
    const DriveTable& Drives;
    AssetIndex& Index;
    AssetCache& Cache;
    const Clock& Time;
    const std::function<void()> Notify;

    std::mutex ScanLock;  ///< held for a whole scan; guards the five below
    TreeWalk Walker;
    ChangeWatch Watch;
    bool First = true;
    bool Settling = false;
    std::chrono::steady_clock::duration Cost{};  ///< of the last scan

    // Two, so that a long film does not keep a short one waiting.
    std::optional<MediaReader> StreamReader;
    std::optional<MediaReader> LevelReader;

    // Each hands its results to the ones above it.
    std::optional<Worker> Levels;
    std::optional<Worker> Checksums;
    std::optional<Worker> Streams;
    std::optional<Worker> Watcher;
};

}  // namespace ZorvicUnit
