#pragma once

#include "printing.h"

#include <zorvic/extras.h>
#include <zorvic/types.h>

#include <optional>
#include <vector>

namespace ZorvicCtl {

// What units tell, for programs: sizes in bytes, times in milliseconds, positions as remaining times.

Json ToJson(const std::vector<Zorvic::LANZorvic>& units);
/// Every field under its name in the protocol.
Json ToJson(const Zorvic::Preset& preset);
/// And what it does.
Json ToJson(const Zorvic::Preset& preset, const Zorvic::PresetState& state,
            const std::optional<Zorvic::TimeCode>& position);
Json ToJson(const Zorvic::Asset& asset);
Json ToJson(const Zorvic::Drive& drive);
Json ToJson(const Zorvic::ExternalAsset& entry);
Json ToJson(const Zorvic::UnitFigures& figures);

}  // namespace ZorvicCtl
