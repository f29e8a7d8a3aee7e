#pragma once

#include "asset_catalog.h"
#include "clock.h"
#include "fault.h"

#include <gmock/gmock.h>
#include <zorvic/v1/unit.pb.h>

#include <sys/resource.h>

#include <atomic>
#include <map>

/// Time that stands still until the test moves it.
class FakeClock final : public ZorvicUnit::Clock {
public:
    TimePoint Now() const override { return TimePoint(std::chrono::milliseconds(Time)); }
    void Pass(std::int64_t milliseconds) { Time += milliseconds; }

private:
    std::atomic<std::int64_t> Time = 3'600'000;
};

class FakeCatalog : public ZorvicUnit::AssetCatalog {
public:
    std::optional<std::int32_t> DurationMS(const std::string& path) const override {
        const auto found = Durations.find(path);
        return found == Durations.end() ? std::nullopt : std::optional(found->second);
    }
    std::shared_ptr<const ZorvicUnit::Envelope> Levels(const std::string& path) const override {
        const auto found = Envelopes.find(path);
        return found == Envelopes.end() ? nullptr : found->second;
    }
    std::map<std::string, std::int32_t> Durations;
    std::map<std::string, std::shared_ptr<const ZorvicUnit::Envelope>> Envelopes;
};

/// A preset that shows one asset.
inline zorvic::v1::Preset PresetWith(std::int32_t pk, const std::string& asset) {
    zorvic::v1::Preset preset;
    preset.set_pk(pk);
    preset.set_name("preset " + std::to_string(pk));
    auto* canvas = preset.add_canvases();
    canvas->set_num_outputs(1);
    canvas->add_assets()->set_full_path(asset);
    return preset;
}

/// While it lives, no file of this process and of those it starts grows beyond the limit.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &Before);
        const rlimit limit{bytes, Before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &Before); }

private:
    rlimit Before{};
};

/// Why the action was not done; nothing when it was.
template <typename Action>
std::optional<ZorvicUnit::FaultKind> FaultOf(const Action& action) {
    try {
        action();
        return std::nullopt;
    } catch (const ZorvicUnit::Fault& fault) {
        return fault.Kind;
    }
}
