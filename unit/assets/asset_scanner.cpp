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
// Also bounds how deep files can stand in one another's way.
constexpr std::int64_t MuchLonger = 8;

milliseconds Longer(std::chrono::steady_clock::duration cost, int share, milliseconds least, milliseconds most) {
    return std::clamp(std::chrono::duration_cast<milliseconds>(cost * share), least, most);
}

std::int64_t NowNS() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

}  // namespace

AssetScanner::AssetScanner(std::filesystem::path reader, const DriveTable& drives, AssetIndex& index, AssetCache& cache,
                           const Clock& clock, std::function<void()> notify)
    : Reader(std::move(reader)),
      Drives(drives),
      Index(index),
      Cache(cache),
      Time(clock),
      Notify(std::move(notify)),
      Walker(drives.All().front()) {}

AssetScanner::~AssetScanner() {
    // All are asked before the first is waited for, and none goes before it is joined: its jobs look at it.
    for (auto* worker : {&Levels, &Checksums, &Streams, &Watcher})
        if (*worker) (*worker)->RequestStop();
    Watch.WakeUp();
    for (auto* worker : {&Watcher, &Streams, &Checksums, &Levels})
        if (*worker) (*worker)->Join();
}

void AssetScanner::Start(bool watch) {
    if (access(Reader.c_str(), X_OK) != 0)
        throw Fault(FaultKind::Internal, "cannot run " + Reader.string() + ": " + std::strerror(errno));
    LevelReader.emplace(Reader, Manners::Last);
    StreamReader.emplace(Reader, Manners::Modest);
    Levels.emplace("zu-levels", Manners::Last);
    Checksums.emplace("zu-checksums", Manners::Modest);
    // Short work that every use of an asset waits for; on a busy machine a modest thread would take minutes.
    Streams.emplace("zu-streams", Manners::Normal);
    auto known = Cache.Open();
    Index.Remember(std::move(known.Records), std::move(known.Refusals));
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
    Cache.Remove(std::move(gone));
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
        Refuse(content, fault);
    } catch (const std::exception& error) {
        TryAgain(content, *Streams, error);
    }
    Notify();
}

void AssetScanner::Refuse(const AssetContent& content, const FileFault& fault) {
    const AssetRefusal refusal{content, fault.Broken, fault.what()};
    if (!Index.SetRefused(refusal)) return;
    Cache.Save(refusal);
    if (fault.Broken) spdlog::error("{} cannot be read: {}", content.Path, fault.what());
    if (!fault.Broken) spdlog::info("{} is no asset: {}", content.Path, fault.what());
}

// A disk or a process that had no room lately may have some soon. Not kept over restarts.
void AssetScanner::TryAgain(const AssetContent& content, const Worker& reader, const std::exception& error) {
    if (reader.Stopping()) return;
    const auto* fault = dynamic_cast<const Fault*>(&error);
    if (fault != nullptr && (fault->Kind == FaultKind::NotFound || fault->Kind == FaultKind::Refused)) {
        if (Index.SetRefused({content, false, error.what()}))
            spdlog::info("{} is no asset: {}", content.Path, error.what());
        return;
    }
    spdlog::error("{} cannot be read now: {}", content.Path, error.what());
    Index.SetUnread(content, error.what(), Time.Now());
    Watch.WakeUp();
}

void AssetScanner::Condemn(const std::string& path, const std::string& reason) {
    const auto content = Index.Find(path);
    if (!content) return;
    const AssetRefusal refusal{*content, true, reason};
    if (!Index.SetRefused(refusal)) return;
    spdlog::error("{} is not opened again until it changes: {}", path, reason);
    Cache.Save(refusal);
    Notify();
}

zorvic::v1::AssetMetadata AssetScanner::Probe(const std::filesystem::path& file, const ReadLimit& limit) {
    return StreamReader->Probe(file, limit);
}

void AssetScanner::ReadChecksum(const AssetContent& content) {
    try {
        Checksum checksum;
        ReadWhole(FileOf(content), Checksums->Stopping(), [&](auto bytes) {
            checksum.Add(bytes);
            // A clip that has just come does not wait for the film before it.
            Checksums->RunBefore(content.Stamp.Size / MuchLonger);
        });
        if (const auto record = Index.SetChecksum(content, checksum.Hex())) Keep(*record);
    } catch (const std::exception& error) {
        TryAgain(content, *Checksums, error);
    }
    Notify();
}

void AssetScanner::Keep(const AssetRecord& record) {
    Cache.Save(record);
    ReadLevels(record.Content);
}

void AssetScanner::ReadLevels(const AssetContent& content) {
    Levels->Post(content.Stamp.Size, [this, content] { ComputeLevels(content); });
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
    if (Index.SetLevels(content, levels)) Cache.Save(AssetLevels{content, levels});
}

void AssetScanner::LoadLevels(const AssetContent& content) {
    Cache.LoadLevels(content, [&index = Index, content](auto levels) { index.SetLevels(content, std::move(levels)); });
}

}  // namespace ZorvicUnit
