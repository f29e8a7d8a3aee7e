#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include <zorvic/session.h>

#include <QString>

/// A session together with the registry's lock. While a handle lives, its session stays alive and in place; hold it for
/// one operation, in the narrowest scope. Handles nest on one thread.
class SessionHandle {
public:
    SessionHandle(Zorvic::Session* session, std::unique_lock<std::recursive_mutex> guard);
    SessionHandle(SessionHandle&& other) noexcept;
    SessionHandle(const SessionHandle&) = delete;
    SessionHandle& operator=(const SessionHandle&) = delete;
    SessionHandle& operator=(SessionHandle&&) = delete;
    ~SessionHandle() = default;

    /// Not owned; null in a handle that was moved from.
    Zorvic::Session* GetSession() const { return Ptr; }

private:
    std::unique_lock<std::recursive_mutex> Guard;
    Zorvic::Session* Ptr;
};

/// The live sessions, by unit GUID. One object exists from before the first window until after the last one.
///
/// Handles are newly allocated and owned by the caller, who takes them into a std::unique_ptr at once; null means that
/// there is no such unit, and the caller abandons what it was doing. Everything runs on the GUI thread.
class SessionManager {
public:
    /// Becomes the process-wide instance.
    SessionManager();
    /// Closes every remaining connection.
    ~SessionManager();
    SessionManager(const SessionManager&) = delete;
    SessionManager& operator=(const SessionManager&) = delete;

    /// Null before construction and after destruction.
    static SessionManager* GetInstance() { return Instance; }

    /// Connects (which may wait as long as the library does) and files the session under the GUID that the unit
    /// reports, in place of an older session of the same unit. That one is destroyed, and its state-event callbacks
    /// with it. Null when the unit cannot be reached or does not tell its GUID; nothing has changed then, and
    /// `problem` is what is known about why, if anything.
    SessionHandle* CreateSessionByIP(const std::string& ip, QString* problem = nullptr);

    SessionHandle* GetSessionByGUID(const std::string& guid) const;
    /// Compares with the host text that the session was opened with, byte by byte.
    SessionHandle* GetSessionByIP(const std::string& ip) const;

    /// True when there was such a session; it is closed then. Not for use while a handle for it lives.
    bool DeleteSessionByGUID(const std::string& guid);
    bool DeleteSessionByIP(const std::string& ip);

private:
    using SessionMap = std::unordered_map<std::string, std::unique_ptr<Zorvic::Session>>;

    /// Caller holds SessionsLock.
    SessionMap::const_iterator FindByIP(const std::string& ip) const;

    static SessionManager* Instance;

    /// Guards Sessions and every use of a session. Recursive, because the chooser holds a handle while the new tab
    /// asks for its own.
    mutable std::recursive_mutex SessionsLock;
    SessionMap Sessions;
};

/// The unit's session from the process-wide registry; null when there is neither.
std::unique_ptr<SessionHandle> FindSession(const std::string& guid);
