#pragma once

#include <grpcpp/channel.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace Zorvic::Internal {

/// What gRPC is asked to connect to for a host text: `address`, `address:port`, `name`, `name:port`, an IPv6 address or
/// `[IPv6]:port`. Nothing for a text that makes no sense, so that it never reaches a resolver.
std::optional<std::string> ChannelTarget(const std::string& host);

/// A channel of its own for one connection, not connected yet. `connectLimit` bounds one try to reach one address.
/// Encrypted as ClientCredentials() says. Throws LinkError when the host text makes no sense, and as that does.
std::shared_ptr<grpc::Channel> OpenChannel(const std::string& host, std::chrono::milliseconds connectLimit);

}  // namespace Zorvic::Internal
