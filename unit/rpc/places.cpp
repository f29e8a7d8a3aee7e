#include "rpc/places.h"

#include "fault.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace ZorvicUnit {

namespace {

// Who leaves may wait for its next heartbeat first.
constexpr std::chrono::seconds LongestLeave{2};

}  // namespace

Places::Place::Place(Places& places, const Peer& peer, std::function<void()> leave) : Owner(places) {
    std::unique_lock lock(Owner.Lock);
    const auto sameConnection = [&](const Watcher& watcher) { return watcher.Who.Name == peer.Name; };
    if (std::ranges::count_if(Owner.Taken, sameConnection) >= std::ptrdiff_t(PerConnection))
        throw Fault(FaultKind::Refused, "this connection watches already");
    if (Owner.CountOf(peer.Host) >= Owner.Most - Owner.Most / 8)
        throw Fault(FaultKind::Refused, "too many consoles of this host");
    const auto stays = [](const Watcher& watcher) { return !watcher.Leaving; };
    if (std::ranges::count_if(Owner.Taken, stays) >= std::ptrdiff_t(Owner.Most)) Owner.MakeRoom(peer.Host);
    Own = Owner.Taken.insert(Owner.Taken.end(), {.Who = peer, .Leave = std::move(leave)});
    if (Owner.Left.wait_for(lock, LongestLeave, [this] { return Owner.Taken.size() <= Owner.Most; })) return;
    Owner.Taken.erase(Own);
    throw Fault(FaultKind::Refused, Owner.Refusal);
}

Places::Place::~Place() {
    const std::scoped_lock lock(Owner.Lock);
    Owner.Taken.erase(Own);
    Owner.Left.notify_all();
}

std::size_t Places::CountOf(const std::string& host) const {
    return static_cast<std::size_t>(std::ranges::count_if(
        Taken, [&](const Watcher& watcher) { return !watcher.Leaving && watcher.Who.Host == host; }));
}

// Who came last leaves: a console that runs a show has been there for long.
void Places::MakeRoom(const std::string& host) {
    if (CountOf(host) > 0) throw Fault(FaultKind::Refused, Refusal);
    std::size_t most = 1;
    Watcher* last = nullptr;
    for (Watcher& watcher : Taken) {
        const std::size_t count = watcher.Leaving ? 0 : CountOf(watcher.Who.Host);
        if (count > 1 && count >= most) {
            most = count;
            last = &watcher;
        }
    }
    if (!last) throw Fault(FaultKind::Refused, Refusal);
    last->Leaving = true;
    last->Leave();
}

}  // namespace ZorvicUnit
