#include "daemon/ticker.h"

#include "model/unit_model.h"
#include "thread_name.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace ZorvicUnit {

namespace {

constexpr std::chrono::milliseconds TickPeriod(50);
// While nothing moves, it shows that it could.
constexpr std::chrono::milliseconds IdlePeriod(200);
constexpr std::chrono::seconds Standstill(1);

/// Says when playback has not been carried on for long.
class Watch {
public:
    void Tick() {
        const auto now = std::chrono::steady_clock::now();
        const auto gap = now - std::exchange(Last, now);
        if (gap < Standstill) return;
        spdlog::warn("playback stood still for {} ms",
                     std::chrono::duration_cast<std::chrono::milliseconds>(gap).count());
    }

private:
    std::chrono::steady_clock::time_point Last = std::chrono::steady_clock::now();
};

void RunTicker(const std::stop_token& stop, UnitModel& model) {
    NameThread("ticker");
    Watch watch;
    while (!stop.stop_requested()) {
        model.WaitForPlay(stop, IdlePeriod);
        auto next = std::chrono::steady_clock::now();
        while (!stop.stop_requested() && model.Tick()) {
            watch.Tick();
            // After a stall it goes on from now: ticks that were missed are of no use to anybody.
            next = std::max(next + TickPeriod, std::chrono::steady_clock::now());
            std::this_thread::sleep_until(next);
        }
        watch.Tick();
    }
}

}  // namespace

Ticker::Ticker(UnitModel& model) : Thread([&model](const std::stop_token& stop) { RunTicker(stop, model); }) {}

}  // namespace ZorvicUnit
