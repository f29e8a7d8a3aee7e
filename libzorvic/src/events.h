#pragma once

#include <zorvic/session.h>

#include <array>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace Zorvic::Internal {

constexpr unsigned EventBit(StateEventType type) {
    return 1U << static_cast<unsigned>(type);
}
constexpr unsigned AllEvents = EventBit(ZORVIC_STATE_PRESETS) | EventBit(ZORVIC_STATE_PRESETSTATES) |
                               EventBit(ZORVIC_STATE_ASSETS) | EventBit(ZORVIC_STATE_HWSTATE) |
                               EventBit(ZORVIC_STATE_TIMECODE);

/// Runs the registered callbacks of one session on one thread, outside every lock of the library. Events of one type
/// that come while its callback has not run yet are one event.
class EventThread {
public:
    EventThread();
    /// Waits for a running callback; none runs afterwards. Not to be called from a callback.
    ~EventThread();
    EventThread(const EventThread&) = delete;
    EventThread& operator=(const EventThread&) = delete;

    /// Asks for one event of each type in the set (EventBit). Any thread; never waits.
    void Raise(unsigned types);
    /// As Session::SetStateEventCallback. The type must be a valid one.
    void Register(StateEventType type, StateEventCallback fn, void* user);

private:
    struct Registration {
        StateEventCallback Function = nullptr;
        void* User = nullptr;
    };

    void Run();
    StateEventType NextType() const;
    void RunCallback(StateEventType type, std::unique_lock<std::mutex>& lock);

    std::mutex Lock;  // guards everything below but Thread
    std::condition_variable Wake;
    std::condition_variable CallbackReturned;
    std::array<Registration, ZORVIC_STATE_MAX> Registrations{};
    unsigned Pending = 0;                        // only types that are registered
    StateEventType Last = ZORVIC_STATE_INVALID;  // type whose callback ran last or runs now
    bool Running = false;                        // a callback is running
    std::uint64_t Calls = 0;                     // callbacks started
    bool Stopping = false;
    std::thread Thread;  // last: it uses all of the above
};

}  // namespace Zorvic::Internal
