#pragma once

#include "files/descriptor.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>

namespace ZorvicUnit {

/// Brings connected sockets to the server, on a thread of its own: the RPC library reads what has come in the thread
/// that brings the socket, for as long as more comes, and whoever watches over the connections must not be kept by
/// the one that has to be closed.
class Usher {
public:
    /// Takes the socket over.
    using Hand = std::function<void(int socket)>;

    explicit Usher(Hand hand) : ToServer(std::move(hand)), Thread([this](const std::stop_token& stop) { Run(stop); }) {}

    void Bring(Descriptor socket);

private:
    void Run(const std::stop_token& stop);

    const Hand ToServer;
    std::mutex Lock;  ///< guards Sockets
    std::condition_variable_any Wake;
    std::deque<Descriptor> Sockets;
    std::jthread Thread;  // last: it uses all of the above
};

}  // namespace ZorvicUnit
