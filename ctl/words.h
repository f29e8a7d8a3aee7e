#pragma once

#include <zorvic/types.h>

#include <cstdint>
#include <optional>
#include <string>

namespace ZorvicCtl {

// The field's words for what units tell in numbers; the number itself where this program does not know it.

std::string RoleText(Zorvic::UnitRole role);
std::string TypeText(Zorvic::UnitType type);
std::string AssetStateText(Zorvic::AssetState state);
std::string RefreshText(Zorvic::RefreshMode refresh);
std::string ResolutionText(Zorvic::ResolutionMode mode);
/// "playing", "paused" or "stopped".
std::string PlayText(const Zorvic::PresetState& state);
/// Further passes: "∞" without end.
std::string LoopText(std::int32_t loop);

/// A remaining time as the console shows it: what is left to the preset's out point.
std::string PositionText(std::int32_t positionMS, const Zorvic::Preset& preset);
/// What is left to the out point of a preset, as the console shows it: where it plays, else its whole length.
std::string TimeText(const Zorvic::Preset& preset, const Zorvic::PresetState& state,
                     const std::optional<Zorvic::TimeCode>& position);

/// What follows the last separator of a path on a unit.
std::string FileName(const std::string& path);

}  // namespace ZorvicCtl
