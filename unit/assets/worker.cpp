#include "assets/worker.h"

#include <spdlog/spdlog.h>

#include <limits>
#include <utility>

namespace ZorvicUnit {

Worker::Worker(std::string name, Manners manners) : Name(std::move(name)), Thread([this, manners] { Run(manners); }) {}

Worker::~Worker() {
    RequestStop();
    Join();
}

void Worker::Join() {
    if (Thread.joinable()) Thread.join();
}

void Worker::Post(std::int64_t order, Job job) {
    const std::scoped_lock lock(Lock);
    if (Stop) return;
    Jobs.emplace(order, std::move(job));
    Wake.notify_one();
}

void Worker::RequestStop() {
    std::multimap<std::int64_t, Job> dropped;  // destroyed without the lock
    const std::scoped_lock lock(Lock);
    Stop = true;
    dropped.swap(Jobs);
    Wake.notify_one();
}

std::optional<Worker::Job> Worker::TakeJob(std::int64_t before) {
    const std::scoped_lock lock(Lock);
    if (Stop || Jobs.empty() || Jobs.begin()->first >= before) return std::nullopt;
    return std::move(Jobs.extract(Jobs.begin()).mapped());
}

void Worker::RunBefore(std::int64_t order) {
    while (const auto job = TakeJob(order))
        Do(*job);
}

void Worker::Do(const Job& job) const {
    try {
        job();
    } catch (const std::exception& error) {
        spdlog::error("{}: {}", Name, error.what());
    }
}

void Worker::Run(Manners manners) {
    NameThread(Name, manners);
    while (true) {
        {
            std::unique_lock lock(Lock);
            Wake.wait(lock, [this] { return Stop || !Jobs.empty(); });
            if (Stop) return;
        }
        RunBefore(std::numeric_limits<std::int64_t>::max());
    }
}

}  // namespace ZorvicUnit
