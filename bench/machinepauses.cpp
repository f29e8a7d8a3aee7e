#include "machinepauses.h"

#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <utility>

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

/// Seconds that the host took from all processors since the machine began; field "steal" of the first line.
double TakenSeconds() {
    std::ifstream stat("/proc/stat");
    std::string name;
    double value = 0;
    stat >> name;
    for (int field = 1; field <= 8; ++field)
        stat >> value;
    return value / static_cast<double>(sysconf(_SC_CLK_TCK));
}

}  // namespace

MachinePauses::MachinePauses() : TakenBefore(TakenSeconds()) {
    for (unsigned processor = 0; processor < std::thread::hardware_concurrency(); ++processor)
        Threads.emplace_back([this, processor] { Watch(processor); });
}

MachinePauses::~MachinePauses() {
    Ending = true;
    for (std::thread& thread : Threads)
        thread.join();
}

MachinePauses::Report MachinePauses::Take() {
    const std::scoped_lock lock(Lock);
    Report report = std::exchange(Seen, {});
    const auto now = Clock::now();
    const double taken = TakenSeconds();
    const double seconds = std::chrono::duration<double>(now - Since).count() * static_cast<double>(Threads.size());
    report.TakenPercent = 100 * (taken - TakenBefore) / seconds;
    Since = now;
    TakenBefore = taken;
    return report;
}

bool MachinePauses::Within(Clock::time_point from, Clock::time_point until) {
    const std::scoped_lock lock(Lock);
    return std::any_of(Pauses.begin(), Pauses.end(),
                       [&](const auto& pause) { return pause.first < until && pause.second > from; });
}

void MachinePauses::Watch(unsigned processor) {
    cpu_set_t only;
    CPU_ZERO(&only);
    CPU_SET(processor, &only);
    pthread_setaffinity_np(pthread_self(), sizeof only, &only);
    const sched_param before{.sched_priority = sched_get_priority_max(SCHED_FIFO)};
    pthread_setschedparam(pthread_self(), SCHED_FIFO, &before);  // without the right to it, the figures are worse
    constexpr std::chrono::milliseconds period(2);
    while (!Ending) {
        const auto asked = Clock::now();
        std::this_thread::sleep_for(period);
        const auto woke = Clock::now();
        const double late = Milliseconds(woke - asked - period).count();
        const std::scoped_lock lock(Lock);
        if (late > 10) Pauses.emplace_back(asked, woke);
        Seen.MostMS = std::max(Seen.MostMS, late);
        if (late > 20) ++Seen.Over20MS;
    }
}
