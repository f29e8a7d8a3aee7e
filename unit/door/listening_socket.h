#pragma once

#include "files/descriptor.h"

#include <cstdint>
#include <string>

namespace ZorvicUnit {

/// A listening TCP socket that goes on accepting whatever happens: when descriptors run out, a reserve lets it take a
/// connection all the same and turn it away, instead of leaving it in the queue for ever.
class ListeningSocket {
public:
    /// Listens on a numeric address; port 0 takes any free one. Throws Fault when the port is taken or the address is
    /// not this machine's.
    ListeningSocket(const std::string& address, std::uint16_t port);

    int Get() const { return Socket.Get(); }
    std::uint16_t Port() const { return BoundPort; }
    /// "address:port" as it is written for people and programs.
    const std::string& Address() const { return BoundAddress; }

    struct Arrival {
        Descriptor Socket;    ///< none when nobody came
        bool Turned = false;  ///< somebody came and was turned away: there are no descriptors left
    };
    Arrival Accept();

private:
    Descriptor Socket;
    Descriptor Reserve;
    std::uint16_t BoundPort = 0;
    std::string BoundAddress;
};

}  // namespace ZorvicUnit
