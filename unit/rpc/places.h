#pragma once

#include "door/peer.h"

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <utility>

namespace ZorvicUnit {

/// The places of watchers of one kind, and how many of them each connection and each host may take: a host that has
/// none always finds one as long as another has two. Safe to use from several threads.
class Places {
private:
    struct Watcher {
        Peer Who;
        std::function<void()> Leave;
        bool Leaving = false;
    };
    using Watchers = std::list<Watcher>;

public:
    static constexpr std::size_t PerConnection = 4;

    /// `refusal` is said when all places are taken.
    Places(std::size_t most, std::string refusal) : Most(most), Refusal(std::move(refusal)) {}

    /// One place; lives while its owner watches.
    class Place {
    public:
        /// `leave` is called, on any thread, when the place is needed for a host that has none: it must only take note,
        /// and the owner go within a second. Throws Fault Refused when the peer has its share or nobody makes room.
        Place(Places& places, const Peer& peer, std::function<void()> leave);
        ~Place();
        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;

    private:
        Places& Owner;
        Watchers::iterator Own;
    };

private:
    std::size_t CountOf(const std::string& host) const;
    void MakeRoom(const std::string& host);

    const std::size_t Most;
    const std::string Refusal;
    std::mutex Lock;  ///< guards Taken
    std::condition_variable Left;
    Watchers Taken;  ///< oldest first
};

}  // namespace ZorvicUnit
