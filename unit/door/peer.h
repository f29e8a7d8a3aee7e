#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ZorvicUnit {

/// Who is at the other end of a connection.
struct Peer {
    std::string Name;  ///< of the connection: "ipv4:192.0.2.1:50000", "ipv6:[::1]:50000"
    std::string Host;  ///< of its machine: the same without the port
};

/// From the name that the RPC library gives to the connection.
Peer PeerFromName(std::string_view name);
/// Of a connected socket; nothing when it is not connected any more.
std::optional<Peer> PeerOfSocket(int socket);

}  // namespace ZorvicUnit
