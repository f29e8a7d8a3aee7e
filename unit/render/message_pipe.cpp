#include "render/message_pipe.h"

#include <sys/socket.h>
#include <sys/time.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>

namespace ZorvicRender {

namespace {

constexpr std::uint32_t MostBytes = 64 * 1024 * 1024;

bool WriteAll(int socket, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t sent = send(socket, bytes, size, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent <= 0) return false;
        bytes += sent;
        size -= static_cast<std::size_t>(sent);
    }
    return true;
}

bool ReadAll(int socket, char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t got = recv(socket, bytes, size, 0);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        bytes += got;
        size -= static_cast<std::size_t>(got);
    }
    return true;
}

}  // namespace

bool MessagePipe::Send(const google::protobuf::MessageLite& message) {
    const auto size = static_cast<std::uint32_t>(message.ByteSizeLong());
    std::string bytes(sizeof size, '\0');
    std::memcpy(bytes.data(), &size, sizeof size);
    if (size > MostBytes || !message.AppendToString(&bytes)) return false;
    const std::scoped_lock lock(Sending);
    return WriteAll(Socket.Get(), bytes.data(), bytes.size());
}

bool MessagePipe::Receive(google::protobuf::MessageLite& message) {
    std::uint32_t size = 0;
    if (!ReadAll(Socket.Get(), reinterpret_cast<char*>(&size), sizeof size) || size > MostBytes) return false;
    std::string bytes(size, '\0');
    return ReadAll(Socket.Get(), bytes.data(), size) && message.ParseFromString(bytes);
}

void MessagePipe::LimitReceiving(std::chrono::milliseconds limit) {
    const timeval time{.tv_sec = limit.count() / 1000, .tv_usec = limit.count() % 1000 * 1000};
    setsockopt(Socket.Get(), SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
}

void MessagePipe::Shutdown() {
    shutdown(Socket.Get(), SHUT_RDWR);
}

}  // namespace ZorvicRender
