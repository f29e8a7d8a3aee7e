#pragma once

#include "wire.h"

#include <grpcpp/client_context.h>
#include <grpcpp/completion_queue.h>
#include <grpcpp/support/async_stream.h>

#include <chrono>
#include <memory>

namespace Zorvic::Internal {

/// The unit's state stream, read with a limit on silence: a frozen unit keeps its connection open for ever, so only
/// time tells. One thread reads; Cancel may come from any other.
class WatchStream {
public:
    explicit WatchStream(Wire::Unit::Stub& stub);
    /// Ends the stream without waiting for the unit.
    ~WatchStream();
    WatchStream(const WatchStream&) = delete;
    WatchStream& operator=(const WatchStream&) = delete;

    // Both throw LinkError when the stream is over or the time is; the stream is of no further use then.

    /// Waits for the connection. To be called once, before the first Read.
    void Start(std::chrono::milliseconds limit);
    /// The next frame, valid until the next call.
    const Wire::Frame& Read(std::chrono::milliseconds silence);
    void Cancel();

private:
    bool Await(std::chrono::milliseconds limit);
    [[noreturn]] void ThrowOutcome();

    // gRPC writes into Received until the queue has given the tag of the read back, so the destructor empties it.
    Wire::Frame Received;
    grpc::ClientContext Context;
    grpc::CompletionQueue Queue;
    std::unique_ptr<grpc::ClientAsyncReader<Wire::Frame>> Reader;
};

}  // namespace Zorvic::Internal
