#include "announce/announcer.h"

#include "announce/announce_places.h"
#include "thread_name.h"

#include <avahi-common/alternative.h>
#include <avahi-common/domain.h>
#include <avahi-common/error.h>
#include <avahi-common/malloc.h>
#include <avahi-common/simple-watch.h>
#include <avahi-common/timeval.h>
#include <avahi-core/core.h>
#include <avahi-core/log.h>
#include <avahi-core/publish.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <thread>
#include <utility>
#include <vector>

namespace ZorvicUnit {
namespace {

constexpr const char* ServiceType = "_zorvic._tcp";
constexpr int MostRenames = 8;
constexpr unsigned InterfaceCheckMS = 3000;

template <auto Function>
struct CallFree {
    template <typename T>
    void operator()(T* pointer) const {
        Function(pointer);
    }
};
using StringList = std::unique_ptr<AvahiStringList, CallFree<avahi_string_list_free>>;
using OwnedText = std::unique_ptr<char, CallFree<avahi_free>>;

std::string InterfaceChoice(const std::string& option) {
    if (!option.empty()) return option;
    const char* variable = std::getenv("ZORVIC_DISCOVERY");
    return variable ? variable : "";
}

/// Cuts between characters, because mDNS bounds the bytes and the rest must stay UTF-8.
std::string CutText(const std::string& text, std::size_t limit) {
    std::size_t length = std::min(text.size(), limit);
    while (length < text.size() && length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
        --length;
    }
    return text.substr(0, length);
}

/// A host name of the unit's own: several units may run on one machine, each on another address.
std::string HostLabel(const std::string& guid) {
    std::string label = "zorvic-";
    for (const char c : guid) {
        if (std::isalnum(static_cast<unsigned char>(c)) && static_cast<unsigned char>(c) < 0x80)
            label += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return label.substr(0, 60);
}

StringList TextRecord(const AnnouncerConfig& config) {
    constexpr std::size_t MostBytes = 255;  // of one key=value string
    AvahiStringList* list = nullptr;
    const std::pair<const char*, std::string> entries[] = {
        {"guid", config.GUID},
        {"nickname", config.Nickname},
        {"role", std::to_string(config.Role)},
        {"type", std::to_string(config.Type)},
        {"api", config.APIVersion},
        {"version", config.Version},
    };
    for (const auto& [key, value] : entries)
        list = avahi_string_list_add(list, CutText(key + ('=' + value), MostBytes).c_str());
    return StringList(list);
}

void LogForAvahi(AvahiLogLevel, const char* text) {
    spdlog::debug("mdns: {}", text);
}

}  // namespace

/// Everything of Avahi is made, used and freed on Worker; only the request to quit comes from outside.
struct Announcer::Impl {
    explicit Impl(const AnnouncerConfig& config)
        : Config(config),
          Interface(InterfaceChoice(config.Interface)),
          Host(HostLabel(config.GUID)),
          Instance(CutText(config.GUID, AVAHI_LABEL_MAX - 1)) {}

    void Run();
    std::vector<std::string> InterfacesToJoin() const;
    bool StartServer();
    void Publish();
    int AddRecords();
    void Rename();
    void CheckInterfaces();

    static void OnServer(AvahiServer* server, AvahiServerState state, void* self);
    static void OnGroup(AvahiServer* server, AvahiSEntryGroup* group, AvahiEntryGroupState state, void* self);
    static void OnTimer(AvahiTimeout* timer, void* self);

    const AnnouncerConfig Config;
    const std::string Interface;
    std::string Host;
    std::string Instance;
    std::vector<InterfaceAddress> Places;
    int Renames = 0;

    AvahiSimplePoll* Poll = avahi_simple_poll_new();
    AvahiServer* Server = nullptr;
    AvahiSEntryGroup* Group = nullptr;
    AvahiTimeout* Timer = nullptr;
    std::thread Worker;
};

void Announcer::Impl::Run() {
    NameThread("announcer");
    if (StartServer()) {
        const AvahiPoll* poll = avahi_simple_poll_get(Poll);
        timeval when{};
        Timer = poll->timeout_new(poll, avahi_elapse_time(&when, InterfaceCheckMS, 0), OnTimer, this);
        avahi_simple_poll_loop(Poll);
        poll->timeout_free(Timer);
        if (Group) {
            avahi_s_entry_group_free(Group);  // queues the goodbye, and freeing the server sends it
        }
        avahi_server_free(Server);
    }
}

/// Empty for all. Known from the start, whatever addresses come and go later.
std::vector<std::string> Announcer::Impl::InterfacesToJoin() const {
    std::vector<std::string> names;
    if (!Interface.empty()) {
        names.push_back(Interface);
    } else if (Config.Address.starts_with("127.")) {
        for (const auto& place : PlacesToAnnounce(Config.Address, {}, ListInterfaceAddresses()))
            names.push_back(place.Interface);
    }
    return names;
}

bool Announcer::Impl::StartServer() {
    AvahiServerConfig config;
    avahi_server_config_init(&config);
    config.use_ipv6 = 0;
    // Units of one machine would fight over the machine's own records, and rename themselves for ever.
    config.publish_addresses = 0;
    config.publish_hinfo = 0;
    config.publish_workstation = 0;
    config.publish_domain = 0;
    for (const auto& name : InterfacesToJoin())
        config.allow_interfaces = avahi_string_list_add(config.allow_interfaces, name.c_str());
    int error = 0;
    Server = avahi_server_new(avahi_simple_poll_get(Poll), &config, OnServer, this, &error);
    avahi_server_config_free(&config);
    if (!Server) spdlog::warn("not announced on the network: {}", avahi_strerror(error));
    return Server != nullptr;
}

void Announcer::Impl::OnServer(AvahiServer* server, AvahiServerState state, void* self) {
    auto& impl = *static_cast<Impl*>(self);
    impl.Server = server;  // the first report comes before the constructor of the server returns
    if (state == AVAHI_SERVER_RUNNING) {
        impl.CheckInterfaces();
    } else if (state == AVAHI_SERVER_FAILURE) {
        spdlog::warn("no longer announced on the network: {}", avahi_strerror(avahi_server_errno(server)));
        avahi_simple_poll_quit(impl.Poll);
    }
}

void Announcer::Impl::OnTimer(AvahiTimeout* timer, void* self) {
    auto& impl = *static_cast<Impl*>(self);
    impl.CheckInterfaces();
    timeval when{};
    avahi_simple_poll_get(impl.Poll)->timeout_update(timer, avahi_elapse_time(&when, InterfaceCheckMS, 0));
}

/// Addresses come and go with cables and DHCP, also long after the start.
void Announcer::Impl::CheckInterfaces() {
    auto places = PlacesToAnnounce(Config.Address, Interface, ListInterfaceAddresses());
    if (places == Places && Group) return;
    if (places.empty())
        spdlog::warn("not announced on the network: no usable interface holds the address {}", Config.Address);
    Places = std::move(places);
    Publish();
}

void Announcer::Impl::Publish() {
    if (!Group) {
        Group = avahi_s_entry_group_new(Server, OnGroup, this);
    } else {
        avahi_s_entry_group_reset(Group);
    }
    if (!Group || Places.empty()) return;
    int error = AddRecords();
    if (error == AVAHI_OK) error = avahi_s_entry_group_commit(Group);
    if (error != AVAHI_OK) spdlog::warn("not announced on the network: {}", avahi_strerror(error));
}

int Announcer::Impl::AddRecords() {
    const std::string host = Host + ".local";
    const StringList text = TextRecord(Config);
    for (const auto& place : Places) {
        AvahiAddress address;
        if (!avahi_address_parse(place.Address.c_str(), AVAHI_PROTO_INET, &address)) return AVAHI_ERR_INVALID_ADDRESS;
        int error = avahi_server_add_address(Server, Group, place.Index, AVAHI_PROTO_INET, AVAHI_PUBLISH_NO_REVERSE,
                                             host.c_str(), &address);
        if (error == AVAHI_OK) {
            error = avahi_server_add_service_strlst(Server, Group, place.Index, AVAHI_PROTO_INET, {}, Instance.c_str(),
                                                    ServiceType, nullptr, host.c_str(), Config.Port, text.get());
        }
        if (error != AVAHI_OK) return error;
    }
    return AVAHI_OK;
}

void Announcer::Impl::OnGroup(AvahiServer* server, AvahiSEntryGroup*, AvahiEntryGroupState state, void* self) {
    auto& impl = *static_cast<Impl*>(self);
    if (state == AVAHI_ENTRY_GROUP_ESTABLISHED) {
        for (const auto& place : impl.Places) {
            spdlog::info("announced as {} at {}:{} on {}", impl.Config.Nickname, place.Address, impl.Config.Port,
                         place.Interface);
        }
    } else if (state == AVAHI_ENTRY_GROUP_COLLISION) {
        impl.Rename();
    } else if (state == AVAHI_ENTRY_GROUP_FAILURE) {
        spdlog::warn("not announced on the network: {}", avahi_strerror(avahi_server_errno(server)));
    }
}

/// Another unit has the same GUID, as after copying a store. Which of the two names it holds is not reported.
void Announcer::Impl::Rename() {
    if (++Renames > MostRenames) {
        spdlog::warn("not announced on the network: the unit id {} is taken many times", Config.GUID);
        return;
    }
    Host = OwnedText(avahi_alternative_host_name(Host.c_str())).get();
    Instance = OwnedText(avahi_alternative_service_name(Instance.c_str())).get();
    spdlog::warn("another unit on the network has the id {}: announced as {}", Config.GUID, Instance);
    Publish();
}

Announcer::Announcer(const AnnouncerConfig& config) : Pimpl(std::make_unique<Impl>(config)) {
    if (Pimpl->Interface == "off") return;
    if (!Pimpl->Poll) {
        spdlog::warn("not announced on the network: no file descriptor left");
        return;
    }
    avahi_set_log_function(LogForAvahi);
    Pimpl->Worker = std::thread([impl = Pimpl.get()] { impl->Run(); });
}

Announcer::~Announcer() {
    if (Pimpl->Worker.joinable()) {
        avahi_simple_poll_quit(Pimpl->Poll);
        Pimpl->Worker.join();
    }
    if (Pimpl->Poll) avahi_simple_poll_free(Pimpl->Poll);
}

}  // namespace ZorvicUnit
