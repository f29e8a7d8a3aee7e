#pragma once

#include "feed/feed.h"

#include <zorvic/v1/unit.pb.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ZorvicUnit {

/// Feed changes made of the protocol's records: each record is serialised here, once per change.
FeedChange IdentityChange(const zorvic::v1::Identity& identity);
FeedChange HardwareChange(const zorvic::v1::HardwareState& hardware);
FeedChange PresetChanged(const zorvic::v1::Preset& preset);
FeedChange PresetGone(std::int32_t pk);
FeedChange AssetChanged(const zorvic::v1::Asset& asset);
FeedChange AssetGone(const std::string& path);
FeedChange StateChanged(const zorvic::v1::PresetState& state);
FeedChange StateGone(std::int32_t pk);
FeedChange DrivesChange(const std::vector<zorvic::v1::Drive>& drives);
FeedChange TimeCodesChange(zorvic::v1::TimeCodes timeCodes);

/// One piece that tells all of these states, each from a piece of StateChanged().
PieceBytes WholeStates(const std::vector<PieceBytes>& single);

}  // namespace ZorvicUnit
