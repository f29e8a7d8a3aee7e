#include "assets/worker.h"

#include <pthread.h>
#include <spdlog/spdlog.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <utility>

namespace ZorvicUnit {

namespace {

// ioprio_set(2) has no wrapper in the C library; values from its manual page.
constexpr int OneThread = 1;
constexpr int ClassShift = 13;
constexpr int LowestBestEffort = (2 << ClassShift) | 7;
constexpr int Idle = 3 << ClassShift;

}  // namespace

void NameThread(const std::string& name, Manners manners) {
    pthread_setname_np(pthread_self(), name.substr(0, 15).c_str());
    if (manners == Manners::Normal) return;
    // Both are courtesies: a kernel that refuses them costs no more than some smoothness.
    const bool last = manners == Manners::Last;
    const auto thread = static_cast<id_t>(syscall(SYS_gettid));
    setpriority(PRIO_PROCESS, thread, last ? 19 : 10);
    syscall(SYS_ioprio_set, OneThread, 0, last ? Idle : LowestBestEffort);
}

Worker::Worker(std::string name, Manners manners)
    : Thread([this, name = std::move(name), manners] { Run(name, manners); }) {}

Worker::~Worker() {
    RequestStop();
    Thread.join();
}

void Worker::Post(std::int64_t order, Job job) {
    const std::lock_guard guard(Lock);
    if (Stop) return;
    Jobs.emplace(order, std::move(job));
    Wake.notify_one();
}

bool Worker::HasWork() const {
    const std::lock_guard guard(Lock);
    return !Jobs.empty();
}

void Worker::RequestStop() {
    std::multimap<std::int64_t, Job> dropped;  // destroyed without the lock
    const std::lock_guard guard(Lock);
    Stop = true;
    dropped.swap(Jobs);
    Wake.notify_one();
}

void Worker::Run(const std::string& name, Manners manners) {
    NameThread(name, manners);
    std::unique_lock guard(Lock);
    while (true) {
        Wake.wait(guard, [this] { return Stop || !Jobs.empty(); });
        if (Stop) return;
        const Job job = std::move(Jobs.extract(Jobs.begin()).mapped());
        guard.unlock();
        try {
            job();
        } catch (const std::exception& error) {
            spdlog::error("{}: {}", name, error.what());
        }
        guard.lock();
    }
}

}  // namespace ZorvicUnit
