#pragma once

#include <chrono>

/// Sets what the wall clock tells this process as far back from the true time as that. Steady clocks go on. The kernel
/// knows nothing of it: a wait that ends at a time of this clock ends early, and has to find that out.
void SetWallClock(std::chrono::milliseconds back);
