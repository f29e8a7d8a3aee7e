#pragma once

#include <string>
#include <vector>

namespace ZorvicUnit {

/// One IPv4 address of one network interface of this machine.
struct InterfaceAddress {
    std::string Interface;
    int Index = 0;
    std::string Address;
    bool Loopback = false;
    bool operator==(const InterfaceAddress&) const = default;
};

/// Interfaces that are up now.
std::vector<InterfaceAddress> ListInterfaceAddresses();

/// Where a unit that listens on `listenAddress` can be told of: every address that reaches it, on the interface that
/// holds it. A loopback address goes to the loopback interface only, and the address of all interfaces never to it.
/// `interfaceName` limits this to one interface; empty means all.
std::vector<InterfaceAddress> PlacesToAnnounce(const std::string& listenAddress, const std::string& interfaceName,
                                               const std::vector<InterfaceAddress>& present);

}  // namespace ZorvicUnit
