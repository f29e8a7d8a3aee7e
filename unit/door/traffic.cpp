#include "door/traffic.h"

#include "door/peer.h"

#include <grpc/grpc.h>
#include <grpc/support/alloc.h>

#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <charconv>
#include <memory>
#include <string_view>
#include <vector>

namespace ZorvicUnit {

namespace {

// The library reports in a JSON of its own making: without spaces, and without quotation marks within the texts that
// are looked for here.
struct Report {
    explicit Report(char* text) : Text(text, gpr_free) {}
    std::string_view View() const { return Text ? Text.get() : ""; }

    std::unique_ptr<char, void (*)(void*)> Text;
};

/// The texts that stand behind the key.
std::vector<std::string_view> TextsOf(std::string_view json, const std::string& key) {
    const std::string start = '"' + key + "\":\"";
    std::vector<std::string_view> texts;
    for (auto place = json.find(start); place != std::string_view::npos; place = json.find(start, place)) {
        place += start.size();
        texts.push_back(json.substr(place, json.find('"', place) - place));
    }
    return texts;
}

template <typename Number>
Number ToNumber(std::string_view text) {
    Number number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/// Counters that stand at zero are left out.
std::uint64_t CountOf(std::string_view json, const std::string& key) {
    const auto texts = TextsOf(json, key);
    return texts.empty() ? 0 : ToNumber<std::uint64_t>(texts.front());
}

void ListSockets(TrafficCounter server, std::map<std::string, TrafficCounter>& counters) {
    constexpr std::string_view Transport = "chttp2 ";
    bool end = false;
    for (TrafficCounter first = 0; !end;) {
        const Report page(grpc_channelz_get_server_sockets(server, first, 0));
        const auto names = TextsOf(page.View(), "name");
        const auto ids = TextsOf(page.View(), "socketId");
        for (std::size_t number = 0; number < ids.size() && number < names.size(); ++number) {
            first = ToNumber<TrafficCounter>(ids[number]) + 1;
            if (names[number].starts_with(Transport))
                counters[PeerFromName(names[number].substr(Transport.size())).Name] = first - 1;
        }
        end = ids.empty() || page.View().find("\"end\":true") != std::string_view::npos;
    }
}

}  // namespace

std::map<std::string, TrafficCounter> ListTrafficCounters() {
    std::map<std::string, TrafficCounter> counters;
    const Report servers(grpc_channelz_get_servers(0));
    for (const std::string_view server : TextsOf(servers.View(), "serverId"))
        ListSockets(ToNumber<TrafficCounter>(server), counters);
    return counters;
}

std::optional<Traffic> ReadTraffic(TrafficCounter counter) {
    const Report report(grpc_channelz_get_socket(counter));
    if (!report.Text) return std::nullopt;
    return Traffic{.BytesReceived = 0,
                   .Started = CountOf(report.View(), "streamsStarted"),
                   .Succeeded = CountOf(report.View(), "streamsSucceeded"),
                   .Failed = CountOf(report.View(), "streamsFailed"),
                   .MessagesSent = CountOf(report.View(), "messagesSent")};
}

std::uint64_t BytesReceived(int socket) {
    tcp_info info{};
    socklen_t size = sizeof info;
    getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size);
    return info.tcpi_bytes_received;
}

}  // namespace ZorvicUnit
