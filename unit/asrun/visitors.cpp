#include "asrun/visitors.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace ZorvicUnit {

void Visitors::Share::Grow(double most, Clock::TimePoint now) {
    const std::chrono::duration<double, std::ratio<60>> minutes = now - std::exchange(At, now);
    Room = std::min(most, Room + minutes.count() * most / OfOne);
}

std::optional<std::size_t> Visitors::Admit(const std::string& address, Clock::TimePoint now) {
    if (Hosts.size() >= MostHosts)
        std::erase_if(Hosts, [&](const auto& host) { return now - host.second.At > std::chrono::hours(1); });
    All.Grow(OfAll, now);
    const std::string host = address.substr(0, address.rfind(':'));
    if (Hosts.size() >= MostHosts && !Hosts.contains(host)) return std::nullopt;
    Share& share = Hosts.try_emplace(host, Share{.Room = OfOne, .At = now, .LeftOut = 0}).first->second;
    share.Grow(OfOne, now);
    if (share.Room < 1 || All.Room < 1) {
        ++share.LeftOut;
        return std::nullopt;
    }
    share.Room -= 1;
    All.Room -= 1;
    return std::exchange(share.LeftOut, 0);
}

}  // namespace ZorvicUnit
