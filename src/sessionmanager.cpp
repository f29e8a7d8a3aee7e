#include "sessionmanager.h"

#include "text/beyondinterface.h"

#include <algorithm>
#include <utility>

SessionHandle::SessionHandle(Zorvic::Session* session, std::unique_lock<std::recursive_mutex> guard)
    : Guard(std::move(guard)), Ptr(session) {}

SessionHandle::SessionHandle(SessionHandle&& other) noexcept
    : Guard(std::move(other.Guard)), Ptr(std::exchange(other.Ptr, nullptr)) {}

SessionManager* SessionManager::Instance = nullptr;

SessionManager::SessionManager() {
    Instance = this;
}

SessionManager::~SessionManager() {
    if (Instance == this) Instance = nullptr;
}

SessionHandle* SessionManager::CreateSessionByIP(const std::string& ip, QString* problem) {
    // Connecting waits for the network, so it runs before the lock is taken.
    auto session = std::make_unique<Zorvic::Session>(ip, 1);
    if (!session->Connected()) {
        if (problem != nullptr) *problem = LinkProblemText(*session);
        return nullptr;
    }
    std::string guid;
    std::string nickname;
    if (session->GetUnitID(guid, nickname) != Zorvic::ZORVIC_STATUS_OK || guid.empty()) return nullptr;

    std::unique_lock lock(SessionsLock);
    auto& entry = Sessions[guid];
    entry = std::move(session);
    return new SessionHandle(entry.get(), std::move(lock));
}

SessionHandle* SessionManager::GetSessionByGUID(const std::string& guid) const {
    std::unique_lock lock(SessionsLock);
    const auto found = Sessions.find(guid);
    if (found == Sessions.end()) return nullptr;
    return new SessionHandle(found->second.get(), std::move(lock));
}

SessionHandle* SessionManager::GetSessionByIP(const std::string& ip) const {
    std::unique_lock lock(SessionsLock);
    const auto found = FindByIP(ip);
    if (found == Sessions.end()) return nullptr;
    return new SessionHandle(found->second.get(), std::move(lock));
}

bool SessionManager::DeleteSessionByGUID(const std::string& guid) {
    const std::scoped_lock lock(SessionsLock);
    return Sessions.erase(guid) > 0;
}

bool SessionManager::DeleteSessionByIP(const std::string& ip) {
    const std::scoped_lock lock(SessionsLock);
    const auto found = FindByIP(ip);
    if (found == Sessions.end()) return false;
    Sessions.erase(found);
    return true;
}

SessionManager::SessionMap::const_iterator SessionManager::FindByIP(const std::string& ip) const {
    return std::find_if(Sessions.begin(), Sessions.end(),
                        [&ip](const auto& entry) { return entry.second->GetHost() == ip; });
}

std::unique_ptr<SessionHandle> FindSession(const std::string& guid) {
    const auto* registry = SessionManager::GetInstance();
    return std::unique_ptr<SessionHandle>(registry ? registry->GetSessionByGUID(guid) : nullptr);
}
