#include "support/loopbackproxy.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <deque>
#include <system_error>

namespace {

using Clock = std::chrono::steady_clock;

struct Piece {
    Clock::time_point Due;
    std::string Bytes;
};

sockaddr_in Loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

int Socket(int flags) {
    const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | flags, 0);
    if (made < 0) throw std::system_error(errno, std::generic_category(), "socket");
    return made;
}

int Listen() {
    const int made = Socket(SOCK_NONBLOCK);
    const sockaddr_in address = Loopback(0);
    if (bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || listen(made, 64) != 0)
        throw std::system_error(errno, std::generic_category(), "listen");
    return made;
}

}  // namespace

struct LoopbackProxy::Flow {
    int From;
    int To;
    std::deque<Piece> Pieces = {};
    bool Ended = false;
};

struct LoopbackProxy::Link {
    Link(int near, int far) : Out{near, far}, Back{far, near} {}
    ~Link() {
        close(Out.From);
        close(Out.To);
    }
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;
    Flow Out;
    Flow Back;
};

LoopbackProxy::LoopbackProxy(const std::string& target, unsigned seed)
    : Target(static_cast<std::uint16_t>(std::stoi(target.substr(target.rfind(':') + 1)))),
      Listener(Listen()),
      Random(seed),
      Thread([this] { Run(); }) {}

LoopbackProxy::~LoopbackProxy() {
    Ending = true;
    Thread.join();
    close(Listener);
}

std::string LoopbackProxy::Host() const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(Listener, reinterpret_cast<sockaddr*>(&address), &size);
    return "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
}

void LoopbackProxy::Run() {
    while (!Ending) {
        if (Cutting.exchange(false)) Links.clear();
        if (!Frozen) {
            Accept();
            Links.remove_if([this](Link& link) { return !Move(link.Out) || !Move(link.Back); });
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void LoopbackProxy::Accept() {
    sockaddr_in address = Loopback(Target);
    for (int near = -1; (near = accept4(Listener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        Link& link = Links.emplace_back(near, Socket(0));
        if (connect(link.Out.To, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) Links.pop_back();
    }
}

/// False when there is nothing to read now.
bool LoopbackProxy::Read(Flow& flow) {
    std::array<char, 16'384> bytes;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    const auto got = recv(flow.From, bytes.data(), 1 + Random() % bytes.size(), MSG_DONTWAIT);
    if (got == 0 || (got < 0 && errno != EAGAIN)) flow.Ended = true;
    if (got <= 0) return false;
    auto due = Clock::now() + LongestDelay.load() * static_cast<int>(Random() % 101) / 100;
    if (!flow.Pieces.empty()) due = std::max(due, flow.Pieces.back().Due);
    flow.Pieces.push_back({due, std::string(bytes.data(), static_cast<std::size_t>(got))});
    return true;
}

/// False when the flow is over.
bool LoopbackProxy::Move(Flow& flow) {
    while (flow.Pieces.size() < 64 && Read(flow)) {
    }
    while (!flow.Pieces.empty() && flow.Pieces.front().Due <= Clock::now()) {
        std::string& bytes = flow.Pieces.front().Bytes;
        const auto sent = send(flow.To, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent < 0) return errno == EAGAIN;
        bytes.erase(0, static_cast<std::size_t>(sent));
        if (!bytes.empty()) return true;
        flow.Pieces.pop_front();
    }
    return !flow.Ended || !flow.Pieces.empty();
}
