#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <span>

namespace ZorvicUnit {

/// Gives a whole file in pieces, from its start to its end, and lets the system forget the pieces behind: a film read
/// once must not push what plays out of memory. Throws Fault: NotFound, Refused (a link on the way, or no regular
/// file), Internal (cannot be opened or read), Slow (stop turned true).
void ReadWhole(const std::filesystem::path& file, const std::atomic<bool>& stop,
               const std::function<void(std::span<const char>)>& take);

}  // namespace ZorvicUnit
