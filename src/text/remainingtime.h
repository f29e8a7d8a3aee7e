#pragma once

#include <zorvic/types.h>

#include <cstdint>

// Remaining times are 32-bit counts of ms that units may fill with anything: sums wrap, as they do on the wire.

constexpr std::int32_t WrapAdd(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

constexpr std::int32_t WrapSubtract(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

/// Where the preset starts: its in point, or its whole running time when none is set.
inline std::int32_t StartPosition(const Zorvic::Preset& preset, const Zorvic::PresetState& state) {
    return preset.InPosition != 0 ? preset.InPosition : state.TRT;
}

/// From the start to the out point.
inline std::int32_t TrimmedLength(const Zorvic::Preset& preset, const Zorvic::PresetState& state) {
    return WrapSubtract(StartPosition(preset, state), preset.OutPosition);
}
