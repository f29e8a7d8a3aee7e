#include "discovery_prober.h"

#include "channel.h"
#include "credentials.h"
#include "diagnostics.h"
#include "link_error.h"

#include <grpcpp/client_context.h>
#include <grpcpp/completion_queue.h>
#include <zorvic/v1/unit.grpc.pb.h>

#include <chrono>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace Zorvic::Internal {
namespace {

constexpr std::chrono::seconds Deadline{1};

LANZorvic ToRecord(const zorvic::v1::Identity& identity) {
    LANZorvic unit;
    unit.GUID = identity.guid();
    unit.Nickname = identity.nickname();
    unit.APIVersion = identity.api_version();
    unit.CommunicatorVersion = identity.communicator_version();
    unit.CurrentRole = static_cast<UnitRole>(identity.role());
    unit.Type = static_cast<UnitType>(identity.type());
    return unit;
}

/// Every question has a channel of its own: a kept one would wait out gRPC's back-off after a unit was away.
struct Call {
    std::shared_ptr<grpc::Channel> Channel;
    std::unique_ptr<zorvic::v1::Unit::Stub> Stub;
    grpc::ClientContext Context;
    zorvic::v1::Identity Reply;
    grpc::Status Status;
    std::unique_ptr<grpc::ClientAsyncResponseReader<zorvic::v1::Identity>> Reader;
    UnitProber::Done WhenDone;
};

// By the unit that the reply names, as far as certificates tell.
bool IsAnswered(const Call& call) {
    if (!call.Status.ok()) return false;
    const auto certified = CertifiedGuid(*call.Context.auth_context());
    return !certified || *certified == call.Reply.guid();
}

/// Answers come over a completion queue with a thread of its own: gRPC's callback interface crashes in a thread it
/// shares between channels when the last channel goes inside a callback.
class NetworkProber final : public UnitProber {
public:
    NetworkProber() : Worker([this] { Run(); }) {}
    ~NetworkProber() override;
    NetworkProber(const NetworkProber&) = delete;
    NetworkProber& operator=(const NetworkProber&) = delete;

    void Ask(const std::string& host, Done done) override;

private:
    void Run();

    grpc::CompletionQueue Queue;
    std::mutex Lock;                               ///< guards Calls
    std::map<void*, std::unique_ptr<Call>> Calls;  ///< under way, by tag
    std::thread Worker;
};

NetworkProber::~NetworkProber() {
    {
        const std::scoped_lock lock(Lock);
        for (const auto& [tag, call] : Calls)
            call->Context.TryCancel();
    }
    Queue.Shutdown();
    Worker.join();
}

void NetworkProber::Ask(const std::string& host, Done done) {
    auto call = std::make_unique<Call>();
    try {
        call->Channel = OpenChannel(host, Deadline);
    } catch (const LinkError&) {
        done(std::nullopt);
        return;
    }
    call->Stub = zorvic::v1::Unit::NewStub(call->Channel);
    call->Context.set_deadline(std::chrono::system_clock::now() + Deadline);
    call->WhenDone = std::move(done);
    // The answer may be taken from the queue before this function is left: it finds the call in the list.
    const std::scoped_lock lock(Lock);
    Call& kept = *call;
    Calls.emplace(&kept, std::move(call));
    kept.Reader = kept.Stub->AsyncIdentify(&kept.Context, {}, &Queue);
    kept.Reader->Finish(&kept.Reply, &kept.Status, &kept);
}

void NetworkProber::Run() {
    NameThread("zorvic-identify");
    void* tag = nullptr;
    bool ok = false;
    while (Queue.Next(&tag, &ok)) {
        std::unique_ptr<Call> call;
        {
            const std::scoped_lock lock(Lock);
            const auto found = Calls.find(tag);
            call = std::move(found->second);
            Calls.erase(found);
        }
        call->WhenDone(IsAnswered(*call) ? std::optional(ToRecord(call->Reply)) : std::nullopt);
    }
}

}  // namespace

std::unique_ptr<UnitProber> MakeUnitProber() {
    return std::make_unique<NetworkProber>();
}

}  // namespace Zorvic::Internal
