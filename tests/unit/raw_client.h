#pragma once

#include "files/descriptor.h"

#include <arpa/inet.h>

#include <array>
#include <string>

/// A connection to a unit that speaks HTTP/2 by hand, as badly as the test wants.
class RawClient {
public:
    /// From 127.0.0.`machine`: for the unit each is a host of its own.
    explicit RawClient(const std::string& host, unsigned machine = 1) : Socket(socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK - 1 + machine);
        bind(Socket.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(host.substr(host.rfind(':') + 1))));
        Open = connect(Socket.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    }

    bool Greet(const std::string& more = "") {
        return Send("PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n" + Frame(4, 0, 0, "") + more);
    }
    bool Send(const std::string& bytes) {
        Open = Open && send(Socket.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) == ssize_t(bytes.size());
        return Open;
    }
    static std::string Frame(char type, char flags, std::uint32_t stream, const std::string& content) {
        const auto size = content.size();
        std::string frame{char(size >> 16U), char(size >> 8U), char(size), type, flags};
        for (const unsigned shift : {24U, 16U, 8U, 0U})
            frame += char(stream >> shift);
        return frame + content;
    }
    /// The head of a call.
    static std::string Headers(std::uint32_t stream, const std::string& method) {
        const auto text = [](const std::string& value) { return char(value.size()) + value; };
        return Frame(1, 4, stream,
                     "\x83\x86\x04" + text("/zorvic.v1.Unit/" + method) + "\x01" + text("unit") + "\x0f\x10" +
                         text("application/grpc") + std::string(1, '\0') + text("te") + text("trailers"));
    }
    /// A whole call that asks for nothing in particular.
    static std::string Call(std::uint32_t stream, const std::string& method) {
        return Headers(stream, method) + Frame(0, 1, stream, std::string(5, '\0'));
    }
    static std::string Reset(std::uint32_t stream) { return Frame(3, 0, stream, std::string("\0\0\0\x08", 4)); }

    /// Takes in what has come and lets the windows grow; false when the connection is over.
    bool Read() {
        std::array<char, 65536> buffer{};
        ssize_t size = 0;
        while ((size = recv(Socket.Get(), buffer.data(), buffer.size(), MSG_DONTWAIT)) > 0)
            Received.append(buffer.data(), std::size_t(size));
        Open = Open && size != 0 && (errno == EAGAIN || errno == EINTR);
        while (Received.size() >= 9 && Received.size() >= 9 + Number(0, 3))
            TakeFrame();
        return Open;
    }

    std::int64_t Window = 65'535;        ///< of the connection
    std::int64_t StreamWindow = 65'535;  ///< of all streams together: for one that is used

private:
    std::size_t Number(std::size_t place, int bytes) const {
        std::size_t number = 0;
        while (bytes-- > 0)
            number = number << 8U | static_cast<unsigned char>(Received[place++]);
        return number;
    }
    void TakeFrame() {
        if (Received[3] == 8) (Number(5, 4) == 0 ? Window : StreamWindow) += std::int64_t(Number(9, 4));
        Received.erase(0, 9 + Number(0, 3));
    }

    ZorvicUnit::Descriptor Socket;
    bool Open = false;
    std::string Received;
};
