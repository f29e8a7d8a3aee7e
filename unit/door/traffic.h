#pragma once

#include "door/conduct.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace ZorvicUnit {

/// What the RPC library counts per connection. (It counts only for servers that ask for it.)
using TrafficCounter = std::intptr_t;
/// The counters of all connections that it serves in this process, by the name of the peer.
std::map<std::string, TrafficCounter> ListTrafficCounters();
/// Without the bytes, which the library does not count. Nothing when the connection is over.
std::optional<Traffic> ReadTraffic(TrafficCounter counter);

/// Bytes that the kernel has received on a TCP socket.
std::uint64_t BytesReceived(int socket);

}  // namespace ZorvicUnit
