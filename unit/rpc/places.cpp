#include "rpc/places.h"

#include "fault.h"

#include <utility>

namespace ZorvicUnit {

Places::Place::Place(Places& places, Peer peer) : Owner(places), Who(std::move(peer)) {
    const std::scoped_lock lock(Owner.Lock);
    auto& connection = Owner.Taken[Who.Name];
    auto& host = Owner.Taken[Who.Host];
    if (connection >= PerConnection) throw Fault(FaultKind::Refused, "this connection watches already");
    if (host >= PerHost) throw Fault(FaultKind::Refused, "too many consoles of this host");
    ++connection;
    ++host;
}

Places::Place::~Place() {
    const std::scoped_lock lock(Owner.Lock);
    Owner.Leave(Who.Name);
    Owner.Leave(Who.Host);
}

void Places::Leave(const std::string& name) {
    const auto found = Taken.find(name);
    if (--found->second == 0) Taken.erase(found);
}

}  // namespace ZorvicUnit
