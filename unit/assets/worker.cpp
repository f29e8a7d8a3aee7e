#include "assets/worker.h"

#include <spdlog/spdlog.h>

#include <utility>

namespace ZorvicUnit {

Worker::Worker(std::string name, Manners manners)
    : Thread([this, name = std::move(name), manners] { Run(name, manners); }) {}

Worker::~Worker() {
    RequestStop();
    Thread.join();
}

void Worker::Post(std::int64_t order, Job job) {
    const std::scoped_lock lock(Lock);
    if (Stop) return;
    Jobs.emplace(order, std::move(job));
    Wake.notify_one();
}

bool Worker::HasWork() const {
    const std::scoped_lock lock(Lock);
    return !Jobs.empty();
}

void Worker::RequestStop() {
    std::multimap<std::int64_t, Job> dropped;  // destroyed without the lock
    const std::scoped_lock lock(Lock);
    Stop = true;
    dropped.swap(Jobs);
    Wake.notify_one();
}

void Worker::Run(const std::string& name, Manners manners) {
    NameThread(name, manners);
    std::unique_lock lock(Lock);
    while (true) {
        Wake.wait(lock, [this] { return Stop || !Jobs.empty(); });
        if (Stop) return;
        const Job job = std::move(Jobs.extract(Jobs.begin()).mapped());
        lock.unlock();
        try {
            job();
        } catch (const std::exception& error) {
            spdlog::error("{}: {}", name, error.what());
        }
        lock.lock();
    }
}

}  // namespace ZorvicUnit
