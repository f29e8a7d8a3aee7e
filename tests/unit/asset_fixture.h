#pragma once

#include "assets/asset_store.h"
#include "clock.h"
#include "fault.h"
#include "store/database.h"
#include "unit/media_samples.h"

#include <zorvic/enums.h>

#include <gmock/gmock.h>

#include <atomic>
#include <map>
#include <optional>

namespace ZorvicUnit {

class HandClock final : public Clock {
public:
    TimePoint Now() const override { return TimePoint(std::chrono::milliseconds(Milliseconds.load())); }
    void Advance(std::chrono::milliseconds time) { Milliseconds += time.count(); }

private:
    std::atomic<std::int64_t> Milliseconds = 1000;
};

/// A store with an external drive E, whose disk is looked at when the test says so.
class AssetFixture : public testing::Test {
protected:
    void Open(bool watch = false) {
        Store.reset();
        Store = std::make_unique<AssetStore>(AssetStore::Options{Disk.Path, {{"E", Usb.Path}}, watch}, Rows, Time);
        Store->SetListener([this] { ++Calls; });
        Store->Start();
    }

    /// Looks twice, so that files that do not change count as complete.
    void Settle() {
        Store->RescanNow();
        Time.Advance(std::chrono::seconds(2));
        Store->RescanNow();
    }

    std::optional<zorvic::v1::Asset> Find(const std::string& path) const {
        for (auto& asset : Store->Assets())
            if (asset.full_path() == path) return asset;
        return std::nullopt;
    }

    int StatusOf(const std::string& path) const {
        const auto asset = Find(path);
        return asset ? asset->status() : Zorvic::ZORVIC_ASSETSTATE_INVALID;
    }

    bool WaitForStatus(const std::string& path, int status) const {
        return WaitUntil([&] { return StatusOf(path) == status; });
    }

    template <typename Action>
    static std::optional<FaultKind> FaultOf(Action action) {
        try {
            action();
            return std::nullopt;
        } catch (const Fault& fault) {
            return fault.Kind;
        }
    }

    std::filesystem::path Asset(const std::string& name) const { return Disk / "Assets" / name; }

    MediaDirectory Disk;
    MediaDirectory Usb;
    HandClock Time;
    Database Rows{Disk / "zorvic.db"};
    std::atomic<int> Calls = 0;
    std::unique_ptr<AssetStore> Store;
};

}  // namespace ZorvicUnit
