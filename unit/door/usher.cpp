#include "door/usher.h"

#include "door/peer.h"
#include "thread_name.h"

#include <utility>

namespace ZorvicUnit {

void Usher::Bring(Descriptor socket) {
    const std::scoped_lock lock(Lock);
    Sockets.push_back(std::move(socket));
    Wake.notify_one();
}

void Usher::Run(const std::stop_token& stop) {
    NameThread("usher");
    std::unique_lock lock(Lock);
    while (Wake.wait(lock, stop, [this] { return !Sockets.empty(); })) {
        Descriptor next = std::move(Sockets.front());
        Sockets.pop_front();
        lock.unlock();
        if (PeerOfSocket(next.Get())) ToServer(next.Release());  // it may be over by now
        lock.lock();
    }
}

}  // namespace ZorvicUnit
