#include "events.h"

#include "diagnostics.h"

namespace Zorvic::Internal {

EventThread::EventThread() : Thread([this] { Run(); }) {}

EventThread::~EventThread() {
    {
        const std::scoped_lock lock(Lock);
        Stopping = true;
    }
    Wake.notify_one();
    Thread.join();
}

void EventThread::Raise(unsigned types) {
    {
        const std::scoped_lock lock(Lock);
        for (int type = ZORVIC_STATE_INVALID + 1; type < ZORVIC_STATE_MAX; ++type) {
            const unsigned bit = EventBit(static_cast<StateEventType>(type));
            if ((types & bit) != 0 && Registrations.at(static_cast<std::size_t>(type)).Function) Pending |= bit;
        }
        if (Pending == 0) return;
    }
    Wake.notify_one();  // whoever wakes up does not meet the lock
}

void EventThread::Register(StateEventType type, StateEventCallback fn, void* user) {
    std::unique_lock lock(Lock);
    Registrations.at(static_cast<std::size_t>(type)) = {fn, user};
    if (fn) {
        Pending |= EventBit(type);
        Wake.notify_one();
    } else {
        Pending &= ~EventBit(type);
    }
    // A callback that registers is itself the one running, and waiting for it would never end.
    if (std::this_thread::get_id() == Thread.get_id()) return;
    const std::uint64_t earlier = Calls;
    if (Last != type) return;
    CallbackReturned.wait(lock, [&] { return !Running || Calls != earlier; });
}

void EventThread::Run() {
    NameThread("zorvic-events");
    std::unique_lock lock(Lock);
    while (true) {
        Wake.wait(lock, [this] { return Stopping || Pending != 0; });
        if (Stopping) return;
        RunCallback(NextType(), lock);
    }
}

// Takes turns, so that a type that comes all the time never holds back another one.
StateEventType EventThread::NextType() const {
    int type = Last;
    do {
        type = type + 1 < ZORVIC_STATE_MAX ? type + 1 : ZORVIC_STATE_INVALID + 1;
    } while ((Pending & EventBit(static_cast<StateEventType>(type))) == 0);
    return static_cast<StateEventType>(type);
}

void EventThread::RunCallback(StateEventType type, std::unique_lock<std::mutex>& lock) {
    const Registration callback = Registrations.at(static_cast<std::size_t>(type));
    Pending &= ~EventBit(type);
    Last = type;
    Running = true;
    ++Calls;
    lock.unlock();
    callback.Function(type, callback.User);
    lock.lock();
    Running = false;
    CallbackReturned.notify_all();
}

}  // namespace Zorvic::Internal
