#include "rpc/server.h"

#include "fault.h"

#include <grpcpp/resource_quota.h>
#include <grpcpp/server_builder.h>
#include <spdlog/fmt/fmt.h>

namespace ZorvicUnit {

namespace {

// A watching console holds one thread; commands must find threads beside all of them.
constexpr int MaxThreads = 192;
// The largest request is an update with the largest preset.
constexpr int MaxRequestBytes = 1024 * 1024;

std::string HostPort(const std::string& address, std::uint16_t port) {
    const bool isV6 = address.find(':') != std::string::npos;
    return isV6 ? fmt::format("[{}]:{}", address, port) : fmt::format("{}:{}", address, port);
}

// The unit asks whether a console is still there, so that one whose machine vanished does not hold its thread for ever.
// Consoles listen for the heartbeat instead; one that asks all the same, however often, is not cut off for it.
void SetUpKeepalive(grpc::ServerBuilder& builder) {
    builder.AddChannelArgument(GRPC_ARG_KEEPALIVE_PERMIT_WITHOUT_CALLS, 1);
    builder.AddChannelArgument(GRPC_ARG_HTTP2_MIN_RECV_PING_INTERVAL_WITHOUT_DATA_MS, 100);
    builder.AddChannelArgument(GRPC_ARG_HTTP2_MAX_PING_STRIKES, 0);
    builder.AddChannelArgument(GRPC_ARG_HTTP2_MAX_PINGS_WITHOUT_DATA, 0);
    builder.AddChannelArgument(GRPC_ARG_KEEPALIVE_TIME_MS, 10'000);
    builder.AddChannelArgument(GRPC_ARG_KEEPALIVE_TIMEOUT_MS, 20'000);
}

}  // namespace

Server::Server(grpc::Service& service, const std::string& address, std::uint16_t port,
               const std::shared_ptr<grpc::ServerCredentials>& credentials) {
    grpc::ServerBuilder builder;
    int bound = 0;
    builder.AddListeningPort(HostPort(address, port), credentials, &bound);
    builder.RegisterService(&service);
    // Otherwise two units share one port and each gets some of the consoles.
    builder.AddChannelArgument(GRPC_ARG_ALLOW_REUSEPORT, 0);
    builder.SetMaxReceiveMessageSize(MaxRequestBytes);
    builder.SetResourceQuota(grpc::ResourceQuota("unit").SetMaxThreads(MaxThreads));
    SetUpKeepalive(builder);
    Listener = builder.BuildAndStart();
    if (!Listener || bound <= 0)
        throw Fault(FaultKind::Internal, fmt::format("can not listen on {}: the port is taken or the address is not "
                                                     "this machine's",
                                                     HostPort(address, port)));
    BoundPort = static_cast<std::uint16_t>(bound);
    BoundAddress = HostPort(address, BoundPort);
}

Server::~Server() {
    Stop(std::chrono::milliseconds(0));
}

void Server::Stop(std::chrono::milliseconds limit) {
    if (!Listener) return;
    Listener->Shutdown(std::chrono::system_clock::now() + limit);
    Listener->Wait();
    Listener.reset();
}

}  // namespace ZorvicUnit
