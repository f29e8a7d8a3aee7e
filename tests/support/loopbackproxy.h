#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <list>
#include <random>
#include <string>
#include <thread>

/// A stretch of bad network between two programs on this machine: a port of its own whose connections go on to another
/// one. Bytes of one connection and direction stay in order, as TCP keeps them; those of others overtake them.
class LoopbackProxy {
public:
    /// `target` is "127.0.0.1:PORT".
    LoopbackProxy(const std::string& target, unsigned seed);
    ~LoopbackProxy();
    LoopbackProxy(const LoopbackProxy&) = delete;
    LoopbackProxy& operator=(const LoopbackProxy&) = delete;

    std::string Host() const;

    // For any thread.

    /// Bytes go on in pieces of any size, each of which waits up to this long.
    void Delay(std::chrono::milliseconds most) { LongestDelay = most; }
    /// Nothing goes on and nothing is read, so that what is sent piles up at its sender; connections stay.
    void Freeze(bool frozen) { Frozen = frozen; }
    /// Ends every connection, with all that was under way.
    void Cut() { Cutting = true; }

private:
    struct Flow;
    struct Link;
    void Run();
    void Accept();
    bool Move(Flow& flow);
    bool Read(Flow& flow);

    const std::uint16_t Target;
    const int Listener;
    std::atomic<std::chrono::milliseconds> LongestDelay{};
    std::atomic<bool> Frozen = false;
    std::atomic<bool> Cutting = false;
    std::atomic<bool> Ending = false;
    // Used by the thread only.
    std::mt19937 Random;
    std::list<Link> Links;
    std::jthread Thread;
};
