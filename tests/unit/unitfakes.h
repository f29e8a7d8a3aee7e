#pragma once

#include "clock.h"
#include "media_catalog.h"

#include <zorvic/v1/unit.pb.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

/// Time that stands still until the test moves it.
class FakeClock final : public ZorvicUnit::Clock {
public:
    TimePoint Now() const override { return Time; }
    void Pass(std::int64_t milliseconds) { Time += std::chrono::milliseconds(milliseconds); }

private:
    TimePoint Time{std::chrono::hours(1)};
};

class FakeCatalog final : public ZorvicUnit::MediaCatalog {
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
