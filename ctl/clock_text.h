#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ZorvicCtl {

/// Milliseconds as "hh:mm:ss", as the console shows them: wraps at 24 hours, and a negative count shows as a time
/// shortly before midnight.
std::string ClockText(std::int32_t timeMS);

/// Milliseconds of a time as the console's seek box takes it: "45" seconds, "2:30", "1:02:03". Nothing for all else: a
/// script has nobody who sees where a mistyped time has led.
std::optional<std::uint32_t> ParseClock(const std::string& text);

}  // namespace ZorvicCtl
