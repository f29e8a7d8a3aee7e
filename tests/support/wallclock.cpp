#include "support/wallclock.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <ctime>

namespace {

std::atomic<std::int64_t> BackNS = 0;

}  // namespace

void SetWallClock(std::chrono::milliseconds back) {
    BackNS = std::chrono::nanoseconds(back).count();
}

// Stands before the system's own for every library of the program.
extern "C" [[gnu::visibility("default")]] int clock_gettime(clockid_t clock, timespec* time) noexcept {
    const auto result = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    if (result != 0 || clock != CLOCK_REALTIME) return result;
    constexpr std::int64_t Second = 1'000'000'000;
    const std::int64_t now = time->tv_sec * Second + time->tv_nsec - BackNS;
    *time = {now / Second, now % Second};
    return 0;
}
