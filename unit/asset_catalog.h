#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ZorvicUnit {

/// Peak level of the left and right channel (0 to 100) for every step of an asset's length; mono shows on both.
struct Envelope {
    static constexpr std::int32_t StepMS = 50;
    std::vector<std::array<std::uint8_t, 2>> Levels;
};

/// What playback needs to know of the assets on the unit. Paths are the unit's own ("C:\Assets\clip.mov").
/// Safe to call from several threads.
class AssetCatalog {
public:
    virtual ~AssetCatalog() = default;
    /// Length in ms (a still lasts 10 s); nothing when the asset is unknown or not probed yet.
    virtual std::optional<std::int32_t> DurationMS(const std::string& path) const = 0;
    /// Null until the envelope is computed, and for an asset without sound.
    virtual std::shared_ptr<const Envelope> Levels(const std::string& path) const = 0;
};

}  // namespace ZorvicUnit
