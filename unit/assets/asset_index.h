#pragma once

#include "asset_catalog.h"
#include "assets/asset_changes.h"
#include "assets/levels_memory.h"
#include "clock.h"
#include "files/tree_walk.h"

#include <zorvic/v1/unit.pb.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ZorvicUnit {

/// One content of one file: what a worker was asked to read.
struct AssetContent {
    std::string Path;  ///< of the unit
    FileStamp Stamp;
};

/// What is known of a content once it was read.
struct AssetRecord {
    AssetContent Content;
    std::string Checksum;
    zorvic::v1::AssetMetadata Metadata;
    bool LevelsStored = false;  ///< levels (or that there are none) can be loaded
};

/// Why a content is not played.
struct AssetRefusal {
    AssetContent Content;
    bool Broken =
        false;  ///< it could not be read to the end: listed as ERROR; otherwise it is no media, and not listed
    std::string Reason;
};

/// The list of assets in memory and what it shows of each: files that rest, are read, are ready, broken or no media,
/// and imports in front of them. Touches neither disk nor threads; safe to call from every thread, and never slow.
class AssetIndex {
public:
    /// How long a file must not change before it counts as complete.
    static constexpr std::chrono::seconds Rest{2};

    struct ScanResult {
        std::vector<AssetContent> ToProbe;  ///< complete, and not known yet
        std::vector<AssetRecord> Known;     ///< came to the list, known from before
        std::vector<std::string> Gone;
        bool Settling = false;  ///< some file has not rested yet: scan again soon
    };

    /// Contents known from an earlier run; before the first scan.
    void Remember(std::vector<AssetRecord> records, std::vector<AssetRefusal> refusals);
    /// To be called before the disk is read: what Remove() and FinishImport() change until FinishScan() is newer than
    /// what the scan saw.
    void BeginScan();
    /// Takes over what the disk holds. `restedBefore` (as ModifiedNS): files that a scan meets for the first time and
    /// that are older than this count as complete at once.
    ScanResult FinishScan(const TreeContent& content, Clock::TimePoint now, std::int64_t restedBefore);

    // Results of the workers. False when the file has changed or gone meanwhile: the result is then dropped.
    bool SetMetadata(const AssetContent& content, const zorvic::v1::AssetMetadata& metadata);
    std::optional<AssetRecord> SetChecksum(const AssetContent& content, const std::string& checksum);
    bool SetLevels(const AssetContent& content, std::shared_ptr<const Envelope> levels);
    bool SetRefused(const AssetRefusal& refusal);
    /// Reading failed for no fault of the file: it has to rest again and is read once more by a later scan, longer each
    /// time, and listed as ERROR when that has failed MostTries times.
    void SetUnread(const AssetContent& content, const std::string& reason, Clock::TimePoint now);
    static constexpr int MostTries = 4;

    /// Forgets a file that was deleted.
    void Remove(const std::string& path);

    // Imports. The number tells an import from a later one to the same path.
    /// Throws Refused when an import to this path is on its way.
    std::uint64_t BeginImport(const std::string& path, const FileStamp& source);
    /// False when the import was ended from outside.
    bool SetImportProgress(const std::string& path, std::uint64_t import, std::int64_t size);
    /// From here on MayEndImport() refuses; false when the import was ended before.
    bool BeginCommit(const std::string& path, std::uint64_t import);
    void FinishImport(const AssetRecord& record);
    /// False when the import was ended before.
    bool FailImport(const std::string& path, std::uint64_t import, const std::string& reason);
    /// Whether an import to this path is on its way or has failed.
    /// Refused when it is just being finished.
    bool MayEndImport(const std::string& path) const;
    std::size_t ImportCount() const;
    /// Takes an import or a failed one off the list; false when there is none.
    bool EndImport(const std::string& path);

    AssetChanges TakeChanges();
    bool HasChanges() const;

    /// The file behind a listed asset; nothing when there is none (unknown, or an import that replaces nothing).
    std::optional<AssetContent> Find(const std::string& path) const;
    /// Why the file behind a listed asset is broken.
    std::optional<std::string> Problem(const std::string& path) const;
    std::optional<zorvic::v1::AssetMetadata> Metadata(const std::string& path) const;
    struct LevelsAnswer {
        std::shared_ptr<const Envelope> Levels;
        std::optional<AssetContent> ToLoad;  ///< given once: these levels are stored and should be loaded
    };
    LevelsAnswer Levels(const std::string& path);

private:
    enum class Stage { Settling, Reading, Ready, Broken, NotMedia };
    struct File {
        FileStamp Stamp;
        Clock::TimePoint Changed;
        Stage At = Stage::Settling;
        bool Listed = false;
        std::string Checksum;
        std::optional<zorvic::v1::AssetMetadata> Metadata;
        bool LevelsStored = false;  ///< and not in memory
        std::string Problem;
        int Tries = 0;  ///< that failed for no fault of the file
    };
    struct Import {
        std::uint64_t Number = 0;
        bool Committing = false;
        zorvic::v1::Asset Shown;
        std::string Problem;
    };

    void Meet(const FoundFile& found, Clock::TimePoint now, std::int64_t restedBefore, ScanResult& result);
    void Forget(const std::set<std::string>& seen, ScanResult& result);
    void Recall(File& file, const AssetContent& content, ScanResult& result);
    void MakeReady(File& file, const AssetRecord& record);
    void MakeRefused(File& file, const AssetRefusal& refusal);
    File* Current(const AssetContent& content);
    Import* Current(const std::string& path, std::uint64_t import);
    std::optional<zorvic::v1::Asset> Show(const std::string& path) const;

    mutable std::mutex Lock;  ///< guards all below
    std::map<std::string, AssetRecord> Remembered;
    std::map<std::string, AssetRefusal> RememberedRefusals;
    std::map<std::string, File> Files;
    std::map<std::string, Import> Imports;
    std::uint64_t LastImport = 0;
    LevelsMemory LatestLevels;
    std::set<std::string> TouchedDuringScan;
    std::set<std::string> Changed;
    std::set<std::string> Shown;  ///< paths that TakeChanges() has given out as being there
};

}  // namespace ZorvicUnit
