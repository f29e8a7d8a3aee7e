#include "render/reaper.h"

#include "thread_name.h"

#include <utility>

namespace ZorvicRender {

Reaper::Reaper() : Thread([this](const std::stop_token& stop) { Run(stop); }) {}

Reaper::~Reaper() = default;

void Reaper::Add(std::shared_ptr<void> object) {
    const std::scoped_lock lock(Lock);
    Dead.push_back(std::move(object));
    Wake.notify_all();
}

void Reaper::Run(const std::stop_token& stop) {
    ZorvicUnit::NameThread("zr-reaper");
    while (!stop.stop_requested()) {
        std::vector<std::shared_ptr<void>> dead;
        std::unique_lock lock(Lock);
        Wake.wait(lock, stop, [this] { return !Dead.empty(); });
        dead.swap(Dead);
        lock.unlock();
    }
}

}  // namespace ZorvicRender
