#include "support/multicast.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace {

struct Socket {
    ~Socket() { close(Descriptor); }
    const int Descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
};

template <typename Value>
bool Set(const Socket& socket, int level, int option, const Value& value) {
    return setsockopt(socket.Descriptor, level, option, &value, sizeof(value)) == 0;
}

bool Bind(const Socket& socket, sockaddr_in& address) {
    socklen_t size = sizeof(address);
    // NOLINTNEXTLINE(bugprone-casting-through-void): the socket interface wants one address type for all families
    auto* const raw = static_cast<sockaddr*>(static_cast<void*>(&address));
    return bind(socket.Descriptor, raw, size) == 0 && getsockname(socket.Descriptor, raw, &size) == 0;
}

sockaddr_in Any(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    return address;
}

}  // namespace

std::string WhyNoMulticastOnLoopback() {
    const Socket responder;
    sockaddr_in mdns = Any(5353);
    if (!Set(responder, SOL_SOCKET, SO_REUSEADDR, 1) || !Set(responder, SOL_SOCKET, SO_REUSEPORT, 1) ||
        !Bind(responder, mdns)) {
        return std::string("another mDNS responder keeps its port to itself: ") + std::strerror(errno);
    }
    const Socket probe;
    sockaddr_in target = Any(0);
    ip_mreqn group{};
    group.imr_ifindex = static_cast<int>(if_nametoindex("lo"));
    inet_pton(AF_INET, "224.0.0.251", &group.imr_multiaddr);
    const timeval limit{2, 0};
    if (!Bind(probe, target) || !Set(probe, IPPROTO_IP, IP_ADD_MEMBERSHIP, group) ||
        !Set(probe, IPPROTO_IP, IP_MULTICAST_IF, group) || !Set(probe, SOL_SOCKET, SO_RCVTIMEO, limit)) {
        return std::string("lo takes no multicast: ") + std::strerror(errno);
    }
    target.sin_addr = group.imr_multiaddr;
    const std::array<char, 4> sent = {'p', 'i', 'n', 'g'};
    std::array<char, 4> received{};
    // NOLINTNEXTLINE(bugprone-casting-through-void): as above
    const auto* raw = static_cast<const sockaddr*>(static_cast<const void*>(&target));
    if (sendto(probe.Descriptor, sent.data(), sent.size(), 0, raw, sizeof(target)) < 0 ||
        recv(probe.Descriptor, received.data(), received.size(), 0) < 0 || sent != received) {
        return std::string("multicast sent on lo does not come back: ") + std::strerror(errno);
    }
    return {};
}
