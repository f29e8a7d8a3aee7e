#include "daemon/ticker.h"

#include "model/unit_model.h"
#include "thread_name.h"

#include <algorithm>
#include <chrono>

namespace ZorvicUnit {

namespace {

constexpr std::chrono::milliseconds TickPeriod(50);

void RunTicker(const std::stop_token& stop, UnitModel& model) {
    NameThread("ticker");
    while (!stop.stop_requested()) {
        model.WaitForPlay(stop);
        auto next = std::chrono::steady_clock::now();
        while (!stop.stop_requested() && model.Tick()) {
            // After a stall it goes on from now: ticks that were missed are of no use to anybody.
            next = std::max(next + TickPeriod, std::chrono::steady_clock::now());
            std::this_thread::sleep_until(next);
        }
    }
}

}  // namespace

Ticker::Ticker(UnitModel& model) : Thread([&model](const std::stop_token& stop) { RunTicker(stop, model); }) {}

}  // namespace ZorvicUnit
