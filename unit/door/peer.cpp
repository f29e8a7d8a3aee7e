#include "door/peer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <spdlog/fmt/fmt.h>
#include <sys/socket.h>

#include <array>
#include <charconv>
#include <cstring>

namespace ZorvicUnit {

namespace {

// The library writes names as URIs: brackets and the percent sign of a zone are encoded.
std::string Decoded(std::string_view name) {
    std::string text;
    for (std::size_t place = 0; place < name.size(); ++place) {
        unsigned code = 0;
        const std::string_view digits = name.substr(place + 1, 2);
        const bool encoded = name[place] == '%' && digits.size() == 2 &&
                             std::from_chars(digits.data(), digits.data() + 2, code, 16).ptr == digits.data() + 2;
        text += encoded ? static_cast<char>(code) : name[place];
        if (encoded) place += 2;
    }
    return text;
}

template <int Family, typename Address>
std::string Written(const Address& address) {
    std::array<char, INET6_ADDRSTRLEN> text{};
    inet_ntop(Family, &address, text.data(), text.size());
    return text.data();
}

// A machine that reaches a dual socket by IPv4 is named by that.
std::string NameOf(const sockaddr_in6& six) {
    if (IN6_IS_ADDR_V4MAPPED(&six.sin6_addr) != 0) {
        in_addr four{};
        std::memcpy(&four, six.sin6_addr.s6_addr + 12, sizeof four);
        return fmt::format("ipv4:{}:{}", Written<AF_INET>(four), ntohs(six.sin6_port));
    }
    const std::string zone = six.sin6_scope_id == 0 ? "" : fmt::format("%{}", six.sin6_scope_id);
    return fmt::format("ipv6:[{}{}]:{}", Written<AF_INET6>(six.sin6_addr), zone, ntohs(six.sin6_port));
}

}  // namespace

Peer PeerFromName(std::string_view name) {
    const std::string decoded = Decoded(name);
    return {.Name = decoded, .Host = decoded.substr(0, decoded.rfind(':'))};
}

std::optional<Peer> PeerOfSocket(int socket) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    if (getpeername(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) return std::nullopt;
    if (address.ss_family == AF_INET6) return PeerFromName(NameOf(reinterpret_cast<const sockaddr_in6&>(address)));
    const auto& four = reinterpret_cast<const sockaddr_in&>(address);
    return PeerFromName(fmt::format("ipv4:{}:{}", Written<AF_INET>(four.sin_addr), ntohs(four.sin_port)));
}

}  // namespace ZorvicUnit
