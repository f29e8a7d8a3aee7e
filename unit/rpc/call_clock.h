#pragma once

#include <grpcpp/server_context.h>

#include <chrono>
#include <cstdint>

namespace ZorvicUnit {

/// Tells whether a console still waits for the answer of its call. The RPC library counts the time of a call from when
/// the unit reads it, so that one that lay on a stalled link, or before a unit that stood still, looks fresh: its
/// console has long been told that it failed. So consoles see this clock in every frame, and name by it the moment at
/// which they give up.
class CallClock {
public:
    /// `run` tells the clock from those of the unit's other lives.
    explicit CallClock(std::uint64_t run) : Run(run) {}

    /// Milliseconds since the unit began, above 0.
    std::uint64_t Now() const;
    /// False when the console has given up, or will before an answer can reach it. The context must outlive the call.
    bool Waits(const grpc::ServerContext& context) const;

private:
    const std::uint64_t Run;
    const std::chrono::steady_clock::time_point Begin = std::chrono::steady_clock::now();
};

}  // namespace ZorvicUnit
