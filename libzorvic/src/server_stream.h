#pragma once

#include "credentials.h"
#include "link_error.h"

#include <grpcpp/client_context.h>
#include <grpcpp/completion_queue.h>
#include <grpcpp/support/async_stream.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace Zorvic::Internal {

/// The unit has ended a stream, or refused it.
class StreamEnd : public LinkError {
public:
    explicit StreamEnd(const grpc::Status& status)
        : LinkError("the stream ended: " + status.error_message()), Outcome(status) {}
    const grpc::Status Outcome;
};

/// Nothing came within the limit.
class Silence : public LinkError {
public:
    Silence() : LinkError("the unit is silent") {}
};

/// A stream from the unit, read with a limit on silence: a frozen unit keeps its connection open for ever, so only time
/// tells. One thread reads; Cancel may come from any other.
template <class Frame>
class ServerStream {
public:
    /// `open` makes the stub's asynchronous call.
    template <class Open>
    explicit ServerStream(Open open) : Reader(open(&Context, &Queue, this)) {}
    /// Ends the stream without waiting for the unit.
    ~ServerStream();
    ServerStream(const ServerStream&) = delete;
    ServerStream& operator=(const ServerStream&) = delete;

    // Both throw LinkError (StreamEnd) when the stream is over or the time is; the stream is of no further use then.

    /// Waits for the connection. To be called once, before the first Read.
    void Start(std::chrono::milliseconds limit) {
        if (!Await(limit)) ThrowOutcome();
    }
    /// The next frame, valid until the next call.
    const Frame& Read(std::chrono::milliseconds silence);
    void Cancel() { Context.TryCancel(); }
    /// As CertifiedGuid(), of whoever answers; once Start() has returned.
    std::optional<std::string> Certified() const { return CertifiedGuid(*Context.auth_context()); }

private:
    bool Await(std::chrono::milliseconds limit);
    [[noreturn]] void ThrowOutcome();

    // gRPC writes into Received until the queue has given the tag of the read back, so the destructor empties it.
    Frame Received;
    grpc::ClientContext Context;
    grpc::CompletionQueue Queue;
    std::unique_ptr<grpc::ClientAsyncReader<Frame>> Reader;
};

template <class Frame>
ServerStream<Frame>::~ServerStream() {
    Context.TryCancel();
    Queue.Shutdown();
    void* tag = nullptr;
    bool succeeded = false;
    while (Queue.Next(&tag, &succeeded)) {
    }
}

template <class Frame>
const Frame& ServerStream<Frame>::Read(std::chrono::milliseconds silence) {
    Reader->Read(&Received, this);
    if (!Await(silence)) ThrowOutcome();
    return Received;
}

// Only one operation is under way at any time, so its tag tells nothing.
template <class Frame>
bool ServerStream<Frame>::Await(std::chrono::milliseconds limit) {
    void* tag = nullptr;
    bool succeeded = false;
    const auto deadline = std::chrono::system_clock::now() + limit;  // gRPC turns it into a monotonic one at once
    if (Queue.AsyncNext(&tag, &succeeded, deadline) == grpc::CompletionQueue::TIMEOUT) throw Silence();
    return succeeded;
}

// The stream has failed already, so its outcome is there and does not wait for the unit.
template <class Frame>
void ServerStream<Frame>::ThrowOutcome() {
    grpc::Status outcome;
    void* tag = nullptr;
    bool succeeded = false;
    Reader->Finish(&outcome, this);
    Queue.Next(&tag, &succeeded);
    throw StreamEnd(outcome);
}

}  // namespace Zorvic::Internal
