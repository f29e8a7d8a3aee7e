#include "channel.h"

#include "client_name.h"
#include "credentials.h"
#include "diagnostics.h"
#include "link_error.h"

#include <grpcpp/create_channel.h>

#include <algorithm>
#include <charconv>
#include <string_view>

namespace Zorvic::Internal {
namespace {

constexpr std::string_view DefaultPort = "9477";
constexpr int MaxMessageBytes = 64 * 1024 * 1024;  // a directory of a large drive comes in one reply
constexpr int MaxHeaderBytes = 64 * 1024;          // the reason of a refusal is one: a long one must not cost the link

bool IsAddressCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '-' ||
           c == '_';
}

bool IsIPv6Character(char c) {
    return IsAddressCharacter(c) || c == ':' || c == '%';
}

bool IsPort(std::string_view text) {
    unsigned port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc{} && end == text.data() + text.size() && port >= 1 && port <= 65535;
}

std::optional<std::string> IPv6Target(std::string_view address, std::string_view port) {
    if (!std::all_of(address.begin(), address.end(), IsIPv6Character) || !IsPort(port)) return std::nullopt;
    std::string target = "dns:///[";
    for (const char c : address) {
        if (c == '%') {
            target += "%25";  // the target is a URI, and the zone of a link-local address follows a percent sign
        } else {
            target += c;
        }
    }
    return target.append("]:").append(port);
}

std::optional<std::string> BracketedTarget(std::string_view host) {
    const auto close = host.find(']');
    if (close == std::string_view::npos || close < 2) return std::nullopt;
    const std::string_view address = host.substr(1, close - 1);
    const std::string_view rest = host.substr(close + 1);
    if (rest.empty()) return IPv6Target(address, DefaultPort);
    return rest.front() == ':' ? IPv6Target(address, rest.substr(1)) : std::nullopt;
}

grpc::ChannelArguments Arguments(std::chrono::milliseconds connectLimit) {
    grpc::ChannelArguments arguments;
    const int limit = static_cast<int>(connectLimit.count());
    // The minimum back-off is also gRPC's limit for one connection try. Nothing else hangs on these: a channel serves
    // one attempt, which ends with its first failure.
    arguments.SetInt(GRPC_ARG_INITIAL_RECONNECT_BACKOFF_MS, 100);
    arguments.SetInt(GRPC_ARG_MIN_RECONNECT_BACKOFF_MS, limit);
    arguments.SetInt(GRPC_ARG_MAX_RECONNECT_BACKOFF_MS, limit);
    // Without a pool of its own a new attempt would wait out the back-off that an earlier one to the same host earned.
    arguments.SetInt(GRPC_ARG_USE_LOCAL_SUBCHANNEL_POOL, 1);
    arguments.SetInt(GRPC_ARG_ENABLE_HTTP_PROXY, 0);
    arguments.SetInt(GRPC_ARG_ENABLE_RETRIES, 0);  // a command takes effect once or fails
    arguments.SetInt(GRPC_ARG_SERVICE_CONFIG_DISABLE_RESOLUTION, 1);
    // Every call carries it; empty, only the RPC library's own name is there.
    if (const std::string name = ClientName(); !name.empty()) arguments.SetUserAgentPrefix(name);
    arguments.SetMaxReceiveMessageSize(MaxMessageBytes);
    arguments.SetInt(GRPC_ARG_MAX_METADATA_SIZE, MaxHeaderBytes);
    return arguments;
}

}  // namespace

std::optional<std::string> ChannelTarget(const std::string& host) {
    const std::string_view text = host;
    if (text.empty()) return std::nullopt;
    if (text.front() == '[') return BracketedTarget(text);
    const auto colons = std::count(text.begin(), text.end(), ':');
    if (colons > 1) return IPv6Target(text, DefaultPort);
    const auto colon = text.find(':');
    const std::string_view address = text.substr(0, colon);
    const std::string_view port = colons == 0 ? DefaultPort : text.substr(colon + 1);
    if (address.empty() || !std::all_of(address.begin(), address.end(), IsAddressCharacter) || !IsPort(port)) {
        return std::nullopt;
    }
    return std::string("dns:///").append(address).append(":").append(port);
}

std::shared_ptr<grpc::Channel> OpenChannel(const std::string& host, std::chrono::milliseconds connectLimit) {
    const auto target = ChannelTarget(host);
    if (!target) throw LinkError("not a host: \"" + host + '"');
    NoteRpcMessages();
    auto arguments = Arguments(connectLimit);
    if (const char* name = CertifiedName()) arguments.SetSslTargetNameOverride(name);
    return grpc::CreateCustomChannel(*target, ClientCredentials(), arguments);
}

}  // namespace Zorvic::Internal
