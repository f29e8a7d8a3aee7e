#include "assets/asset_scanner.h"

#include "fault.h"
#include "files/checksum.h"
#include "files/file_reader.h"
#include "files/names.h"
#include "media/envelope.h"
#include "media/probe.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <utility>

namespace ZorvicUnit {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// Files that are just being written are looked at this often.
constexpr milliseconds SettlingPeriod{500};
// Without the kernel's help.
constexpr milliseconds BlindPeriod{1500};
// With it, changes that it cannot see (a network store) are still met, at a five-hundredth of the processor.
constexpr milliseconds LongestPeriod = seconds(30);
constexpr int CostShare = 500;
// A file that grows reports every write: scans take at most a tenth of the time.
constexpr milliseconds LeastPause{200};
constexpr int BusyCostShare = 10;

constexpr seconds StreamLimit{60};
constexpr std::size_t SaveAtOnce = 64;

milliseconds Longer(std::chrono::steady_clock::duration cost, int share, milliseconds least, milliseconds most) {
    return std::clamp(std::chrono::duration_cast<milliseconds>(cost * share), least, most);
}

std::int64_t NowNS() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

}  // namespace

AssetScanner::AssetScanner(const DriveTable& drives, AssetIndex& index, AssetTable& table, const Clock& clock,
                           std::function<void()> notify)
    : Drives(drives),
      Index(index),
      Table(table),
      Time(clock),
      Notify(std::move(notify)),
      Walker(drives.All().front()) {}

AssetScanner::~AssetScanner() {
    // All are asked before the first is waited for.
    for (auto* worker : {&Levels, &Checksums, &Streams, &Watcher})
        if (*worker) (*worker)->RequestStop();
    Watch.WakeUp();
    Watcher.reset();
    Streams.reset();
    Checksums.reset();
    SaveFinished();
    Levels.reset();
    SaveLevels();
}

void AssetScanner::Start(bool watch) {
    Levels.emplace("zu-levels", Manners::Last);
    Checksums.emplace("zu-checksums", Manners::Modest);
    // Short work that every use of an asset waits for; on a busy machine a modest thread would take minutes.
    Streams.emplace("zu-streams", Manners::Normal);
    Index.Remember(Table.Load());
    Scan();
    if (!watch) return;
    Watcher.emplace("zu-scan", Manners::Normal);
    Watcher->Post(0, [this] { WatchLoop(); });
}

void AssetScanner::WatchLoop() {
    while (!Watcher->Stopping()) {
        const Pace pace = NextPace();
        Watch.Wait(pace.Quiet);
        if (Watcher->Stopping()) return;
        try {
            Scan();
        } catch (const std::exception& error) {
            spdlog::error("looking for assets: {}", error.what());
        }
        Watch.Pause(pace.Pause);
    }
}

AssetScanner::Pace AssetScanner::NextPace() {
    const std::scoped_lock lock(ScanLock);
    const milliseconds pause = Longer(Cost, BusyCostShare, LeastPause, BlindPeriod);
    if (Settling) return {SettlingPeriod, pause};
    if (!Watch.IsComplete()) return {BlindPeriod, pause};
    return {Longer(Cost, CostShare, BlindPeriod, LongestPeriod), pause};
}

void AssetScanner::Scan() {
    std::vector<std::string> gone;
    {
        const std::scoped_lock lock(ScanLock);
        const auto began = std::chrono::steady_clock::now();
        Index.BeginScan();
        const TreeContent content = Walker.Walk([this](const auto& directory) { Watch.Add(directory); });
        const std::int64_t rested = NowNS() - std::chrono::nanoseconds(AssetIndex::Rest).count();
        AssetIndex::ScanResult result = Index.FinishScan(content, Time.Now(), std::exchange(First, false) ? rested : 0);
        for (const AssetContent& complete : result.ToProbe)
            Streams->Post(0, [this, complete] { ReadStreams(complete); });
        for (const AssetRecord& record : result.Known)
            if (!record.LevelsStored) ReadLevels(record.Content);
        gone = std::move(result.Gone);
        Settling = result.Settling;
        Cost = std::chrono::steady_clock::now() - began;
    }
    Notify();
    Forget(gone);
}

void AssetScanner::Forget(const std::vector<std::string>& paths) {
    try {
        Table.Remove(paths);
    } catch (const Fault& fault) {
        spdlog::error("cannot forget {} assets that are gone: {}", paths.size(), fault.what());
    }
}

std::filesystem::path AssetScanner::FileOf(const AssetContent& content) const {
    return ResolveOnDrive(Drives.Parse(content.Path));
}

void AssetScanner::ReadStreams(const AssetContent& content) {
    try {
        ReadLimit limit = ReadLimit::Within(StreamLimit);
        limit.Stop = &Streams->Stopping();
        zorvic::v1::AssetMetadata metadata = Probe(FileOf(content), limit);
        metadata.set_file_path(content.Path);
        if (Index.SetMetadata(content, metadata))
            Checksums->Post(content.Stamp.Size, [this, content] { ReadChecksum(content); });
    } catch (const std::exception& error) {
        if (Streams->Stopping()) return;
        if (Index.SetNotMedia(content)) spdlog::info("{} is no asset: {}", content.Path, error.what());
    }
    Notify();
}

void AssetScanner::ReadChecksum(const AssetContent& content) {
    try {
        Checksum checksum;
        ReadWhole(FileOf(content), Checksums->Stopping(), [&](auto bytes) { checksum.Add(bytes); });
        if (auto record = Index.SetChecksum(content, checksum.Hex())) Finished.push_back(std::move(*record));
    } catch (const std::exception& error) {
        if (Checksums->Stopping()) return;
        if (Index.SetNotMedia(content)) spdlog::warn("{} cannot be read: {}", content.Path, error.what());
    }
    Notify();
    // One synchronised write for many small files: the preset store waits behind each.
    if (!Checksums->HasWork() || Finished.size() >= SaveAtOnce) SaveFinished();
}

void AssetScanner::SaveFinished() {
    if (!Finished.empty()) Keep(std::exchange(Finished, {}));
}

void AssetScanner::Keep(const std::vector<AssetRecord>& records) {
    try {
        Table.Save(records);
    } catch (const Fault& fault) {
        spdlog::error("cannot keep what was read of {} assets: {}", records.size(), fault.what());
    }
    for (const AssetRecord& record : records)
        ReadLevels(record.Content);
}

void AssetScanner::ReadLevels(const AssetContent& content) {
    Levels->Post(content.Stamp.Size, [this, content] {
        ComputeLevels(content);
        if (!Levels->HasWork() || FinishedLevels.size() >= SaveAtOnce) SaveLevels();
    });
}

void AssetScanner::ComputeLevels(const AssetContent& content) {
    std::shared_ptr<const Envelope> levels;
    std::string problem;
    try {
        if (auto read = ReadEnvelope(FileOf(content), {.Stop = &Levels->Stopping()}))
            levels = std::make_shared<const Envelope>(std::move(*read));
    } catch (const Fault& fault) {
        problem = fault.what();
    }
    if (Levels->Stopping() || !Index.SetLevels(content, levels)) return;
    if (!problem.empty()) spdlog::warn("no levels for {}: {}", content.Path, problem);
    FinishedLevels.push_back({content, levels});
}

void AssetScanner::SaveLevels() {
    const auto levels = std::exchange(FinishedLevels, {});
    if (levels.empty()) return;
    try {
        Table.SaveLevels(levels);
    } catch (const Fault& fault) {
        spdlog::error("cannot keep the levels of {} assets: {}", levels.size(), fault.what());
    }
}

void AssetScanner::LoadLevels(const AssetContent& content) {
    // Before all files that wait to be read: it is short, and something is about to play.
    Streams->Post(-1, [this, content] { Index.SetLevels(content, Table.LoadLevels(content)); });
}

}  // namespace ZorvicUnit
