#include "door/listening_socket.h"

#include "fault.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <spdlog/fmt/fmt.h>
#include <sys/socket.h>

#include <cerrno>
#include <utility>

namespace ZorvicUnit {

namespace {

// Bytes that nobody takes for so long mean that the machine at the other end is gone.
constexpr int UserTimeoutMS = 20'000;
// What has come is taken in even when it was noticed that it should not be.
constexpr int ReceiveBufferBytes = 64 * 1024;

struct SocketAddress {
    sockaddr_storage Bytes{};
    socklen_t Size = 0;

    sockaddr* Get() { return reinterpret_cast<sockaddr*>(&Bytes); }
};

SocketAddress Parse(const std::string& text, std::uint16_t port) {
    SocketAddress address;
    auto& four = reinterpret_cast<sockaddr_in&>(address.Bytes);
    auto& six = reinterpret_cast<sockaddr_in6&>(address.Bytes);
    if (inet_pton(AF_INET, text.c_str(), &four.sin_addr) == 1) {
        four.sin_family = AF_INET;
        four.sin_port = htons(port);
        address.Size = sizeof four;
    } else if (inet_pton(AF_INET6, text.c_str(), &six.sin6_addr) == 1) {
        six.sin6_family = AF_INET6;
        six.sin6_port = htons(port);
        address.Size = sizeof six;
    }
    return address;
}

std::string HostPort(const std::string& address, std::uint16_t port) {
    const bool isV6 = address.find(':') != std::string::npos;
    return isV6 ? fmt::format("[{}]:{}", address, port) : fmt::format("{}:{}", address, port);
}

// Accepted sockets take these over.
void SetUp(int socket, int family) {
    const auto set = [&](int level, int option, int value) { setsockopt(socket, level, option, &value, sizeof value); };
    set(SOL_SOCKET, SO_REUSEADDR, 1);
    if (family == AF_INET6) set(IPPROTO_IPV6, IPV6_V6ONLY, 0);
    set(SOL_SOCKET, SO_RCVBUF, ReceiveBufferBytes);
    set(IPPROTO_TCP, TCP_NODELAY, 1);
    set(IPPROTO_TCP, TCP_USER_TIMEOUT, UserTimeoutMS);
}

Descriptor OpenReserve() {
    return Descriptor(open("/dev/null", O_RDONLY | O_CLOEXEC));
}

}  // namespace

ListeningSocket::ListeningSocket(const std::string& text, std::uint16_t port) : Reserve(OpenReserve()) {
    SocketAddress address = Parse(text, port);
    const int family = address.Bytes.ss_family;
    Descriptor socket(::socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    SetUp(socket.Get(), family);
    if (bind(socket.Get(), address.Get(), address.Size) != 0 || listen(socket.Get(), SOMAXCONN) != 0 ||
        getsockname(socket.Get(), address.Get(), &address.Size) != 0)
        throw Fault(FaultKind::Internal, fmt::format("can not listen on {}: the port is taken or the address is not "
                                                     "this machine's",
                                                     HostPort(text, port)));
    // Both kinds of address keep the port at the same place.
    BoundPort = ntohs(reinterpret_cast<const sockaddr_in&>(address.Bytes).sin_port);
    BoundAddress = HostPort(text, BoundPort);
    Socket = std::move(socket);
}

ListeningSocket::Arrival ListeningSocket::Accept() {
    const auto accept = [this] {
        return Descriptor(accept4(Socket.Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    };
    Descriptor arrived = accept();
    const bool out = !arrived.IsOpen() && (errno == EMFILE || errno == ENFILE);
    if (!out) return {.Socket = std::move(arrived)};
    Reserve.Close();
    const bool turned = accept().IsOpen();
    Reserve = OpenReserve();
    return {.Socket = Descriptor(), .Turned = turned};
}

}  // namespace ZorvicUnit
