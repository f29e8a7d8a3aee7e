#include "asrun_records.h"

namespace Zorvic::Internal {

namespace {

AsRunEntry::WallTime ToWall(std::int64_t microseconds) {
    return AsRunEntry::WallTime(std::chrono::microseconds(microseconds));
}

}  // namespace

AsRunEntry FromWire(const Wire::AsRunEntry& wire) {
    AsRunEntry entry{.Number = wire.number(),
                     .Kind = static_cast<AsRunKind>(wire.kind()),
                     .Wall = ToWall(wire.wall_us()),
                     .Monotonic = std::chrono::microseconds(wire.monotonic_us()),
                     .Boot = wire.boot(),
                     .PK = wire.pk(),
                     .Preset = wire.preset(),
                     .RemainingMS = {},
                     .Address = wire.address(),
                     .Client = wire.client(),
                     .Certified = wire.certified(),
                     .Text = wire.text(),
                     .Shown = static_cast<AsRunShown>(wire.shown()),
                     .Outputs = {wire.outputs().begin(), wire.outputs().end()},
                     .LitAfter = std::chrono::microseconds(wire.lit_after_us()),
                     .Dropped = wire.dropped(),
                     .From = {}};
    if (wire.has_remaining_ms()) entry.RemainingMS = wire.remaining_ms();
    if (wire.from_us() != 0) entry.From = ToWall(wire.from_us());
    return entry;
}

Wire::AsRunRequest ToWire(const AsRunSheet::Range& range) {
    Wire::AsRunRequest request;
    request.set_since_us(range.Since.time_since_epoch().count());
    request.set_limit(range.Limit);
    return request;
}

}  // namespace Zorvic::Internal
