#pragma once

#include "thread_name.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace ZorvicUnit {

/// One named thread that does its jobs one after the other. An exception of a job is logged and ends that job only.
class Worker {
public:
    using Job = std::function<void()>;

    Worker(std::string name, Manners manners);
    /// Drops the jobs that wait and joins the thread; see Stopping().
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// From any thread. Jobs of lower order go first, then in order of arrival.
    void Post(std::int64_t order, Job job);
    /// For a job that takes long: does those first that wait and are of a lower order than this.
    void RunBefore(std::int64_t order);

    /// Turns true when the thread is to end: a long job looks at it and gives up within a second.
    const std::atomic<bool>& Stopping() const { return Stop; }
    /// Drops the jobs that wait and asks the running one to give up; returns at once.
    void RequestStop();
    /// Waits for the thread's end, after RequestStop(). The destructor does both, but while it runs, whoever holds the
    /// worker may not give it out any more.
    void Join();

private:
    std::optional<Job> TakeJob(std::int64_t before);
    void Do(const Job& job) const;
    void Run(Manners manners);

    std::atomic<bool> Stop = false;
    const std::string Name;
    mutable std::mutex Lock;  ///< guards Jobs
    std::condition_variable Wake;
    std::multimap<std::int64_t, Job> Jobs;
    std::thread Thread;
};

}  // namespace ZorvicUnit
