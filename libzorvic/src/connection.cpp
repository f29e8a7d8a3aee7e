#include "connection.h"

#include "channel.h"
#include "credentials.h"
#include "diagnostics.h"

#include <exception>
#include <string_view>

namespace Zorvic::Internal {
namespace {

StatusCode CodeAlone(const grpc::Status& status) {
    switch (status.error_code()) {
        case grpc::StatusCode::OK:
            return ZORVIC_STATUS_OK;
        case grpc::StatusCode::INVALID_ARGUMENT:
        case grpc::StatusCode::OUT_OF_RANGE:
            return ZORVIC_STATUS_MISUSED;
        case grpc::StatusCode::NOT_FOUND:
        case grpc::StatusCode::ALREADY_EXISTS:
        case grpc::StatusCode::FAILED_PRECONDITION:
        case grpc::StatusCode::RESOURCE_EXHAUSTED:
        case grpc::StatusCode::PERMISSION_DENIED:
        case grpc::StatusCode::ABORTED:
            return ZORVIC_STATUS_FAILED;
        case grpc::StatusCode::UNIMPLEMENTED:
            return ZORVIC_STATUS_UNIMPLEMENTED;
        case grpc::StatusCode::UNAVAILABLE:
        case grpc::StatusCode::DEADLINE_EXCEEDED:
        case grpc::StatusCode::CANCELLED:
        case grpc::StatusCode::UNAUTHENTICATED:
            return ZORVIC_STATUS_NETWORKERROR;
        default:
            return ZORVIC_STATUS_INTERNALERROR;
    }
}

/// What a caller is told about the outcome of a call on the wire. What the unit says wins over the status code, which
/// the transport uses for its own troubles, too.
StatusCode ToStatusCode(const grpc::Status& status) {
    Wire::Refusal refusal;
    refusal.ParseFromString(status.error_details());
    switch (refusal.reason()) {
        case Wire::REFUSAL_REASON_MISUSED:
            return ZORVIC_STATUS_MISUSED;
        case Wire::REFUSAL_REASON_NOT_FOUND:
        case Wire::REFUSAL_REASON_NOT_NOW:
        case Wire::REFUSAL_REASON_DISK_FULL:
        case Wire::REFUSAL_REASON_SLOW:
            return ZORVIC_STATUS_FAILED;
        case Wire::REFUSAL_REASON_TOO_LATE:
            return ZORVIC_STATUS_NETWORKERROR;
        case Wire::REFUSAL_REASON_INTERNAL:
            return ZORVIC_STATUS_INTERNALERROR;
        default:  // of an older unit, or one that only a newer library knows
            return CodeAlone(status);
    }
}

/// For an operator, what the transport's own words tell about certificates; nothing when nobody answers at all.
std::string WordsFor(std::string_view transport) {
    const auto says = [transport](std::string_view words) { return transport.find(words) != std::string_view::npos; };
    if (says("wrong version number")) return "it does not encrypt its links, and this program does";
    if (says("handshake failed")) return "its certificate is not of the authority that this program trusts";
    if (!says("Socket closed")) return {};
    return CertifiedName() == nullptr ? "it hangs up at once; it may want a certificate"
                                      : "it hangs up at once; it may not accept the certificate of this program";
}

std::string WordsFor(const std::exception& error, bool wasUp) {
    if (dynamic_cast<const Silence*>(&error) != nullptr) return {};
    const auto* end = dynamic_cast<const StreamEnd*>(&error);
    if (end == nullptr) return error.what();
    const auto code = end->Outcome.error_code();
    const std::string& message = end->Outcome.error_message();
    if (CodeAlone(end->Outcome) != ZORVIC_STATUS_NETWORKERROR && code != grpc::StatusCode::UNKNOWN) return message;
    // A unit that goes down closes its links, too.
    return wasUp ? std::string() : WordsFor(std::string_view(message));
}

Wire::WatchRequest WatchRequest(const UnitState* known) {
    Wire::WatchRequest request;
    request.set_api_version(ApiVersion);
    request.add_features(Wire::FEATURE_STATE_CHANGES);
    request.add_features(Wire::FEATURE_RESUME);
    if (known && known->Run != 0) {
        request.mutable_known()->set_run(known->Run);
        request.mutable_known()->set_revision(known->Revision);
    }
    return request;
}

}  // namespace

Connection::CallInFlight::CallInFlight(Connection& connection, std::chrono::milliseconds limit)
    : Owner(connection), Context(std::make_unique<grpc::ClientContext>()) {
    Context->set_deadline(std::chrono::system_clock::now() + limit);
    // By the unit's clock, too: the call may lie on the way for longer than it may take, and no cancel overtakes it.
    const auto state = Owner.Unit.Current();
    const std::uint64_t now = Owner.UnitTime.At(Clock::now());
    if (state && now != 0)
        Context->AddMetadata("zorvic-until", std::to_string(state->Run) + "/" +
                                                 std::to_string(now + static_cast<std::uint64_t>(limit.count())));
    const std::scoped_lock lock(Owner.Lock);
    if (Owner.Phase == PhaseType::Up) {
        Owner.InFlight.insert(Context.get());
    } else {
        Context->TryCancel();
    }
}

Connection::CallInFlight::~CallInFlight() {
    const std::scoped_lock lock(Owner.Lock);
    Owner.InFlight.erase(Context.get());
}

Connection::Connection(const std::string& host, const std::shared_ptr<const UnitState>& known,
                       std::chrono::milliseconds limit, EventThread& events)
    : Host(host), Limit(limit), Events(events), Unit(known ? known->GUID : std::string(), known) {
    try {
        Open(known.get());
    } catch (const std::exception& error) {
        GoDown(error);
    }
}

// First the stream, which lets go of the thread; then the thread; the stream's memory and the channel go last.
Connection::~Connection() {
    Stop();
}

void Connection::Stop() {
    if (Stream) Stream->Cancel();
    if (Thread.joinable()) Thread.join();
}

void Connection::Open(const UnitState* known) {
    Stub = Wire::Unit::NewStub(OpenChannel(Host, Limit));
    const Wire::WatchRequest request = WatchRequest(known);
    Stream = std::make_unique<StateStream>(
        [&](auto* context, auto* queue, void* tag) { return Stub->AsyncWatch(context, request, queue, tag); });
    Thread = std::thread([this] { Run(); });
}

void Connection::Run() {
    NameThread("zorvic-link");
    try {
        FollowUnit();
    } catch (const std::exception& error) {  // whatever the unit sent, it costs the link and nothing more
        GoDown(error);
    }
}

void Connection::FollowUnit() {
    auto end = Clock::now() + Limit;
    const auto timeLeft = [&end] { return std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()); };
    Stream->Start(timeLeft());
    if (const auto guid = Stream->Certified()) Unit.Certify(*guid);
    while (true) {
        // Silence is counted from the moment of listening: time spent on taking in a frame is not the unit's.
        const Wire::Frame& frame = Stream->Read(Up() ? Silence : timeLeft());
        UnitTime.Heard(frame.clock_ms(), Clock::now());
        const unsigned changes = Unit.Apply(frame);
        end = Clock::now() + Limit;  // a long snapshot on a slow link takes its time
        if (Up()) {
            Events.Raise(changes);
        } else if (Unit.Current()) {
            ComeUp();
        }
    }
}

void Connection::ComeUp() {
    {
        // The events come after the link, so that whoever hears them can read; and before anybody who waited for the
        // link goes on, so that what is registered then is answered once.
        const std::scoped_lock lock(Lock);
        Phase = PhaseType::Up;
        Events.Raise(AllEvents);
    }
    PhaseChanged.notify_all();
}

void Connection::GoDown(const std::exception& error) {
    Note(Host, error.what());
    {
        const std::scoped_lock lock(Lock);
        Trouble = WordsFor(error, Phase == PhaseType::Up);
        Phase = PhaseType::Down;
        for (grpc::ClientContext* call : InFlight)
            call->TryCancel();
    }
    PhaseChanged.notify_all();
    Unit.Close();
}

std::string Connection::Problem() const {
    const std::scoped_lock lock(Lock);
    return Trouble;
}

void Connection::WaitWhileConnecting(std::chrono::milliseconds limit) const {
    std::unique_lock lock(Lock);
    PhaseChanged.wait_for(lock, limit, [this] { return !Connecting(); });
}

std::shared_ptr<const UnitState> Connection::State() const {
    return Up() ? Unit.Current() : nullptr;
}

StatusCode Connection::Outcome(const grpc::Status& status) const {
    return status.ok() || Up() ? ToStatusCode(status) : ZORVIC_STATUS_NETWORKERROR;
}

// The unit has carried the command out when this is called, so a mirror that is late alone does not make it a failure.
StatusCode Connection::AwaitEffect(std::uint64_t revision, Clock::time_point deadline) const {
    Unit.WaitForRevision(revision, deadline);
    return Up() ? ZORVIC_STATUS_OK : ZORVIC_STATUS_NETWORKERROR;
}

}  // namespace Zorvic::Internal
