#include "rpc/places.h"

#include "fault.h"

#include <utility>

namespace ZorvicUnit {

Places::Place::Place(Places& places, Peer peer) : Owner(places), Who(std::move(peer)) {
    const std::scoped_lock lock(Owner.Lock);
    if (Owner.Count(Who.Name) >= PerConnection) throw Fault(FaultKind::Refused, "this connection watches already");
    if (Owner.Count(Who.Host) >= PerHost) throw Fault(FaultKind::Refused, "too many consoles of this host");
    ++Owner.Taken[Who.Name];
    ++Owner.Taken[Who.Host];
}

Places::Place::~Place() {
    const std::scoped_lock lock(Owner.Lock);
    Owner.Leave(Who.Name);
    Owner.Leave(Who.Host);
}

std::size_t Places::Count(const std::string& name) const {
    const auto found = Taken.find(name);
    return found == Taken.end() ? 0 : found->second;
}

void Places::Leave(const std::string& name) {
    const auto found = Taken.find(name);
    if (--found->second == 0) Taken.erase(found);
}

}  // namespace ZorvicUnit
