#pragma once

#include "door/conduct.h"
#include "door/guests.h"
#include "door/listening_socket.h"
#include "door/peer.h"
#include "door/traffic.h"
#include "door/usher.h"
#include "files/descriptor.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <thread>

namespace ZorvicUnit {

/// How many a unit lets in.
struct DoorLimits {
    std::size_t Connections = 512;
    std::size_t PerHost = 448;  ///< the rest is for the others
    std::size_t Waiting = 256;  ///< connected, and nothing said yet
    std::size_t Arriving = 32;  ///< on their way to the server, or in a handshake with it
    /// As many as this process has descriptors for, two each, beside those of files.
    static DoorLimits ForThisProcess();
};

/// Accepts connections, hands those that say something to the server, and keeps an eye on them: it shows out who
/// behaves like no console, and, when it is full, who is no console as far as it can tell. Somebody who only connects
/// costs the server nothing and holds up nobody.
class Door {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    Door(ListeningSocket& socket, DoorLimits limits, Usher::Hand hand);
    /// Accepts nobody any more. Connections that the server has go on.
    ~Door();
    Door(const Door&) = delete;
    Door& operator=(const Door&) = delete;

private:
    struct Guest {
        Descriptor Socket;  ///< as long as it waits; then a second one for the connection that the server has
        Peer Who;
        TimePoint Since;
        bool Ready = false;  ///< it has said something
        bool Served = false;
        std::optional<TrafficCounter> Counter;
        Conduct Behaviour;
        Traffic Seen;
        TimePoint Examined;
    };

    /// A host of which a connection was closed lately. Who comes back at once waits, in turn with the others from
    /// there, and is watched more closely: each connection does some harm before it is noticed.
    struct Disgrace {
        TimePoint Since;
        Allowance Entries{EntriesPerSecond, EntriesPerSecond};
    };
    static constexpr double EntriesPerSecond = 5;

    void Run();
    void Await();
    void AcceptAll(TimePoint now);
    void Receive(Descriptor socket, TimePoint now);
    void TurnAway(const Peer& who, TimePoint now);
    void OnReady(int socket, TimePoint now);
    void ServeReady(TimePoint now);
    bool Presses(const Guest& guest) const;
    bool MustWait(const Guest& guest, TimePoint now);
    void Serve(Guest guest, TimePoint now);
    std::optional<Shortage> ShortageFor(const std::string& host) const;
    bool MakeRoom(const std::string& host, Shortage shortage, TimePoint now);
    void Look(TimePoint now);
    void FindCounters();
    const char* Examine(Guest& guest, TimePoint now);
    const char* Read(Guest& guest, std::uint64_t bytes, TimePoint now);
    void ShowOut(const Guest& guest, const char* reason);
    std::map<int, Guest>::iterator Forget(std::map<int, Guest>::iterator guest);
    bool AddToPoll(int socket, std::uint32_t events);

    ListeningSocket& Listening;
    const DoorLimits Limits;
    Usher ToServer;
    const Descriptor Poll;
    const Descriptor Wake;
    std::atomic<bool> Stopping = false;
    // What follows belongs to the thread.
    std::map<int, Guest> All;                   ///< by descriptor
    Guests Waiting;                             ///< for a place, or for something to be said
    Guests Inside;                              ///< served
    std::map<std::string, Disgrace> Disgraced;  ///< by host
    TimePoint LastLook;
    Allowance Lines{1, 20};  ///< of the log
    std::thread Thread;
};

}  // namespace ZorvicUnit
