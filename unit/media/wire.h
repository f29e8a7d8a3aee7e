#pragma once

#include "asset_catalog.h"
#include "files/descriptor.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace ZorvicUnit {

/// Sends bytes behind their length, with a copy of a descriptor when one is given. False when the other side is gone.
bool SendFrame(int socket, std::string_view bytes, int descriptor = -1);

struct Frame {
    std::string Bytes;
    Descriptor Passed{-1};
};
/// Nothing when the other side is gone, claims more than levels of a day can hold, or `wait`, which waits until there
/// is something to read, says no. What may be passed is one descriptor, or none.
std::optional<Frame> ReceiveFrame(int socket, bool mayPass, const std::function<bool()>& wait);

/// Levels as they are stored and sent: left, right, left, …
std::string ToBytes(const Envelope& levels);
Envelope ToEnvelope(std::string_view bytes);

}  // namespace ZorvicUnit
