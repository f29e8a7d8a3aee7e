#include "assets/asset_index.h"

#include "fault.h"
#include "files/names.h"

#include <zorvic/enums.h>

#include <utility>

namespace ZorvicUnit {

namespace {

using zorvic::v1::Asset;
using zorvic::v1::AssetMetadata;

constexpr std::int64_t NanosecondsPerSecond = 1'000'000'000;

Asset Describe(const std::string& path, const FileStamp& stamp, Zorvic::AssetState state) {
    Asset asset;
    asset.set_full_path(path);
    asset.set_last_modified(stamp.ModifiedNS / NanosecondsPerSecond);
    asset.set_total_size(stamp.Size);
    asset.set_current_size(stamp.Size);
    asset.set_status(state);
    return asset;
}

}  // namespace

void AssetIndex::Remember(std::vector<AssetRecord> records, std::vector<AssetRefusal> refusals) {
    const std::scoped_lock lock(Lock);
    for (AssetRecord& record : records)
        Remembered[record.Content.Path] = std::move(record);
    for (AssetRefusal& refusal : refusals)
        RememberedRefusals[refusal.Content.Path] = std::move(refusal);
}

void AssetIndex::BeginScan() {
    const std::scoped_lock lock(Lock);
    TouchedDuringScan.clear();
}

AssetIndex::ScanResult AssetIndex::FinishScan(const TreeContent& content, Clock::TimePoint now,
                                              std::int64_t restedBefore) {
    const std::scoped_lock lock(Lock);
    ScanResult result;
    std::set<std::string> seen;
    for (const FoundFile& found : content.Files) {
        seen.insert(found.Path);
        if (!TouchedDuringScan.contains(found.Path)) Meet(found, now, restedBefore, result);
    }
    if (content.Complete) Forget(seen, result);
    return result;
}

void AssetIndex::Meet(const FoundFile& found, Clock::TimePoint now, std::int64_t restedBefore, ScanResult& result) {
    const auto [at, isNew] = Files.try_emplace(found.Path);
    File& file = at->second;
    if (isNew || file.Stamp != found.Stamp) {
        const bool listed = isNew ? HasMediaExtension(found.Path) : file.Listed || HasMediaExtension(found.Path);
        file = {};
        LatestLevels.Remove(found.Path);
        file.Stamp = found.Stamp;
        file.Changed = now;
        file.Listed = listed;
        Changed.insert(found.Path);
        Recall(file, {found.Path, found.Stamp}, result);
    }
    if (file.At != Stage::Settling) return;
    if (now - file.Changed >= Rest || (isNew && found.Stamp.ModifiedNS < restedBefore)) {
        file.At = Stage::Reading;
        result.ToProbe.push_back({found.Path, found.Stamp});
    } else {
        result.Settling = true;
    }
}

void AssetIndex::Recall(File& file, const AssetContent& content, ScanResult& result) {
    const auto known = Remembered.extract(content.Path);
    if (!known.empty() && known.mapped().Content.Stamp == content.Stamp) {
        MakeReady(file, known.mapped());
        result.Known.push_back(known.mapped());
    }
    const auto refused = RememberedRefusals.extract(content.Path);
    if (!refused.empty() && refused.mapped().Content.Stamp == content.Stamp) MakeRefused(file, refused.mapped());
}

void AssetIndex::Forget(const std::set<std::string>& seen, ScanResult& result) {
    for (auto at = Files.begin(); at != Files.end();) {
        if (seen.contains(at->first) || TouchedDuringScan.contains(at->first)) {
            ++at;
            continue;
        }
        result.Gone.push_back(at->first);
        Changed.insert(at->first);
        LatestLevels.Remove(at->first);
        at = Files.erase(at);
    }
    for (const auto& [path, record] : std::exchange(Remembered, {}))
        result.Gone.push_back(path);
    for (const auto& [path, refusal] : std::exchange(RememberedRefusals, {}))
        result.Gone.push_back(path);
}

void AssetIndex::MakeReady(File& file, const AssetRecord& record) {
    file.At = Stage::Ready;
    file.Listed = true;
    file.Checksum = record.Checksum;
    file.Metadata = record.Metadata;
    file.LevelsStored = record.LevelsStored;
}

void AssetIndex::MakeRefused(File& file, const AssetRefusal& refusal) {
    file.At = refusal.Broken ? Stage::Broken : Stage::NotMedia;
    file.Listed = refusal.Broken;
    file.Metadata.reset();
    file.Problem = refusal.Reason;
}

AssetIndex::File* AssetIndex::Current(const AssetContent& content) {
    const auto at = Files.find(content.Path);
    return at == Files.end() || at->second.Stamp != content.Stamp ? nullptr : &at->second;
}

bool AssetIndex::SetMetadata(const AssetContent& content, const AssetMetadata& metadata) {
    const std::scoped_lock lock(Lock);
    File* file = Current(content);
    if (file == nullptr || file->At != Stage::Reading) return false;
    file->Metadata = metadata;
    file->Listed = true;
    Changed.insert(content.Path);
    return true;
}

std::optional<AssetRecord> AssetIndex::SetChecksum(const AssetContent& content, const std::string& checksum) {
    const std::scoped_lock lock(Lock);
    File* file = Current(content);
    if (file == nullptr || file->At != Stage::Reading || !file->Metadata) return std::nullopt;
    file->Checksum = checksum;
    file->At = Stage::Ready;
    Changed.insert(content.Path);
    return AssetRecord{content, checksum, *file->Metadata};
}

bool AssetIndex::SetLevels(const AssetContent& content, std::shared_ptr<const Envelope> levels) {
    const std::scoped_lock lock(Lock);
    File* file = Current(content);
    if (file == nullptr) return false;
    file->LevelsStored = false;
    for (const std::string& path : LatestLevels.Put(content.Path, std::move(levels)))
        Files.at(path).LevelsStored = true;
    return true;
}

bool AssetIndex::SetRefused(const AssetRefusal& refusal) {
    const std::scoped_lock lock(Lock);
    File* file = Current(refusal.Content);
    if (file == nullptr) return false;
    MakeRefused(*file, refusal);
    Changed.insert(refusal.Content.Path);
    return true;
}

void AssetIndex::SetUnread(const AssetContent& content, const std::string& reason, Clock::TimePoint now) {
    const std::scoped_lock lock(Lock);
    File* file = Current(content);
    if (file == nullptr || file->At != Stage::Reading) return;
    if (++file->Tries >= MostTries) MakeRefused(*file, {content, true, reason});
    if (file->At == Stage::Reading) {
        file->At = Stage::Settling;
        file->Changed = now + Rest * (1 << file->Tries) - Rest;
    }
    Changed.insert(content.Path);
}

void AssetIndex::Remove(const std::string& path) {
    const std::scoped_lock lock(Lock);
    Files.erase(path);
    LatestLevels.Remove(path);
    TouchedDuringScan.insert(path);
    Changed.insert(path);
}

std::uint64_t AssetIndex::BeginImport(const std::string& path, const FileStamp& source) {
    const std::scoped_lock lock(Lock);
    const auto at = Imports.find(path);
    if (at != Imports.end() && at->second.Shown.status() == Zorvic::ZORVIC_ASSETSTATE_INGESTING)
        throw Fault(FaultKind::Refused, path + " is already on its way into the store");
    Import import{++LastImport, false, Describe(path, source, Zorvic::ZORVIC_ASSETSTATE_INGESTING), {}};
    import.Shown.set_current_size(0);
    Imports[path] = std::move(import);
    Changed.insert(path);
    return LastImport;
}

AssetIndex::Import* AssetIndex::Current(const std::string& path, std::uint64_t import) {
    const auto at = Imports.find(path);
    return at == Imports.end() || at->second.Number != import ? nullptr : &at->second;
}

bool AssetIndex::SetImportProgress(const std::string& path, std::uint64_t import, std::int64_t size) {
    const std::scoped_lock lock(Lock);
    Import* found = Current(path, import);
    if (found == nullptr) return false;
    if (found->Shown.current_size() == size) return true;
    found->Shown.set_current_size(size);
    Changed.insert(path);
    return true;
}

bool AssetIndex::BeginCommit(const std::string& path, std::uint64_t import) {
    const std::scoped_lock lock(Lock);
    Import* found = Current(path, import);
    if (found != nullptr) found->Committing = true;
    return found != nullptr;
}

void AssetIndex::FinishImport(const AssetRecord& record) {
    const std::scoped_lock lock(Lock);
    const std::string& path = record.Content.Path;
    Imports.erase(path);
    File& file = Files[path] = {};
    LatestLevels.Remove(path);
    file.Stamp = record.Content.Stamp;
    MakeReady(file, record);
    TouchedDuringScan.insert(path);
    Changed.insert(path);
}

bool AssetIndex::FailImport(const std::string& path, std::uint64_t import, const std::string& reason) {
    const std::scoped_lock lock(Lock);
    Import* found = Current(path, import);
    if (found == nullptr) return false;
    found->Committing = false;
    found->Problem = reason;
    found->Shown.set_status(Zorvic::ZORVIC_ASSETSTATE_ERROR);
    found->Shown.set_current_size(found->Shown.total_size());
    Changed.insert(path);
    return true;
}

bool AssetIndex::MayEndImport(const std::string& path) const {
    const std::scoped_lock lock(Lock);
    const auto at = Imports.find(path);
    if (at != Imports.end() && at->second.Committing)
        throw Fault(FaultKind::Refused, "the import of " + path + " is just being finished");
    return at != Imports.end();
}

std::size_t AssetIndex::ImportCount() const {
    const std::scoped_lock lock(Lock);
    return Imports.size();
}

bool AssetIndex::EndImport(const std::string& path) {
    const std::scoped_lock lock(Lock);
    if (Imports.erase(path) == 0) return false;
    Changed.insert(path);
    return true;
}

std::optional<Asset> AssetIndex::Show(const std::string& path) const {
    if (const auto import = Imports.find(path); import != Imports.end()) return import->second.Shown;
    const auto at = Files.find(path);
    if (at == Files.end() || !at->second.Listed) return std::nullopt;
    const File& file = at->second;
    auto state = Zorvic::ZORVIC_ASSETSTATE_PROCESSING;
    if (file.At == Stage::Ready) state = Zorvic::ZORVIC_ASSETSTATE_READY;
    if (file.At == Stage::Broken) state = Zorvic::ZORVIC_ASSETSTATE_ERROR;
    Asset asset = Describe(path, file.Stamp, state);
    asset.set_checksum(file.Checksum);
    if (file.Metadata) *asset.mutable_metadata() = *file.Metadata;
    return asset;
}

AssetChanges AssetIndex::TakeChanges() {
    const std::scoped_lock lock(Lock);
    AssetChanges changes;
    for (const std::string& path : std::exchange(Changed, {})) {
        if (auto asset = Show(path)) {
            Shown.insert(path);
            changes.Upserted.push_back(std::move(*asset));
        } else if (Shown.erase(path) > 0) {
            changes.Removed.push_back(path);
        }
    }
    return changes;
}

bool AssetIndex::HasChanges() const {
    const std::scoped_lock lock(Lock);
    return !Changed.empty();
}

std::optional<AssetContent> AssetIndex::Find(const std::string& path) const {
    const std::scoped_lock lock(Lock);
    const auto at = Files.find(path);
    if (at == Files.end() || !at->second.Listed) return std::nullopt;
    return AssetContent{path, at->second.Stamp};
}

std::optional<std::string> AssetIndex::Problem(const std::string& path) const {
    const std::scoped_lock lock(Lock);
    const auto import = Imports.find(path);
    if (import != Imports.end() && !import->second.Problem.empty()) return import->second.Problem;
    const auto at = Files.find(path);
    const bool broken = at != Files.end() && at->second.At == Stage::Broken;
    return broken ? std::optional(at->second.Problem) : std::nullopt;
}

std::optional<AssetMetadata> AssetIndex::Metadata(const std::string& path) const {
    const std::scoped_lock lock(Lock);
    const auto at = Files.find(path);
    return at == Files.end() ? std::nullopt : at->second.Metadata;
}

AssetIndex::LevelsAnswer AssetIndex::Levels(const std::string& path) {
    const std::scoped_lock lock(Lock);
    const auto at = Files.find(path);
    if (at == Files.end()) return {};
    LevelsAnswer answer{LatestLevels.Get(path), std::nullopt};
    if (answer.Levels == nullptr && std::exchange(at->second.LevelsStored, false))
        answer.ToLoad = AssetContent{path, at->second.Stamp};
    return answer;
}

}  // namespace ZorvicUnit
