#include "assets/asset_scanner.h"

#include "fault.h"
#include "files/checksum.h"
#include "files/file_reader.h"
#include "files/names.h"

#include <spdlog/spdlog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
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
// The last resort: a reader that runs in circles is ended sooner, for the time that it takes on the processor.
constexpr seconds LevelsLimit{300};
constexpr std::int64_t LevelsBytesPerSecond = 512 * 1024;
constexpr std::size_t SaveAtOnce = 64;

milliseconds Longer(std::chrono::steady_clock::duration cost, int share, milliseconds least, milliseconds most) {
    return std::clamp(std::chrono::duration_cast<milliseconds>(cost * share), least, most);
}

std::int64_t NowNS() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

}  // namespace

AssetScanner::AssetScanner(std::filesystem::path reader, const DriveTable& drives, AssetIndex& index, AssetTable& table,
                           const Clock& clock, std::function<void()> notify)
    : Reader(std::move(reader)),
      Drives(drives),
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
    SaveRefusals();
    Checksums.reset();
    SaveFinished();
    Levels.reset();
    SaveLevels();
}

void AssetScanner::Start(bool watch) {
    if (access(Reader.c_str(), X_OK) != 0)
        throw Fault(FaultKind::Internal, "cannot run " + Reader.string() + ": " + std::strerror(errno));
    LevelReader.emplace(Reader, Manners::Last);
    StreamReader.emplace(Reader, Manners::Normal);
    Levels.emplace("zu-levels", Manners::Last);
    Checksums.emplace("zu-checksums", Manners::Modest);
    // Short work that every use of an asset waits for; on a busy machine a modest thread would take minutes.
    Streams.emplace("zu-streams", Manners::Normal);
    Index.Remember(Table.Load(), Table.LoadRefusals());
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
        zorvic::v1::AssetMetadata metadata = StreamReader->Probe(FileOf(content), limit, MediaReader::Turn::Last);
        metadata.set_file_path(content.Path);
        if (Index.SetMetadata(content, metadata))
            Checksums->Post(content.Stamp.Size, [this, content] { ReadChecksum(content); });
    } catch (const FileFault& fault) {
        Refused.push_back({content, fault.Broken, fault.what()});
        Refuse(content, fault);
    } catch (const std::exception& error) {
        if (Streams->Stopping()) return;
        Refuse(content, error);
    }
    Notify();
    // Few synchronised writes for many files; but what has crashed once must not do so again when the power fails.
    const bool broken = !Refused.empty() && Refused.back().Broken;
    if (broken || !Streams->HasWork() || Refused.size() >= SaveAtOnce) SaveRefusals();
}

void AssetScanner::Refuse(const AssetContent& content, const std::exception& error) {
    const auto* fault = dynamic_cast<const Fault*>(&error);
    const auto* file = dynamic_cast<const FileFault*>(&error);
    const bool isNone = fault != nullptr && (fault->Kind == FaultKind::NotFound || fault->Kind == FaultKind::Refused);
    const bool broken = file != nullptr ? file->Broken : !isNone;
    if (!Index.SetRefused({content, broken, error.what()})) return;
    if (broken) spdlog::error("{} cannot be read: {}", content.Path, error.what());
    if (!broken) spdlog::info("{} is no asset: {}", content.Path, error.what());
}

void AssetScanner::SaveRefusals() {
    const auto refused = std::exchange(Refused, {});
    if (refused.empty()) return;
    try {
        Table.SaveRefusals(refused);
    } catch (const Fault& fault) {
        spdlog::error("cannot keep why {} files are no assets: {}", refused.size(), fault.what());
    }
}

void AssetScanner::Condemn(const std::string& path, const std::string& reason) {
    const auto content = Index.Find(path);
    if (!content) return;
    const AssetRefusal refusal{*content, true, reason};
    if (!Index.SetRefused(refusal)) return;
    spdlog::error("{} is not opened again until it changes: {}", path, reason);
    try {
        Table.SaveRefusals({refusal});
    } catch (const Fault& fault) {
        spdlog::error("cannot keep that {} is broken: {}", path, fault.what());
    }
    Notify();
}

zorvic::v1::AssetMetadata AssetScanner::Probe(const std::filesystem::path& file, const ReadLimit& limit) {
    return StreamReader->Probe(file, limit);
}

void AssetScanner::ReadChecksum(const AssetContent& content) {
    try {
        Checksum checksum;
        ReadWhole(FileOf(content), Checksums->Stopping(), [&](auto bytes) { checksum.Add(bytes); });
        if (auto record = Index.SetChecksum(content, checksum.Hex())) Finished.push_back(std::move(*record));
    } catch (const std::exception& error) {
        if (Checksums->Stopping()) return;
        Refuse(content, error);
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
    try {
        ReadLimit limit = ReadLimit::Within(LevelsLimit + seconds(content.Stamp.Size / LevelsBytesPerSecond));
        limit.Stop = &Levels->Stopping();
        if (auto read = LevelReader->ReadLevels(FileOf(content), limit))
            levels = std::make_shared<const Envelope>(std::move(*read));
    } catch (const FileFault& fault) {
        // Kept as having none, and not tried again.
        spdlog::warn("no levels for {}: {}", content.Path, fault.what());
    } catch (const Fault& fault) {
        if (!Levels->Stopping()) spdlog::warn("no levels for {} this time: {}", content.Path, fault.what());
        return;
    }
    if (Index.SetLevels(content, levels)) FinishedLevels.push_back({content, levels});
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
