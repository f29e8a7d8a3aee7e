#include "rpc/asker.h"

#include "door/peer.h"
#include "utf8.h"

#include <grpc/grpc_security_constants.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace ZorvicUnit {

namespace {

constexpr std::size_t MostName = 128;

// The RPC library of a console adds its own name behind the one that it was given.
std::string NameGiven(const grpc::ServerContext& context) {
    const auto& metadata = context.client_metadata();
    const auto found = metadata.find("user-agent");
    if (found == metadata.end()) return {};
    const std::string_view agent(found->second.data(), found->second.size());
    const auto end = agent.find(" grpc-c++/");
    return end == agent.npos ? std::string() : std::string(agent.substr(0, std::min(end, MostName)));
}

std::string NameCertified(const grpc::ServerContext& context) {
    const auto identity = context.auth_context();
    if (!identity || !identity->IsPeerAuthenticated()) return {};
    const auto names = identity->FindPropertyValues(GRPC_X509_CN_PROPERTY_NAME);
    return names.empty() ? std::string() : std::string(names.front().data(), names.front().size());
}

}  // namespace

Asker AskerOf(const grpc::ServerContext& context) {
    const std::string peer = PeerFromName(context.peer()).Name;
    Asker asker{.Address = peer.substr(peer.find(':') + 1), .Client = NameCertified(context), .Certified = false};
    asker.Certified = !asker.Client.empty();
    if (!asker.Certified) asker.Client = NameGiven(context);
    // What is no text cannot be sent to those who read the sheet.
    if (!IsUtf8(asker.Client)) asker.Client.clear();
    return asker;
}

}  // namespace ZorvicUnit
