#include "rpc/server.h"

#include "fault.h"

#include <grpcpp/resource_quota.h>

#include <cstddef>

namespace ZorvicUnit {

namespace {

// A watching console holds one thread; commands must find threads beside all of them.
constexpr int MaxThreads = 384;
// What strangers send can not take more memory than this; consoles need a few megabytes.
constexpr std::size_t MaxMemory = 256UL * 1024 * 1024;
constexpr int HandshakeLimitMS = 3'000;
constexpr int IdleLimitMS = 60'000;

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

// A few kilobytes that unpack to a gigabyte must not be unpacked, and nothing that consoles send is worth packing.
void ForbidCompression(grpc::ServerBuilder& builder) {
    builder.SetCompressionAlgorithmSupportStatus(GRPC_COMPRESS_DEFLATE, false);
    builder.SetCompressionAlgorithmSupportStatus(GRPC_COMPRESS_GZIP, false);
    builder.AddChannelArgument(GRPC_ARG_ENABLE_PER_MESSAGE_DECOMPRESSION, 0);
}

void SetLimits(grpc::ServerBuilder& builder) {
    builder.SetMaxReceiveMessageSize(MaxRequestBytes);
    builder.SetResourceQuota(grpc::ResourceQuota("unit").SetMaxThreads(MaxThreads).Resize(MaxMemory));
    builder.AddChannelArgument(GRPC_ARG_MAX_CONCURRENT_STREAMS, MaxStreams);
    builder.AddChannelArgument(GRPC_ARG_SERVER_HANDSHAKE_TIMEOUT_MS, HandshakeLimitMS);
    builder.AddChannelArgument(GRPC_ARG_MAX_CONNECTION_IDLE_MS, IdleLimitMS);
    builder.AddChannelArgument(GRPC_ARG_ENABLE_CHANNELZ, 1);  // what the door judges connections by
    builder.AddChannelArgument(GRPC_ARG_MAX_CHANNEL_TRACE_EVENT_MEMORY_PER_NODE, 0);
}

}  // namespace

// The RPC library has a listener of its own, which gives up for good when it can not accept once, and lets everybody
// in.
Server::Server(grpc::Service& service, const std::string& address, std::uint16_t port,
               const std::shared_ptr<grpc::ServerCredentials>& credentials, DoorLimits limits)
    : Socket(address, port) {
    using External = grpc::ServerBuilder::experimental_type::ExternalConnectionType;
    grpc::ServerBuilder builder;
    Acceptor = builder.experimental().AddExternalConnectionAcceptor(External::FROM_FD, credentials);
    builder.RegisterService(&service);
    SetLimits(builder);
    ForbidCompression(builder);
    SetUpKeepalive(builder);
    Requests = builder.BuildAndStart();
    if (!Requests) throw Fault(FaultKind::Internal, "can not serve requests");
    Entrance.emplace(Socket, limits, [this](int socket) {
        grpc::experimental::ExternalConnectionAcceptor::NewConnectionParameters arrival;
        arrival.listener_fd = Socket.Get();
        arrival.fd = socket;
        Acceptor->HandleNewConnection(&arrival);
    });
}

Server::~Server() {
    Stop(std::chrono::milliseconds(0));
}

void Server::Stop(std::chrono::milliseconds limit) {
    if (!Requests) return;
    Entrance.reset();
    Requests->Shutdown(std::chrono::system_clock::now() + limit);
    Requests->Wait();
    Requests.reset();
}

}  // namespace ZorvicUnit
