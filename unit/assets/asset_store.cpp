#include "assets/asset_store.h"

#include "fault.h"

namespace ZorvicUnit {

struct AssetStore::Impl {
    AssetStore::Options Options;
    std::function<void()> Listener;
};

AssetStore::AssetStore(Options options, Database& /*database*/, const Clock& /*clock*/)
    : Parts(std::make_unique<Impl>(Impl{std::move(options), {}})) {}

AssetStore::~AssetStore() = default;

void AssetStore::SetListener(std::function<void()> listener) {
    Parts->Listener = std::move(listener);
}

void AssetStore::Start() {
    std::filesystem::create_directories(Parts->Options.StoreDirectory / "Assets");
}

std::vector<zorvic::v1::Asset> AssetStore::Assets() const {
    return {};
}

AssetChanges AssetStore::TakeChanges() {
    return {};
}

std::optional<std::int32_t> AssetStore::DurationMS(const std::string& /*path*/) const {
    return std::nullopt;
}

std::shared_ptr<const Envelope> AssetStore::Levels(const std::string& /*path*/) const {
    return nullptr;
}

zorvic::v1::AssetMetadata AssetStore::ReadMetadata(const std::string& path) const {
    throw Fault(FaultKind::Missing, "cannot read the metadata of " + path + " yet");
}

void AssetStore::Delete(const std::string& path) {
    throw Fault(FaultKind::Missing, "cannot delete " + path + " yet");
}

std::vector<zorvic::v1::Drive> AssetStore::Drives() const {
    return {};
}

std::vector<zorvic::v1::DirectoryEntry> AssetStore::ListDirectory(const std::string& drive,
                                                                  const std::string& /*path*/) {
    throw Fault(FaultKind::Missing, "cannot list drive " + drive + " yet");
}

void AssetStore::Install(const std::string& path) {
    throw Fault(FaultKind::Missing, "cannot import " + path + " yet");
}

void AssetStore::RescanNow() {}

}  // namespace ZorvicUnit
