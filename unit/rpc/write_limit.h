#pragma once

#include <grpcpp/server_context.h>

#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <stop_token>
#include <thread>
#include <utility>

namespace ZorvicUnit {

/// Ends streams whose client does not take what it asked for: a write waits for as long as nobody reads, and with it
/// the place of a watcher. Safe to use from several threads.
class WriteLimit {
public:
    using Write = std::pair<std::chrono::steady_clock::time_point, grpc::ServerContext*>;

    explicit WriteLimit(std::chrono::milliseconds longest)
        : Longest(longest), Thread([this](const std::stop_token& stop) { Run(stop); }) {}

    /// Lives during one write.
    class Pending {
    public:
        Pending(WriteLimit& limit, grpc::ServerContext& context);
        ~Pending();
        Pending(const Pending&) = delete;
        Pending& operator=(const Pending&) = delete;

    private:
        WriteLimit& Owner;
        std::list<Write>::iterator Place;
    };

private:
    void Run(const std::stop_token& stop);

    const std::chrono::milliseconds Longest;
    std::mutex Lock;  ///< guards Writes
    std::condition_variable_any Wake;
    std::list<Write> Writes;  ///< oldest first
    std::jthread Thread;      // last: it uses all of the above
};

}  // namespace ZorvicUnit
