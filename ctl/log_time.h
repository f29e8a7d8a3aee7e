#pragma once

#include <zorvic/asrun.h>

#include <chrono>
#include <string>

namespace ZorvicCtl {

/// The moment that somebody means by "30m", "6h", "2d" (ago), "19:30" (today), "2026-03-01" or "2026-03-01 19:30", in
/// this machine's time zone; seconds may follow. Throws Failure for all else.
Zorvic::AsRunEntry::WallTime ParseSince(const std::string& text, std::chrono::system_clock::time_point now);

}  // namespace ZorvicCtl
