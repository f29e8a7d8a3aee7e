#include "events.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>

using namespace Zorvic;
using namespace Zorvic::Internal;

namespace {

/// A callback that waits inside for as long as the test keeps the gate closed.
struct Gate {
    std::mutex Closed;
    std::atomic<int> Calls = 0;

    static void Callback(StateEventType, void* user) {
        auto& gate = *static_cast<Gate*>(user);
        ++gate.Calls;
        const std::scoped_lock lock(gate.Closed);
    }
};

/// Takes its time, so that whoever frees the user data too early is caught.
void Count(StateEventType, void* user) {
    auto& count = *static_cast<std::atomic<int>*>(user);
    ++count;
    std::this_thread::yield();
    ++count;
}

void AwaitCount(const std::atomic<int>& count, int least) {
    while (count < least)
        std::this_thread::yield();
}

}  // namespace

TEST(EventThread, EventsWhileTheCallbackRunsBecomeOne) {
    Gate gate;
    std::atomic<int> others = 0;
    EventThread events;
    {
        const std::scoped_lock lock(gate.Closed);
        events.Register(ZORVIC_STATE_PRESETS, Gate::Callback, &gate);
        AwaitCount(gate.Calls, 1);
        for (int i = 0; i < 100; ++i)
            events.Raise(EventBit(ZORVIC_STATE_PRESETS));
    }
    AwaitCount(gate.Calls, 2);
    events.Register(ZORVIC_STATE_ASSETS, Count, &others);  // answered after all that was raised before
    AwaitCount(others, 1);
    EXPECT_EQ(gate.Calls, 2);
}

TEST(EventThread, ACallbackMayUnregisterItself) {
    struct Once {
        EventThread Events;
        std::atomic<int> Calls = 0;
        static void Callback(StateEventType type, void* user) {
            auto& once = *static_cast<Once*>(user);
            once.Events.Register(type, nullptr, nullptr);
            once.Events.Register(ZORVIC_STATE_ASSETS, Count, &once.Calls);
        }
    } once;
    once.Events.Register(ZORVIC_STATE_PRESETS, Once::Callback, &once);
    AwaitCount(once.Calls, 1);
}

// The sanitizers see a callback that reaches its user data after that was freed.
TEST(EventThread, UserDataMayGoAsSoonAsItsRegistrationIsGone) {
    EventThread events;
    std::atomic<bool> done = false;
    std::thread raiser([&] {
        while (!done)
            events.Raise(AllEvents);
    });
    for (int i = 0; i < 2000; ++i) {
        auto first = std::make_unique<std::atomic<int>>(0);
        auto second = std::make_unique<std::atomic<int>>(0);
        events.Register(ZORVIC_STATE_TIMECODE, Count, first.get());
        events.Register(ZORVIC_STATE_TIMECODE, Count, second.get());
        first.reset();
        if (i % 10 == 0) AwaitCount(*second, 1);
        events.Register(ZORVIC_STATE_TIMECODE, nullptr, nullptr);
    }
    done = true;
    raiser.join();
}
