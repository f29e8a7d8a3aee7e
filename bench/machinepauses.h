#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

/// Sees how often the machine itself stood still, so that a figure is not blamed on the program: a virtual machine
/// whose host takes its processors away misses pictures whatever it runs. One thread on each processor, before all
/// others, sleeps for 2 ms again and again and counts when it woke far too late.
class MachinePauses {
public:
    using Clock = std::chrono::steady_clock;
    struct Report {
        int Over20MS = 0;  // a picture's half
        double MostMS = 0;
        double TakenPercent = 0;  // of the processors' time, by the host
    };

    MachinePauses();
    ~MachinePauses();
    MachinePauses(const MachinePauses&) = delete;
    MachinePauses& operator=(const MachinePauses&) = delete;

    /// Since the last report.
    Report Take();
    /// The machine stood still for more than 10 ms within this time.
    bool Within(Clock::time_point from, Clock::time_point until);

private:
    void Watch(unsigned processor);

    std::mutex Lock;  // guards the two below
    Report Seen;
    std::vector<std::pair<Clock::time_point, Clock::time_point>> Pauses;
    Clock::time_point Since = Clock::now();
    double TakenBefore = 0;
    std::atomic<bool> Ending = false;
    std::vector<std::thread> Threads;
};
