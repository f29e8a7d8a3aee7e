#include "diagnostics.h"
#include "discovery_browser.h"
#include "discovery_names.h"

#include <avahi-common/error.h>
#include <avahi-common/simple-watch.h>
#include <avahi-core/core.h>
#include <avahi-core/log.h>
#include <avahi-core/lookup.h>

#include <net/if.h>

#include <array>
#include <future>
#include <map>
#include <stdexcept>
#include <thread>

namespace Zorvic::Internal {
namespace {

constexpr const char* ServiceType = "_zorvic._tcp";

std::vector<std::string> ToStrings(AvahiStringList* text) {
    std::vector<std::string> strings;
    for (; text; text = avahi_string_list_get_next(text)) {
        const std::string_view bytes(reinterpret_cast<const char*>(avahi_string_list_get_text(text)),
                                     avahi_string_list_get_size(text));
        strings.emplace_back(bytes);
    }
    return strings;
}

std::string KeyOf(AvahiIfIndex interface, const char* name) {
    return std::to_string(interface) + ' ' + name;
}

/// The mDNS responder and everything that hangs on it are made, used and freed on Worker; only the request to quit
/// comes from outside.
class AvahiBrowser final : public ServiceBrowser {
public:
    AvahiBrowser(std::string interfaceName, ServiceListener& listener);
    ~AvahiBrowser() override;
    AvahiBrowser(const AvahiBrowser&) = delete;
    AvahiBrowser& operator=(const AvahiBrowser&) = delete;

private:
    void Run(std::promise<void> started);
    void Start();
    void Resolve(AvahiIfIndex interface, AvahiProtocol protocol, const char* name, const char* domain);
    void Forget(const std::string& key);
    void Drop(const std::string& key);

    static void OnService(AvahiSServiceBrowser* browser, AvahiIfIndex interface, AvahiProtocol protocol,
                          AvahiBrowserEvent event, const char* name, const char* type, const char* domain,
                          AvahiLookupResultFlags flags, void* self);
    static void OnResolved(AvahiSServiceResolver* resolver, AvahiIfIndex interface, AvahiProtocol protocol,
                           AvahiResolverEvent event, const char* name, const char* type, const char* domain,
                           const char* host, const AvahiAddress* address, std::uint16_t port, AvahiStringList* text,
                           AvahiLookupResultFlags flags, void* self);
    static void OnServer(AvahiServer*, AvahiServerState, void*) {}

    const std::string InterfaceName;
    ServiceListener& Listener;
    AvahiSimplePoll* Poll = nullptr;
    AvahiServer* Server = nullptr;
    std::map<std::string, AvahiSServiceResolver*> Resolvers;  ///< they report changes as long as they live
    AnnouncedNames Names;                                     ///< of the resolvers
    std::thread Worker;
};

AvahiBrowser::AvahiBrowser(std::string interfaceName, ServiceListener& listener)
    : InterfaceName(std::move(interfaceName)), Listener(listener), Poll(avahi_simple_poll_new()) {
    if (!Poll) throw std::runtime_error("no file descriptor left");
    std::promise<void> started;
    auto outcome = started.get_future();
    Worker = std::thread([this, promise = std::move(started)]() mutable { Run(std::move(promise)); });
    try {
        outcome.get();
    } catch (const std::runtime_error&) {
        Worker.join();
        avahi_simple_poll_free(Poll);
        throw;
    }
}

AvahiBrowser::~AvahiBrowser() {
    avahi_simple_poll_quit(Poll);
    Worker.join();
    avahi_simple_poll_free(Poll);
}

void AvahiBrowser::Run(std::promise<void> started) {
    NameThread("zorvic-mdns");
    try {
        Start();
        started.set_value();
        avahi_simple_poll_loop(Poll);
    } catch (const std::runtime_error&) {
        started.set_exception(std::current_exception());
    }
    if (Server) avahi_server_free(Server);  // with its browser and resolvers
}

void AvahiBrowser::Start() {
    avahi_set_log_function([](AvahiLogLevel, const char*) {});  // it would write to the console's standard error
    AvahiServerConfig config;
    avahi_server_config_init(&config);
    config.use_ipv6 = 0;
    config.disable_publishing = 1;
    if (!InterfaceName.empty()) config.allow_interfaces = avahi_string_list_add(nullptr, InterfaceName.c_str());
    int error = 0;
    Server = avahi_server_new(avahi_simple_poll_get(Poll), &config, OnServer, nullptr, &error);
    avahi_server_config_free(&config);
    if (!Server) throw std::runtime_error(avahi_strerror(error));
    if (!InterfaceName.empty() && if_nametoindex(InterfaceName.c_str()) == 0) {
        throw std::runtime_error("there is no interface \"" + InterfaceName + '"');
    }
    if (!avahi_s_service_browser_new(Server, AVAHI_IF_UNSPEC, AVAHI_PROTO_INET, ServiceType, nullptr, {}, OnService,
                                     this)) {
        throw std::runtime_error(avahi_strerror(avahi_server_errno(Server)));
    }
}

void AvahiBrowser::OnService(AvahiSServiceBrowser*, AvahiIfIndex interface, AvahiProtocol protocol,
                             AvahiBrowserEvent event, const char* name, const char*, const char* domain,
                             AvahiLookupResultFlags, void* self) {
    auto& browser = *static_cast<AvahiBrowser*>(self);
    if (event == AVAHI_BROWSER_NEW) {
        browser.Resolve(interface, protocol, name, domain);
    } else if (event == AVAHI_BROWSER_REMOVE) {
        browser.Forget(KeyOf(interface, name));
    }
}

void AvahiBrowser::Resolve(AvahiIfIndex interface, AvahiProtocol protocol, const char* name, const char* domain) {
    const std::string key = KeyOf(interface, name);
    const auto leaves = Names.Add(key);
    if (leaves) Forget(*leaves);
    if (leaves == key) return;
    auto* resolver = avahi_s_service_resolver_new(Server, interface, protocol, name, ServiceType, domain,
                                                  AVAHI_PROTO_INET, {}, OnResolved, this);
    if (resolver) Resolvers[key] = resolver;
}

void AvahiBrowser::Forget(const std::string& key) {
    Listener.OnWithdrawn(key);
    Drop(key);
}

void AvahiBrowser::Drop(const std::string& key) {
    Names.Remove(key);
    const auto found = Resolvers.find(key);
    if (found != Resolvers.end()) {
        avahi_s_service_resolver_free(found->second);
        Resolvers.erase(found);
    }
}

void AvahiBrowser::OnResolved(AvahiSServiceResolver*, AvahiIfIndex interface, AvahiProtocol protocol,
                              AvahiResolverEvent event, const char* name, const char*, const char* domain, const char*,
                              const AvahiAddress* address, std::uint16_t port, AvahiStringList* text,
                              AvahiLookupResultFlags, void* self) {
    auto& browser = *static_cast<AvahiBrowser*>(self);
    if (event == AVAHI_RESOLVER_FOUND) {
        std::array<char, AVAHI_ADDRESS_STR_MAX> dotted{};
        avahi_address_snprint(dotted.data(), dotted.size(), address);
        browser.Names.SetPlace(KeyOf(interface, name), dotted.data());
        browser.Listener.OnAnnounced({KeyOf(interface, name), dotted.data(), port, ToStrings(text)});
        return;
    }
    // It gave up after some seconds without an answer. The unit is still announced, so the question is put again.
    const std::string instance = name;
    const std::string domainName = domain;
    browser.Drop(KeyOf(interface, name));
    browser.Resolve(interface, protocol, instance.c_str(), domainName.c_str());
}

}  // namespace

std::unique_ptr<ServiceBrowser> MakeServiceBrowser(const std::string& interfaceName, ServiceListener& listener) {
    return std::make_unique<AvahiBrowser>(interfaceName, listener);
}

}  // namespace Zorvic::Internal
