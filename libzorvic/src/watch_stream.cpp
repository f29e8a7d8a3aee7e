#include "watch_stream.h"

#include "link_error.h"

namespace Zorvic::Internal {

WatchStream::WatchStream(Wire::Unit::Stub& stub) : Reader(stub.AsyncWatch(&Context, {}, &Queue, this)) {}

WatchStream::~WatchStream() {
    Context.TryCancel();
    Queue.Shutdown();
    void* tag = nullptr;
    bool succeeded = false;
    while (Queue.Next(&tag, &succeeded)) {
    }
}

void WatchStream::Start(std::chrono::milliseconds limit) {
    if (!Await(limit)) ThrowOutcome();
}

const Wire::Frame& WatchStream::Read(std::chrono::milliseconds silence) {
    Reader->Read(&Received, this);
    if (!Await(silence)) ThrowOutcome();
    return Received;
}

void WatchStream::Cancel() {
    Context.TryCancel();
}

// Only one operation is under way at any time, so its tag tells nothing.
bool WatchStream::Await(std::chrono::milliseconds limit) {
    void* tag = nullptr;
    bool succeeded = false;
    const auto deadline = std::chrono::system_clock::now() + limit;  // gRPC turns it into a monotonic one at once
    if (Queue.AsyncNext(&tag, &succeeded, deadline) == grpc::CompletionQueue::TIMEOUT)
        throw LinkError("the unit is silent");
    return succeeded;
}

// The stream has failed already, so its outcome is there and does not wait for the unit.
void WatchStream::ThrowOutcome() {
    grpc::Status outcome;
    void* tag = nullptr;
    bool succeeded = false;
    Reader->Finish(&outcome, this);
    Queue.Next(&tag, &succeeded);
    throw LinkError("the state stream ended: " + outcome.error_message());
}

}  // namespace Zorvic::Internal
