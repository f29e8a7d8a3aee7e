#pragma once

#include "door/peer.h"

#include <cstddef>
#include <map>
#include <mutex>
#include <string>

namespace ZorvicUnit {

/// How many of the places of watchers each connection and each host may take, so that nobody takes all of them. Safe
/// to use from several threads.
class Places {
public:
    static constexpr std::size_t PerConnection = 4;
    static constexpr std::size_t PerHost = 224;

    /// One place; lives while its owner watches. The constructor throws Fault Refused when the peer has its share.
    class Place {
    public:
        Place(Places& places, Peer peer);
        ~Place();
        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;

    private:
        Places& Owner;
        const Peer Who;
    };

private:
    std::size_t Count(const std::string& name) const;
    void Leave(const std::string& name);

    std::mutex Lock;                           ///< guards Taken
    std::map<std::string, std::size_t> Taken;  ///< by connection, and by host
};

}  // namespace ZorvicUnit
