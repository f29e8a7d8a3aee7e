#include "files/give_way.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace ZorvicUnit {

namespace {

using std::chrono::steady_clock;

// Who edits saves again soon.
constexpr std::chrono::seconds Memory(1);
constexpr int PauseShare = 4;
constexpr std::chrono::milliseconds LongestPause(50);

std::atomic<steady_clock::time_point> LatestSave{steady_clock::time_point{}};

}  // namespace

void NoteSave() {
    LatestSave = steady_clock::now();
}

void GiveWayToSaves(std::chrono::nanoseconds busy) {
    if (steady_clock::now() - LatestSave.load() > Memory) return;
    std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(busy * PauseShare, LongestPause));
}

}  // namespace ZorvicUnit
