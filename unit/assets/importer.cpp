#include "assets/importer.h"

#include "fault.h"
#include "files/file_copy.h"
#include "files/names.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <utility>

namespace ZorvicUnit {

namespace {

constexpr std::chrono::milliseconds ProgressPeriod{100};
constexpr std::chrono::seconds ProbeLimit{60};
// The name of the asset does not enter: with a suffix it might be too long for the file system.
constexpr const char* PartPrefix = ".ingest-";
constexpr const char* PartSuffix = ".part";

bool IsBelow(const std::filesystem::path& directory, const std::filesystem::path& file) {
    return std::mismatch(directory.begin(), directory.end(), file.begin(), file.end()).first == directory.end();
}

}  // namespace

Importer::Importer(DrivePlace folder, AssetIndex& index, AssetScanner& scanner, std::function<void()> notify)
    : Folder(std::move(folder)),
      Index(index),
      Scanner(scanner),
      Notify(std::move(notify)),
      Copies("zu-import", Manners::Modest) {}

Importer::~Importer() = default;

void Importer::Sweep() const {
    if (!StaysOnDrive(Folder)) return;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(Folder.HostPath(), error)) {
        const std::string name = entry.path().filename().string();
        if (!name.starts_with(PartPrefix) || !name.ends_with(PartSuffix)) continue;
        spdlog::info("removing an unfinished import");
        std::filesystem::remove(entry.path(), error);
    }
}

void Importer::Add(const SourceFile& source, const std::string& name) {
    if (IsHidden(name)) throw Fault(FaultKind::Misused, "\"" + ForLog(name) + "\" would be a hidden file");
    const auto directory = ResolveOnDrive(Folder);
    if (IsBelow(directory, source.File))
        throw Fault(FaultKind::Refused, source.File.string() + " is in the store already");
    Order order{source, Folder.Path() + '\\' + name, directory / name};
    order.Number = Index.BeginImport(order.Path, source.Stamp);
    Notify();
    Copies.Post(0, [this, order = std::move(order)] { Carry(order); });
}

void Importer::Carry(const Order& order) {
    const auto directory = order.Target.parent_path();
    const auto part = directory / (PartPrefix + std::to_string(order.Number) + PartSuffix);
    try {
        const AssetRecord record = CopyAndProbe(order, part);
        std::filesystem::rename(part, order.Target);
        SyncDirectory(directory);
        Index.FinishImport(record);
        spdlog::info("imported {}", order.Path);
        Notify();
        Scanner.Keep({record});
    } catch (const std::exception& error) {
        std::error_code ignored;
        std::filesystem::remove(part, ignored);
        if (Copies.Stopping()) return;
        if (Index.FailImport(order.Path, order.Number))
            spdlog::error("importing {} from {}: {}", order.Path, order.Source.File.string(), error.what());
        Notify();
    }
}

AssetRecord Importer::CopyAndProbe(const Order& order, const std::filesystem::path& part) {
    AssetRecord record;
    std::filesystem::remove(part);
    ShowProgress(order, 0);
    record.Checksum = CopyToDisk(order.Source.File, part, order.Source.Stamp.Size, Copies.Stopping(),
                                 [&](std::int64_t done) { ShowProgress(order, done); });
    if (ReadStamp(order.Source.File) != order.Source.Stamp)
        throw Fault(FaultKind::Internal, order.Source.File.string() + " changed while it was copied");
    ReadLimit limit = ReadLimit::Within(ProbeLimit);
    limit.Stop = &Copies.Stopping();
    record.Metadata = Scanner.Probe(part, limit);
    record.Metadata.set_file_path(order.Path);
    record.Content = {order.Path, ReadStamp(part)};
    if (!Index.BeginCommit(order.Path, order.Number)) throw Fault(FaultKind::Refused, "the import was ended");
    return record;
}

void Importer::ShowProgress(const Order& order, std::int64_t done) {
    if (!Index.SetImportProgress(order.Path, order.Number, done))
        throw Fault(FaultKind::Refused, "the import was ended");
    const auto now = std::chrono::steady_clock::now();
    if (now - LastShown < ProgressPeriod) return;
    LastShown = now;
    Notify();
}

}  // namespace ZorvicUnit
