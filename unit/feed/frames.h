#pragma once

#include "feed/feed.h"

#include <zorvic/v1/unit.pb.h>

#include <functional>

namespace ZorvicUnit {

/// Bytes of pieces in one frame, unless a single piece is larger. With the largest preset it stays below 1 MiB.
constexpr std::size_t FrameBytes = 448UL * 1024;

/// Cuts a batch into frames and hands them to write one by one; an empty batch gives one frame without pieces (the
/// heartbeat). Stops with false as soon as write returns false.
bool WriteFrames(Feed::Subscription::Batch batch, const std::function<bool(zorvic::v1::Frame&)>& write);

}  // namespace ZorvicUnit
