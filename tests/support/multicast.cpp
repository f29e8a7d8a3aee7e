#include "support/multicast.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

namespace {

/// A UDP socket on this port of every interface.
struct Socket {
    explicit Socket(std::uint16_t port) {
        Address.sin_family = AF_INET;
        Address.sin_port = htons(port);
        socklen_t size = sizeof(Address);
        Bound = Set(SOL_SOCKET, SO_REUSEADDR, 1) && Set(SOL_SOCKET, SO_REUSEPORT, 1) &&
                bind(Descriptor, Raw(), size) == 0 && getsockname(Descriptor, Raw(), &size) == 0;
    }
    ~Socket() { close(Descriptor); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    template <typename Value>
    bool Set(int level, int option, const Value& value) const {
        return setsockopt(Descriptor, level, option, &value, sizeof(value)) == 0;
    }
    // NOLINTNEXTLINE(bugprone-casting-through-void): the socket interface wants one address type for all families
    sockaddr* Raw() { return static_cast<sockaddr*>(static_cast<void*>(&Address)); }

    const int Descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in Address{};
    bool Bound = false;
};

}  // namespace

std::string WhyNoMulticastOnLoopback() {
    const auto because = [](const std::string& text) { return text + ": " + std::strerror(errno); };
    if (!Socket(5353).Bound) return because("another mDNS responder keeps its port to itself");
    Socket probe(0);
    ip_mreqn group{};
    group.imr_ifindex = static_cast<int>(if_nametoindex("lo"));
    inet_pton(AF_INET, "224.0.0.251", &group.imr_multiaddr);
    if (!probe.Bound || !probe.Set(IPPROTO_IP, IP_ADD_MEMBERSHIP, group) ||
        !probe.Set(IPPROTO_IP, IP_MULTICAST_IF, group) || !probe.Set(SOL_SOCKET, SO_RCVTIMEO, timeval{2, 0})) {
        return because("lo takes no multicast");
    }
    probe.Address.sin_addr = group.imr_multiaddr;
    char text = 'p';
    if (sendto(probe.Descriptor, &text, 1, 0, probe.Raw(), sizeof(probe.Address)) < 0 ||
        recv(probe.Descriptor, &text, 1, 0) < 0) {
        return because("multicast sent on lo does not come back");
    }
    return {};
}
