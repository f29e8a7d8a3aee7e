#pragma once

#include "events.h"
#include "mirror.h"
#include "server_stream.h"
#include "unit_clock.h"
#include "wire.h"

#include <zorvic/enums.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>

namespace Zorvic::Internal {

/// One try to reach a unit and, when it succeeds, the link that comes of it. A connection goes from connecting to up to
/// down and never back: a new one takes its place.
class Connection {
public:
    using Clock = std::chrono::steady_clock;
    template <class Request, class Reply>
    using Method = grpc::Status (Wire::Unit::Stub::*)(grpc::ClientContext*, const Request&, Reply*);

    /// A unit that sends nothing for this long counts as gone; its heartbeat is six times faster.
    static constexpr std::chrono::milliseconds Silence{1500};
    /// Limit of every call but those that name their own.
    static constexpr std::chrono::milliseconds CallLimit{2000};

    /// Starts to connect and returns at once. The try ends when nothing came for `limit`; a unit other than that of the
    /// known state is refused, and one that goes on where it was tells only what has changed. Null when none is known.
    /// `events` gets what the unit reports and must outlive the connection.
    Connection(const std::string& host, const std::shared_ptr<const UnitState>& known, std::chrono::milliseconds limit,
               EventThread& events);
    /// Gives the link up without waiting for the unit. No call may be under way.
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Gives the link up: nothing is raised any more. What is left to the destructor is to free memory.
    void Stop();

    bool Up() const { return Phase == PhaseType::Up; }
    bool Connecting() const { return Phase == PhaseType::Connecting; }
    /// Why it is down, in words for whoever uses the program; empty when it is not, and when simply nobody answers.
    std::string Problem() const;
    /// Waits until the try has succeeded or failed, or the time is over.
    void WaitWhileConnecting(std::chrono::milliseconds limit) const;
    /// What the unit has told; null unless the link is up.
    std::shared_ptr<const UnitState> State() const;
    /// As State(), but also after the link has gone down; null when it never was up.
    std::shared_ptr<const UnitState> LastState() const { return Unit.Current(); }

    /// One call to the unit. The end of the link ends it at once.
    template <class Request, class Reply>
    grpc::Status Call(Method<Request, Reply> method, const Request& request, Reply& reply,
                      std::chrono::milliseconds limit = CallLimit) {
        const CallInFlight call(*this, limit);
        return (Stub.get()->*method)(call.Context.get(), request, &reply);
    }
    /// What the caller of a call is told: a call that fails on a lost link is a network error, whatever broke first.
    StatusCode Outcome(const grpc::Status& status) const;
    /// Waits until the mirror shows what a command did: at most until the deadline, and not beyond the end of the link.
    StatusCode AwaitEffect(std::uint64_t revision, Clock::time_point deadline) const;

private:
    enum class PhaseType { Connecting, Up, Down };
    using StateStream = ServerStream<Wire::Frame>;

    /// Makes the link's end cancel the call.
    struct CallInFlight {
        CallInFlight(Connection& connection, std::chrono::milliseconds limit);
        ~CallInFlight();
        CallInFlight(const CallInFlight&) = delete;
        CallInFlight& operator=(const CallInFlight&) = delete;

        Connection& Owner;
        std::unique_ptr<grpc::ClientContext> Context;
    };

    void Open(const UnitState* known);
    void Run();
    void FollowUnit();
    void ComeUp();
    void GoDown(const std::exception& error);

    const std::string Host;
    const std::chrono::milliseconds Limit;
    EventThread& Events;
    Mirror Unit;
    UnitClock UnitTime;
    std::unique_ptr<Wire::Unit::Stub> Stub;  // null when there is nothing to connect to
    std::unique_ptr<StateStream> Stream;     // likewise

    mutable std::mutex Lock;  // guards InFlight, Trouble and every change of Phase
    mutable std::condition_variable PhaseChanged;
    std::atomic<PhaseType> Phase = PhaseType::Connecting;
    std::set<grpc::ClientContext*> InFlight;
    std::string Trouble;
    std::thread Thread;  // reads the stream; last, it uses all of the above
};

}  // namespace Zorvic::Internal
