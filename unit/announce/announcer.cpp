#include "announce/announcer.h"

#include <spdlog/spdlog.h>

namespace ZorvicUnit {

struct Announcer::Impl {};

Announcer::Announcer(const AnnouncerConfig& config) {
    if (config.Interface != "off") {
        spdlog::warn("not announced on the network: announcing is not built in");
    }
}

Announcer::~Announcer() = default;

}  // namespace ZorvicUnit
