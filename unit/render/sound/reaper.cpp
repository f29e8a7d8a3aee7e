#include "render/sound/reaper.h"

#include "render/sound/track.h"
#include "thread_name.h"

#include <utility>

namespace ZorvicRender {

Reaper::Reaper() : Thread([this] { Run(); }) {}

Reaper::~Reaper() {
    {
        const std::lock_guard guard(Lock);
        Stop = true;
    }
    Changed.notify_all();
    Thread.join();
}

void Reaper::Take(std::unique_ptr<Track> track) {
    {
        const std::lock_guard guard(Lock);
        Dying.push_back(std::move(track));
    }
    Changed.notify_all();
}

void Reaper::Run() {
    ZorvicUnit::NameThread("zr-sound-reap", ZorvicUnit::Manners::Modest);
    std::unique_lock guard(Lock);
    while (!Stop || !Dying.empty()) {
        Changed.wait(guard, [this] { return Stop || !Dying.empty(); });
        auto dead = std::exchange(Dying, {});
        guard.unlock();
        dead.clear();
        guard.lock();
    }
}

}  // namespace ZorvicRender
