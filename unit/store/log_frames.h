#pragma once

#include <cstdint>
#include <filesystem>

namespace ZorvicUnit {

/// How many frames a write-ahead log holds of those written since it was last emptied, whether SQLite can still read
/// them or not: it takes the first damaged frame for the end and says nothing of those behind. 0 when there is no log.
std::int64_t FramesInLog(const std::filesystem::path& log);

}  // namespace ZorvicUnit
