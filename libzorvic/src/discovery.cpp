#include <zorvic/discovery.h>

#include "discovery_service.h"

#include <cstdlib>
#include <string>
#include <string_view>

namespace Zorvic {

std::vector<LANZorvic> GetLANZorvics() {
    constexpr std::chrono::seconds Rest{10};
    static const std::string Interface = [] {
        const char* variable = std::getenv("ZORVIC_DISCOVERY");
        return std::string(variable ? variable : "");
    }();
    if (Interface == "off") return {};
    // Destroyed at exit, before the libraries it uses: its parts are made while they are already there.
    static Internal::DiscoveryService service(
        [](Internal::ServiceListener& listener) { return Internal::MakeServiceBrowser(Interface, listener); },
        Internal::MakeUnitProber(), Rest);
    return service.Units();
}

}  // namespace Zorvic
