#include "assets/importer.h"

#include "fault.h"
#include "files/file_copy.h"
#include "files/names.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <cstddef>
#include <future>
#include <memory>
#include <utility>

namespace ZorvicUnit {

namespace {

constexpr std::chrono::milliseconds ProgressPeriod{100};
constexpr std::chrono::seconds ProbeLimit{60};
constexpr std::size_t MostOrders = 10'000;
// The name of the asset does not enter: with a suffix it might be too long for the file system.
constexpr const char* PartPrefix = ".ingest-";
constexpr const char* PartSuffix = ".part";

bool IsBelow(const std::filesystem::path& directory, const std::filesystem::path& file) {
    return std::mismatch(directory.begin(), directory.end(), file.begin(), file.end()).first == directory.end();
}

void Rename(std::string& text, const std::filesystem::path& file, const std::string& name) {
    const std::string before = file.string();
    if (before.empty()) return;
    for (auto at = text.find(before); at != std::string::npos; at = text.find(before, at + name.size()))
        text.replace(at, before.size(), name);
}

}  // namespace

Importer::Importer(DrivePlace folder, const DriveTable& drives, ImportTable& orders, AssetIndex& index,
                   AssetScanner& scanner, std::function<void()> notify)
    : Folder(std::move(folder)),
      Drives(drives),
      Orders(orders),
      Index(index),
      Scanner(scanner),
      Notify(std::move(notify)),
      Writer("zu-orders", Manners::Normal),
      Copies("zu-import", Manners::Modest) {}

Importer::~Importer() {
    Copies.RequestStop();
    Writer.RequestStop();
}

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

void Importer::Resume() {
    for (const ImportOrder& kept : Orders.Load()) {
        try {
            TakeUp(kept);
        } catch (const std::exception& error) {
            spdlog::error("importing {}: {}", kept.Path, error.what());
        }
    }
    Notify();
}

void Importer::TakeUp(const ImportOrder& kept) {
    if (IsDone(kept)) return Orders.Remove(kept.Path);
    Order order{kept, {}, Index.BeginImport(kept.Path, kept.Stamp)};
    if (!kept.Problem.empty()) {
        Index.FailImport(kept.Path, order.Number, kept.Problem);
        return;
    }
    spdlog::info("importing {} again from {}", kept.Path, kept.Source);
    Queue(std::move(order));
}

// The unit was killed between the copy's taking its place and the end of the order.
bool Importer::IsDone(const ImportOrder& kept) const {
    if (kept.Copy == FileStamp()) return false;
    try {
        return ReadStamp(ResolveOnDrive(Drives.Parse(kept.Path))) == kept.Copy;
    } catch (const Fault&) {
        return false;
    }
}

void Importer::Add(const SourceFile& source, const DrivePlace& place, const Caller& caller) {
    const std::string& name = place.Names.back();
    if (IsHidden(name)) throw Fault(FaultKind::Misused, "\"" + ForLog(name) + "\" would be a hidden file");
    if (IsBelow(ResolveOnDrive(Folder), source.File))
        throw Fault(FaultKind::Refused, source.File.string() + " is in the store already");
    Order order{{Folder.Path() + '\\' + name, place.Path(), source.Stamp, {}, {}}, source.File, 0};
    {
        const auto turn = Orders.WaitForTurn(caller.Waits);
        if (Index.ImportCount() >= MostOrders)
            throw Fault(FaultKind::Refused, "there are as many orders to import as there may be");
        order.Number = Index.BeginImport(order.Kept.Path, source.Stamp);
        try {
            Orders.Add(order.Kept);
        } catch (...) {
            Index.EndImport(order.Kept.Path);
            throw;
        }
    }
    Notify();
    Queue(std::move(order));
}

bool Importer::End(const std::string& path, const Caller& caller) {
    if (!Index.MayEndImport(path)) return false;
    const auto turn = Orders.WaitForTurn(caller.Waits);
    if (!Index.MayEndImport(path)) return false;
    Orders.Remove(path);
    return Index.EndImport(path);
}

void Importer::Queue(Order order) {
    Copies.Post(0, [this, order = std::move(order)] { Carry(order); });
}

void Importer::Carry(Order order) {
    const auto part = Folder.HostPath() / (PartPrefix + std::to_string(order.Number) + PartSuffix);
    try {
        if (order.Source.empty()) order.Source = ResolveOnDrive(Drives.Parse(order.Kept.Source));
        Finish(order, CopyAndProbe(order, part), part);
    } catch (const std::exception& error) {
        std::error_code ignored;
        std::filesystem::remove(part, ignored);
        if (Copies.Stopping()) return;
        // Consoles know both files by other names than the disk does.
        std::string reason = error.what();
        Rename(reason, part, order.Kept.Path);
        Rename(reason, order.Source, order.Kept.Source);
        try {
            Fail(order, reason);
        } catch (const std::future_error&) {
            // The unit is ending, and the order stays.
        }
    }
}

void Importer::Finish(const Order& order, const AssetRecord& record, const std::filesystem::path& part) {
    const std::string& path = record.Content.Path;
    InTurn([&] {
        if (!Index.BeginCommit(path, order.Number)) throw Fault(FaultKind::Refused, "the import was ended");
        Keep([&] { Orders.SetCopy(path, record.Content.Stamp); });
    });
    std::filesystem::rename(part, ResolveOnDrive(Folder) / Drives.Parse(path).Names.back());
    SyncDirectory(part.parent_path());
    InTurn([&] {
        Index.FinishImport(record);
        Keep([&] { Orders.Remove(path); });
    });
    spdlog::info("imported {}", path);
    Notify();
    Scanner.Keep(record);
}

void Importer::Fail(const Order& order, const std::string& reason) {
    const std::string& path = order.Kept.Path;
    InTurn([&] {
        if (!Index.FailImport(path, order.Number, reason)) return;
        spdlog::error("importing {} from {}: {}", path, order.Kept.Source, reason);
        Keep([&] { Orders.SetProblem(path, reason); });
    });
    Notify();
}

// What becomes of an order and what is listed of it changes together, so that a new order for the same path, or the end
// of this one, comes before or after. The thread that copies gives way to everything: it must not hold the database's
// lock while it does.
void Importer::InTurn(const std::function<void()>& change) {
    auto task = std::make_shared<std::packaged_task<void()>>([this, &change] {
        const auto turn = Orders.WaitForTurn([] { return true; });
        change();
    });
    auto done = task->get_future();
    // The job alone holds the task: when the writer drops it, the wait ends.
    Writer.Post(0, [task = std::move(task)] { (*task)(); });
    done.get();
}

// A failure is logged only: at worst a restart does once more what was done.
void Importer::Keep(const std::function<void()>& change) {
    try {
        change();
    } catch (const std::exception& error) {
        spdlog::error("keeping what became of an import: {}", error.what());
    }
}

AssetRecord Importer::CopyAndProbe(const Order& order, const std::filesystem::path& part) {
    AssetRecord record;
    std::filesystem::remove(part);
    ShowProgress(order, 0);
    record.Checksum = CopyToDisk(order.Source, part, order.Kept.Stamp.Size, Copies.Stopping(),
                                 [&](std::int64_t done) { ShowProgress(order, done); });
    if (ReadStamp(order.Source) != order.Kept.Stamp)
        throw Fault(FaultKind::Internal, order.Source.string() + " changed since it was asked for");
    ReadLimit limit = ReadLimit::Within(ProbeLimit);
    limit.Stop = &Copies.Stopping();
    record.Metadata = Scanner.Probe(part, limit);
    record.Metadata.set_file_path(order.Kept.Path);
    record.Content = {order.Kept.Path, ReadStamp(part)};
    return record;
}

void Importer::ShowProgress(const Order& order, std::int64_t done) {
    if (!Index.SetImportProgress(order.Kept.Path, order.Number, done))
        throw Fault(FaultKind::Refused, "the import was ended");
    const auto now = std::chrono::steady_clock::now();
    if (now - LastShown < ProgressPeriod) return;
    LastShown = now;
    Notify();
}

}  // namespace ZorvicUnit
