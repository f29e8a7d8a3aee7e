#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

/// Sees how often the machine itself stood still, so that a figure is not blamed on the program: a virtual machine
/// whose host takes its processors away misses pictures whatever it runs. One thread on each processor, before all
/// others, sleeps for 2 ms again and again and counts when it woke far too late.
class MachinePauses {
public:
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

private:
    void Watch(unsigned processor);

    std::mutex Lock;  // guards the two below
    Report Seen;
    std::chrono::steady_clock::time_point Since = std::chrono::steady_clock::now();
    double TakenBefore = 0;
    std::atomic<bool> Ending = false;
    std::vector<std::thread> Threads;
};
