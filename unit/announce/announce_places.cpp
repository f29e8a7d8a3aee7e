#include "announce/announce_places.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>

#include <array>
#include <cstring>
#include <memory>

namespace ZorvicUnit {

std::vector<InterfaceAddress> ListInterfaceAddresses() {
    ifaddrs* head = nullptr;
    if (getifaddrs(&head) != 0) return {};
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(head, &freeifaddrs);
    std::vector<InterfaceAddress> found;
    for (const ifaddrs* entry = head; entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET || (entry->ifa_flags & IFF_UP) == 0) continue;
        sockaddr_in address{};
        std::memcpy(&address, entry->ifa_addr, sizeof(address));
        std::array<char, INET_ADDRSTRLEN> text{};
        inet_ntop(AF_INET, &address.sin_addr, text.data(), text.size());
        found.push_back({entry->ifa_name, static_cast<int>(if_nametoindex(entry->ifa_name)), text.data(),
                         (entry->ifa_flags & IFF_LOOPBACK) != 0});
    }
    return found;
}

std::vector<InterfaceAddress> PlacesToAnnounce(const std::string& listenAddress, const std::string& interfaceName,
                                               const std::vector<InterfaceAddress>& present) {
    const bool everywhere = listenAddress.empty() || listenAddress == "0.0.0.0";
    const bool loopback = listenAddress.starts_with("127.");
    std::vector<InterfaceAddress> places;
    for (const auto& candidate : present) {
        if (!interfaceName.empty() && candidate.Interface != interfaceName) continue;
        if (loopback && candidate.Loopback) {
            // The interface lists only 127.0.0.1 and answers for the whole block.
            places.push_back({candidate.Interface, candidate.Index, listenAddress, true});
            break;
        }
        const bool named = candidate.Loopback && !interfaceName.empty();
        if (everywhere ? !candidate.Loopback || named : candidate.Address == listenAddress) places.push_back(candidate);
    }
    return places;
}

}  // namespace ZorvicUnit
