#pragma once

#include "assets/asset_store.h"
#include "files/checksum.h"
#include "store/database.h"
#include "unit/media_samples.h"
#include "unit/unitfakes.h"

#include <zorvic/enums.h>

#include <gmock/gmock.h>

#include <thread>

namespace ZorvicUnit {

inline std::string HashOf(const std::string& bytes) {
    Checksum checksum;
    checksum.Add(bytes);
    return checksum.Hex();
}

/// A store with an external drive E, whose disk is looked at when the test says so.
class AssetFixture : public testing::Test {
protected:
    void SetUp() override { Open(); }
    /// Starts the store, again when it runs.
    void Open(bool watch = false) {
        Store.reset();
        Listed.clear();
        Store = std::make_unique<AssetStore>(AssetStore::Options{Disk.Path(), {{"E", Usb.Path()}}, watch, Reader}, Rows,
                                             Time);
        Store->SetListener([this] {
            ++Calls;
            std::this_thread::sleep_for(Pause.load());
        });
        Store->Start();
    }
    /// Brings the list of assets up to date, as a console does.
    AssetChanges Take() {
        AssetChanges changes = Store->TakeChanges();
        for (const auto& asset : changes.Upserted)
            Listed[asset.full_path()] = asset;
        for (const std::string& path : changes.Removed)
            EXPECT_EQ(Listed.erase(path), 1) << path;
        return changes;
    }

    /// Looks twice, so that files that do not change count as complete.
    void Settle() {
        Store->RescanNow();
        Time.Pass(2000);
        Store->RescanNow();
    }
    /// Puts a file among the assets and waits until it can be played.
    bool Bring(const std::string& name, const std::string& bytes = ToneFile()) {
        WriteFile(Asset(name), bytes);
        Settle();
        return WaitForStatus(Path(name), Zorvic::ZORVIC_ASSETSTATE_READY);
    }

    zorvic::v1::Asset Find(const std::string& path) {
        Take();
        const auto found = Listed.find(path);
        return found == Listed.end() ? zorvic::v1::Asset() : found->second;
    }
    int StatusOf(const std::string& path) { return Find(path).status(); }
    bool WaitForStatus(const std::string& path, int status) {
        return WaitUntil([&] { return StatusOf(path) == status; });
    }
    std::int64_t Count(int status) {
        Take();
        return std::ranges::count_if(Listed, [=](const auto& entry) { return entry.second.status() == status; });
    }
    bool WaitForLevels(const std::string& path) const {
        return WaitUntil([&] { return Store->Levels(path) != nullptr; });
    }

    /// An asset on the host, and for the unit.
    std::filesystem::path Asset(const std::string& name) const { return Disk / "Assets" / name; }
    static std::string Path(const std::string& name) { return "C:\\Assets\\" + name; }

    TemporaryDirectory Disk;
    TemporaryDirectory Usb;
    std::filesystem::path Reader = MediaProgram();
    FakeClock Time;
    Database Rows{Disk / "zorvic.db"};
    std::atomic<int> Calls = 0;
    std::atomic<std::chrono::milliseconds> Pause{};  ///< of whoever tells of a change
    std::map<std::string, zorvic::v1::Asset> Listed;
    std::unique_ptr<AssetStore> Store;
    const std::string Clip = Path("clip.wav");
};

}  // namespace ZorvicUnit
