#pragma once

#include "support/fakezorvic.h"

#include <memory>

namespace FakeZorvic {

/// What one session object holds. Shared, so that a hook may destroy the session inside one of its operations.
struct SessionState {
    std::string Host;
    std::shared_ptr<Unit> Peer;                          ///< null for a host nobody answers at
    std::map<Zorvic::StateEventType, void*> Users = {};  ///< of the callbacks registered now

    bool LinkUp() const { return Peer && Peer->Reachable; }
};

/// Everything that outlives a session.
struct Globals {
    std::map<std::string, std::shared_ptr<Unit>> Units = {};
    std::vector<Zorvic::LANZorvic> LANUnits = {};
    std::vector<Call> Calls = {};
    std::function<void(const Call&)> Hook = {};
    std::vector<std::shared_ptr<SessionState>> Sessions;
};
Globals& Global();

/// How every operation starts: it is recorded, and the hook runs.
void Begin(const Call& call);
/// Null when nobody answers at the host.
std::shared_ptr<Unit> FindUnit(const std::string& host);

}  // namespace FakeZorvic
