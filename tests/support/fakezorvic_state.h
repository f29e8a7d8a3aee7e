#pragma once

#include "support/fakezorvic.h"

#include <memory>
#include <mutex>

namespace FakeZorvic {

/// What one session object holds. Shared, so that a hook may destroy the session inside one of its operations.
struct SessionState {
    std::string Host;
    std::shared_ptr<Unit> Peer;  ///< null for a host nobody answers at
    bool LinkUp = false;

    struct Callback {
        Zorvic::StateEventCallback Function = nullptr;
        void* User = nullptr;
    };
    std::mutex CallbackLock;  ///< guards Callbacks and is held while one runs, so that unregistering waits for it
    std::map<Zorvic::StateEventType, Callback> Callbacks;
};

void Record(const Call& call);
void RunHook(const Call& call);
std::shared_ptr<Unit> FindUnit(const std::string& host);
void Enroll(const std::shared_ptr<SessionState>& session);
void Withdraw(const std::shared_ptr<SessionState>& session);
void FireIn(SessionState& session, Zorvic::StateEventType type);

}  // namespace FakeZorvic
