#include "assets/asset_store.h"

#include "assets/asset_cache.h"
#include "assets/asset_index.h"
#include "assets/asset_scanner.h"
#include "assets/importer.h"
#include "drives/drive_reader.h"
#include "drives/drive_table.h"
#include "fault.h"
#include "files/file_copy.h"

#include <spdlog/spdlog.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace ZorvicUnit {

namespace {

constexpr std::chrono::milliseconds ReadLimitOfCallers{1500};
constexpr auto CacheName = "cache.db";

std::vector<DriveRoot> ToRoots(const AssetStore::Options& options) {
    std::vector<DriveRoot> roots = {{"C", options.StoreDirectory, false}};
    roots.insert(roots.end(), options.Drives.begin(), options.Drives.end());
    return roots;
}

}  // namespace

struct AssetStore::Impl {
    Impl(const Options& options, Database& database, const Clock& clock)
        : Watch(options.Watch),
          Drives(ToRoots(options)),
          Cache(options.StoreDirectory / CacheName),
          Orders(database),
          Time(clock),
          Scanner(options.Reader, Drives, Index, Cache, Time, [this] { Notify(); }) {
        for (const DriveRoot& drive : Drives.All())
            Readers.push_back(std::make_unique<DriveReader>(drive));
    }

    void Notify() const {
        if (Listener && Index.HasChanges()) Listener();
    }

    DriveReader& ReaderOf(const DrivePlace& place) {
        const auto index = place.Drive - Drives.All().data();
        return *Readers[static_cast<std::size_t>(index)];
    }

    const bool Watch;
    const DriveTable Drives;
    const DrivePlace Folder{&Drives.All().front(), {"Assets"}};
    std::vector<std::unique_ptr<DriveReader>> Readers;  ///< in the order of Drives
    AssetIndex Index;
    AssetCache Cache;
    ImportTable Orders;
    const Clock& Time;
    std::function<void()> Listener;
    // Destroyed in reverse order: the importer hands finished files to the scanner.
    AssetScanner Scanner;
    Importer Imports{Folder, Drives, Orders, Index, Scanner, [this] { Notify(); }};
};

AssetStore::AssetStore(const Options& options, Database& database, const Clock& clock)
    : Parts(std::make_unique<Impl>(options, database, clock)) {}

AssetStore::~AssetStore() = default;

void AssetStore::SetListener(std::function<void()> listener) {
    Parts->Listener = std::move(listener);
}

void AssetStore::Start() {
    MakeDirectories(Parts->Folder.HostPath());
    Parts->Imports.Sweep();
    Parts->Scanner.Start(Parts->Watch);
    Parts->Imports.Resume();
}

AssetChanges AssetStore::TakeChanges() {
    return Parts->Index.TakeChanges();
}

std::optional<std::int32_t> AssetStore::DurationMS(const std::string& path) const {
    const auto metadata = Parts->Index.Metadata(path);
    return metadata ? std::optional(metadata->duration_ms()) : std::nullopt;
}

std::shared_ptr<const Envelope> AssetStore::Levels(const std::string& path) const {
    auto [levels, toLoad] = Parts->Index.Levels(path);
    if (toLoad) Parts->Scanner.LoadLevels(*toLoad);
    return levels;
}

std::string AssetStore::HostFile(const std::string& path) const {
    if (!Parts->Index.Metadata(path)) return {};
    try {
        return ResolveOnDrive(Parts->Drives.Parse(path)).string();
    } catch (const Fault&) {
        return {};  // gone, or a link that leads off the drive
    }
}

void AssetStore::Condemn(const std::string& path, const std::string& reason) {
    Parts->Scanner.Condemn(path, reason);
}

zorvic::v1::AssetMetadata AssetStore::ReadMetadata(const std::string& path) const {
    if (auto known = Parts->Index.Metadata(path)) return *std::move(known);
    if (const auto problem = Parts->Index.Problem(path)) throw Fault(FaultKind::Refused, *problem);
    const auto content = Parts->Index.Find(path);
    if (!content) throw Fault(FaultKind::NotFound, "there is no asset " + path);
    auto metadata =
        Parts->Scanner.Probe(ResolveOnDrive(Parts->Drives.Parse(path)), ReadLimit::Within(ReadLimitOfCallers));
    metadata.set_file_path(path);
    return metadata;
}

bool AssetStore::EndImport(const std::string& path, const Caller& caller) {
    if (!Parts->Drives.Parse(path).IsBelowAssets())
        throw Fault(FaultKind::Misused, path + " is not the path of an asset");
    if (!Parts->Imports.End(path, caller)) return false;
    Parts->Notify();
    return true;
}

void AssetStore::Delete(const std::string& path, const Caller& caller) {
    if (EndImport(path, caller)) return;
    if (!Parts->Index.Find(path)) throw Fault(FaultKind::NotFound, "there is no asset " + path);
    DrivePlace folder = Parts->Drives.Parse(path);
    const std::string name = folder.Names.back();
    folder.Names.pop_back();
    // A folder may have become a link that leads off the drive.
    const auto file = ResolveOnDrive(folder) / name;
    caller.CheckWaits();
    if (unlink(file.c_str()) != 0 && errno != ENOENT)
        throw Fault(FaultKind::Internal, "cannot delete " + path + ": " + std::strerror(errno));
    Parts->Index.Remove(path);
    Parts->Notify();
    Parts->Cache.Remove({path});
    SyncDirectory(file.parent_path());
    Parts->Notify();
}

std::vector<zorvic::v1::Drive> AssetStore::Drives() const {
    std::vector<zorvic::v1::Drive> drives;
    for (const auto& reader : Parts->Readers)
        drives.push_back(reader->Space());
    return drives;
}

std::vector<zorvic::v1::DirectoryEntry> AssetStore::ListDirectory(const std::string& drive, const std::string& path) {
    const DrivePlace place = Parts->Drives.Parse(drive, path);
    return Parts->ReaderOf(place).List(place.Names);
}

void AssetStore::Install(const std::string& path, const Caller& caller) {
    const DrivePlace place = Parts->Drives.Parse(path);
    if (place.Names.empty()) throw Fault(FaultKind::Misused, path + " is no file");
    Parts->Imports.Add(Parts->ReaderOf(place).FindFile(place.Names), place, caller);
}

void AssetStore::RescanNow() {
    Parts->Scanner.Scan();
}

}  // namespace ZorvicUnit
