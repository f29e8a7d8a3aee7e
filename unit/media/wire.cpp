#include "media/wire.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

namespace ZorvicUnit {

namespace {

constexpr std::uint32_t MostBytes = 8 * 1024 * 1024;
constexpr std::uint8_t FullScale = 100;

union Ancillary {
    cmsghdr Head;
    std::array<char, CMSG_SPACE(sizeof(int))> Room;
};

void Attach(msghdr& message, Ancillary& room, int descriptor) {
    message.msg_control = &room;
    message.msg_controllen = sizeof room;
    room.Head = {CMSG_LEN(sizeof descriptor), SOL_SOCKET, SCM_RIGHTS};
    std::memcpy(CMSG_DATA(&room.Head), &descriptor, sizeof descriptor);
}

int Attached(const msghdr& message) {
    const cmsghdr* head = CMSG_FIRSTHDR(&message);
    if (head == nullptr || head->cmsg_type != SCM_RIGHTS || head->cmsg_len != CMSG_LEN(sizeof(int))) return -1;
    int descriptor = -1;
    std::memcpy(&descriptor, CMSG_DATA(head), sizeof descriptor);
    return descriptor;
}

/// Up to `size` bytes of what is there; 0 at the end, -1 on failure.
ssize_t Receive(int socket, char* bytes, std::size_t size, bool mayPass, std::optional<Descriptor>& passed) {
    iovec piece = {bytes, size};
    Ancillary room = {};
    msghdr message = {};
    message.msg_iov = &piece;
    message.msg_iovlen = 1;
    // Without room for them the system closes what is passed.
    if (mayPass) message.msg_control = &room;
    if (mayPass) message.msg_controllen = sizeof room;
    const ssize_t got = recvmsg(socket, &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    if (got > 0 && mayPass)
        if (const int descriptor = Attached(message); descriptor >= 0) passed.emplace(descriptor);
    return got;
}

}  // namespace

bool SendFrame(int socket, std::string_view bytes, int descriptor) {
    const auto size = static_cast<std::uint32_t>(bytes.size());
    std::string frame(reinterpret_cast<const char*>(&size), sizeof size);
    frame += bytes;
    for (std::size_t done = 0; done < frame.size();) {
        iovec piece = {frame.data() + done, frame.size() - done};
        Ancillary room = {};
        msghdr message = {};
        message.msg_iov = &piece;
        message.msg_iovlen = 1;
        if (done == 0 && descriptor >= 0) Attach(message, room, descriptor);
        const ssize_t sent = sendmsg(socket, &message, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent <= 0) return false;
        done += static_cast<std::size_t>(sent);
    }
    return true;
}

std::optional<Frame> ReceiveFrame(int socket, bool mayPass, const std::function<bool()>& wait) {
    std::uint32_t size = 0;
    std::string bytes(sizeof size, '\0');
    std::optional<Descriptor> passed;
    for (std::size_t done = 0; done < bytes.size();) {
        if (!wait()) return std::nullopt;
        const ssize_t got = Receive(socket, bytes.data() + done, bytes.size() - done, mayPass, passed);
        if (got < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (got <= 0) return std::nullopt;
        done += static_cast<std::size_t>(got);
        if (size != 0 || done < sizeof size) continue;
        std::memcpy(&size, bytes.data(), sizeof size);
        if (size == 0 || size > MostBytes) return std::nullopt;
        bytes.resize(sizeof size + size);
    }
    Frame frame{bytes.substr(sizeof size), std::move(passed).value_or(Descriptor(-1))};
    return frame;
}

std::string ToBytes(const Envelope& levels) {
    std::string bytes;
    bytes.reserve(levels.Levels.size() * 2);
    for (const auto& [left, right] : levels.Levels) {
        bytes += static_cast<char>(left);
        bytes += static_cast<char>(right);
    }
    return bytes;
}

Envelope ToEnvelope(std::string_view bytes) {
    const auto level = [](char byte) { return std::min(static_cast<std::uint8_t>(byte), FullScale); };
    Envelope levels;
    levels.Levels.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        levels.Levels.push_back({level(bytes[i]), level(bytes[i + 1])});
    return levels;
}

}  // namespace ZorvicUnit
